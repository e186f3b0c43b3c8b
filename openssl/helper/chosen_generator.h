#ifndef OPENSSL_HELPER_CHOSEN_GENERATOR_H
#define OPENSSL_HELPER_CHOSEN_GENERATOR_H

#include "openssl/request.h"

#include <functional>
#include <string>

/// The generator that the provider's parameters name. It keeps the library started.
struct ChosenGenerator {
  std::string name;  ///< with its device, such as "Rutoken 3A7F"

  /// Fills the buffer with checked bytes. Throws a `rng::Error`, with zeros in the buffer, if that is not possible.
  std::function<void(void* buffer, std::size_t size)> draw;
};

/// Starts the library and looks for the generator: the configured default, one kind, or several sources.
///
/// Kinds that ask the user are refused: programs draw often, and without the user's knowledge.
///
/// Failure: throws a `std::exception` with a sentence for the user.
ChosenGenerator ChooseGenerator(const ProviderParameters& choice);

#endif
