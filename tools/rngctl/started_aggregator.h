#ifndef TOOLS_RNGCTL_STARTED_AGGREGATOR_H
#define TOOLS_RNGCTL_STARTED_AGGREGATOR_H

/// The aggregator, started with the built-in settings for as long as this object lives.
class StartedAggregator {
 public:
  StartedAggregator();
  StartedAggregator(const StartedAggregator&) = delete;
  StartedAggregator& operator=(const StartedAggregator&) = delete;
  ~StartedAggregator() noexcept(false);  // a plug-in's Release may throw
};

#endif
