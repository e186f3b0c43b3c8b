#ifndef TOOLS_RNGCTL_DRAWING_CHOSEN_GENERATOR_H
#define TOOLS_RNGCTL_DRAWING_CHOSEN_GENERATOR_H

#include <functional>
#include <string>

#include <rngaggregator/combined_rng.h>
#include <rngaggregator/provider.h>

/// What the user asks for.
struct GeneratorChoice {
  std::string name;    ///< of the generator; empty: the configured default
  std::string device;  ///< its hardware identifier; empty: the default's, or the one that is in use
};

/// Starts the library, does `work` with that generator, whose device is selected, and stops the library.
/// Throws a `Refusal`, also in place of what a plug-in throws.
void WithGenerator(const GeneratorChoice& choice, const std::function<void(IRngProvider&)>& work);

/// Likewise with several generators, listed as in "unixdev,Rutoken:3a2f01". The providers of those that are not usable
/// are null, and no device is selected yet.
void WithGenerators(const std::string& list,
                    const std::function<void(const std::vector<rng::CombinedSource>&)>& work);

#endif
