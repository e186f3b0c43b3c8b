#ifndef TESTS_OPENSSL_OPENSSL_TEST_H
#define TESTS_OPENSSL_OPENSSL_TEST_H

#include "tests/support/process.h"

#include <gtest/gtest.h>
#include <string>

/// The provider in a tree of the case, with the generator "grandmaster" of the tests, whose bytes are marked, and with
/// "unixdev". The configured generator is "grandmaster", unless the case configures another.
class OpensslTest : public testing::Test {
 protected:
  void SetUp() override;

  /// Writes OpenSSL's configuration, with these lines in the provider's section.
  static void Configure(const std::string& lines);

  /// What "grandmaster" does from now on: "draw", or a fault.
  static void Command(const std::string& word);

  /// Runs a shell command with that configuration.
  static Result Run(const std::string& command);

  /// Runs the tests' own program, which uses OpenSSL; see hosts/draws.cpp.
  static Result RunHost(const std::string& arguments) { return Run(Host() + " " + arguments); }
  static std::string Host();

  static std::string ConfigurationFile();
  static std::string Module();
  static std::string DrawingProgram();

  /// How many draws "grandmaster" has made.
  static std::size_t CountDraws();

  /// Whether no process draws any more within half a minute.
  static bool AllEnd();
};

/// Whether this hexadecimal text, as programs print it, is of marked bytes.
bool IsMarkedText(const std::string& text);

/// Whether a program got no bytes: it failed, and said why.
testing::AssertionResult Refused(const Result& result, const std::string& reason);

#endif
