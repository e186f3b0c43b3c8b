#ifndef COMBINE_SOURCE_H
#define COMBINE_SOURCE_H

#include "combine/draw_pool.h"

#include <atomic>

#include <rngaggregator/combined_rng.h>

/// A source of a combination, with its alarm. Threads: any.
class Source {
 public:
  explicit Source(const rng::CombinedSource& named) : source(named) {}

  /// What `Draw` adds to the pool at most.
  std::size_t Room() const;

  /// Adds the kind, the device and fresh bytes to the pool. Adds nothing if the source cannot be used.
  rng::SourceOutcome Draw(DrawPool& pool);

  rng::SourceOutcome WithoutDraw() const;
  void Reset() { alarm = RngHealthAlarm::kNone; }
  bool IsAvailable() const;
  bool SelfTest() const;
  void Cancel() const;
  std::uint32_t GetFlags() const;  ///< 0 without a provider
  bool IsPresent() const { return source.provider != nullptr; }
  std::string Label() const;  ///< "unixdev", "Rutoken:3a2f01"

 private:
  void Try(DrawPool& pool, rng::SourceOutcome& outcome);
  rng::SourceResult DrawChecked(DrawPool& pool, rng::SourceOutcome& outcome);
  bool ReportsItsName() const;

  const rng::CombinedSource source;
  std::atomic<RngHealthAlarm> alarm{RngHealthAlarm::kNone};
};

#endif
