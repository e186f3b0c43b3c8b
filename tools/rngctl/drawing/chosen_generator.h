#ifndef TOOLS_RNGCTL_DRAWING_CHOSEN_GENERATOR_H
#define TOOLS_RNGCTL_DRAWING_CHOSEN_GENERATOR_H

#include <functional>
#include <string>

#include <rngaggregator/provider.h>

/// What the user asks for.
struct GeneratorChoice {
  std::string name;    ///< of the generator; empty: the configured default
  std::string device;  ///< its hardware identifier; empty: the default's, or the one that is in use
};

/// Starts the library, does `work` with that generator, whose device is selected, and stops the library.
/// Throws a `Refusal`, also in place of what a plug-in throws.
void WithGenerator(const GeneratorChoice& choice, const std::function<void(IRngProvider&)>& work);

#endif
