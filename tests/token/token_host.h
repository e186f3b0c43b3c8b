#ifndef TESTS_TOKEN_TOKEN_HOST_H
#define TESTS_TOKEN_TOKEN_HOST_H

#include "tests/support/aggregator_library.h"
#include "tests/token/mock_tokens.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <memory>
#include <string>

/// This process as a host: the built library with the token plug-in as "Rutoken". The plug-in's URI names the
/// manufacturer "Mock" and the mock module.
class TokenHost : public testing::Test {
 protected:
  explicit TokenHost(const std::string& plugin = MOCK_PLUGIN);

  /// Sets the tokens and starts the library, which must list the plug-in.
  void Start(std::initializer_list<std::string> lines);

  /// Sets the tokens and starts the library; whether it lists the plug-in.
  bool IsAvailable(std::initializer_list<std::string> lines);

  void Stop();

  /// Draws, and returns what is left in the buffer: "drawn" for random bytes; "zeros" for a failed draw, if all
  /// of the buffer is zero. Anything else is a defect.
  std::string Draw(std::size_t size = 32) const;

  std::string HardwareId() const;
  std::string Description() const;

  /// What the plug-in reports to tools, "" for nothing. Only while it is listed.
  std::string Report() const;

  const MockTokens tokens;
  std::unique_ptr<AggregatorLibrary> library;
  IRngProvider* rng = nullptr;
};

/// The error of a module that a case injects.
std::string Fault(unsigned long number, const std::string& function, unsigned long call,
                  unsigned long result);

#endif
