// rngctl: what the aggregator offers, for people and scripts.

#include "commands.h"
#include "host.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <iostream>

namespace {

// CLI11 itself takes -1 for the largest number, and 010 for eight.
std::string CheckDecimal(const std::string& text) {
  std::uint64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isDecimal = result.ec == std::errc() && text == std::to_string(value);
  return isDecimal ? "" : "\"" + text + "\" is not a number of bytes";
}

// CLI11 itself takes 010 for eight here, too; hexadecimal is welcome.
std::string CheckMask(const std::string& text) {
  const bool isOctal = text.size() > 1 && text[0] == '0' && text[1] != 'x';
  return isOctal ? "\"" + text + "\" is not a mask" : "";
}

void AddList(CLI::App& app) {
  app.add_subcommand("list", "Show the usable generators")->callback(RunList);
}

void AddRead(CLI::App& app, ReadRequest& request) {
  CLI::App* const read = app.add_subcommand("read", "Draw random bytes from a generator");
  read->add_option("NAME", request.name, "The generator; without it the configured default");
  read->add_option("-n", request.size, "How many bytes")
      ->type_name("BYTES")
      ->required()
      ->check(CheckDecimal);
  const auto addEncoding = [read, &request](const char* flag, Encoding encoding, const char* help) {
    return read->add_flag_callback(
        flag, [&request, encoding] { request.encoding = encoding; }, help);
  };
  CLI::Option* const raw =
      addEncoding("--raw", Encoding::kRaw, "Write the bytes as they are, never to a terminal");
  CLI::Option* const hex =
      addEncoding("--hex", Encoding::kHex, "Write hexadecimal digits (the default)");
  CLI::Option* const base64 = addEncoding("--base64", Encoding::kBase64, "Write base64");
  raw->excludes(hex)->excludes(base64);
  hex->excludes(base64);
  read->add_option("-o", request.file,
                   "Write to FILE, readable by its owner alone, not to standard "
                   "output; it appears when all is drawn")
      ->type_name("FILE");
  read->callback([&request] { RunRead(request); });
}

void AddDefault(CLI::App& app, std::uint32_t& mask, std::string& name, std::string& hardwareId) {
  CLI::App* const show = app.add_subcommand("default", "Show or store the default generator");
  CLI::Option* const maskOption =
      show->add_option(
              "--mask", mask,
              "The acceptable fallbacks when none is configured, added up: 1 bio, 2 bioqt, "
              "8 unixx11, 4 biokbd")
          ->capture_default_str()
          ->check(CheckMask);
  CLI::App* const set = show->add_subcommand("set", "Store the default generator");
  set->add_option("NAME", name, "The generator, at most 17 characters; \"\" for none")->required();
  set->add_option("HARDWARE-ID", hardwareId, "The device to use, at most 17 characters");
  set->excludes(maskOption);
  set->callback([&name, &hardwareId] { RunDefaultSet(name, hardwareId); });
  show->callback([show, &mask] {
    if (show->get_subcommands().empty()) RunDefault(mask);
  });
}

int Run(int count, char** arguments) {
  CLI::App app("Lists random-number generators, draws from them, and keeps the default.", "rngctl");
  app.set_version_flag("--version", "rngctl " RNGCTL_VERSION);
  app.require_subcommand(1);
  app.failure_message([](const CLI::App*, const CLI::Error& error) {
    return std::string("rngctl: ") + error.what() + "\nRun with --help for more information.\n";
  });
  app.footer("Exit status: 0 done, 1 negative answer, 2 wrong usage.");
  ReadRequest request;
  std::uint32_t mask =
      kDefaultFallbackBio | kDefaultFallbackBioQt | kDefaultFallbackBioX11 | kDefaultFallbackBioKb;
  std::string name;
  std::string hardwareId;
  AddList(app);
  AddRead(app, request);
  AddDefault(app, mask, name, hardwareId);
  try {
    app.parse(count, arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kWrongUsage;
  }
  if (!std::cout.flush()) throw Refusal(kNegativeAnswer, "Cannot write to standard output.");
  return kDone;
}

}  // namespace

int main(int count, char** arguments) {
  try {
    return Run(count, arguments);
  } catch (const Refusal& refusal) {
    std::cerr << "rngctl: " << refusal.what() << '\n';
    return refusal.status;
  } catch (const std::exception& error) {
    std::cerr << "rngctl: A plug-in or the system failed: " << error.what() << '\n';
    return kNegativeAnswer;
  } catch (...) {
    std::cerr << "rngctl: A plug-in failed without saying why.\n";
    return kNegativeAnswer;
  }
}
