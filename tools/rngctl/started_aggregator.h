#ifndef TOOLS_RNGCTL_STARTED_AGGREGATOR_H
#define TOOLS_RNGCTL_STARTED_AGGREGATOR_H

#include <functional>

/// Starts the aggregator with the built-in settings, does `work`, and stops it.
///
/// An exception of a plug-in ends as a `Refusal` with its message. It is looked at while its plug-in is
/// open: its class may live there. The start is different: the library has closed the plug-in whose
/// factory or operation threw, so an exception of a class that went with it is neither looked at nor
/// destroyed.
void WithStartedAggregator(const std::function<void()>& work);

#endif
