#ifndef TESTS_OPENSSL_OPENSSL_TEST_H
#define TESTS_OPENSSL_OPENSSL_TEST_H

#include "tests/support/process.h"

#include <gtest/gtest.h>
#include <string>

/// Installs the provider in a directory of the test, with the generators "unixdev" and "grandmaster". The bytes of the
/// latter have the watermark. It is the default, unless the test configures another.
class OpensslTest : public testing::Test {
 protected:
  void SetUp() override;

  /// Writes OpenSSL's configuration, with these lines in the provider's section.
  static void Configure(const std::string& lines);

  /// Sets what "grandmaster" does from now on: "draw", or a fault.
  static void Command(const std::string& word);

  /// Runs a shell command with that configuration.
  static Result Run(const std::string& command);

  /// Runs the test program of hosts/draws.cpp, which uses OpenSSL.
  static Result RunHost(const std::string& arguments) { return Run(Host() + " " + arguments); }
  static std::string Host();

  static std::string ConfigurationFile();
  static std::string Module();
  static std::string HelperProgram();

  /// A shell command that kills the helper processes and waits until they are gone.
  static std::string KillHelpers();

  /// How many draws "grandmaster" has made.
  static std::size_t CountDraws();

  /// Whether all helper processes exit within half a minute.
  static bool AllHelpersExit();
};

/// Whether the bytes that a program printed in hexadecimal have the watermark.
bool HasWatermark(const std::string& text);

/// Whether a program got no bytes: it printed none, failed, and gave this reason.
testing::AssertionResult Refused(const Result& result, const std::string& reason);

#endif
