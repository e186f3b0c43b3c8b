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
  return isDecimal ? "" : "\"" + text + "\" is not a decimal number";
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

void AddDoctor(CLI::App& app, DoctorRequest& request, DoctorChildRequest& childRequest) {
  CLI::App* const doctor =
      app.add_subcommand("doctor", "Tell why a generator is not listed, and what would help");
  doctor->add_option("KIND", request.kind, "The kind to examine; without it all twelve");
  doctor->add_flag("--json", request.asJson, "Print the report as JSON");
  doctor->add_option("--timeout", request.timeout, "How long each plug-in may take, at most 3600")
      ->type_name("SECONDS")
      ->capture_default_str()
      ->check(CheckDecimal)
      ->check(CLI::Range(1, 3600));
  doctor->footer(
      "Starts, asks and stops each plug-in as the library does, in a process of its own, so a\n"
      "crash or an endless wait spoils that plug-in's answer alone. What a plug-in prints on\n"
      "standard error is shown.\n\n"
      "Exit status: 0 every plug-in that is installed is in order; 1 one is not, or the plug-in "
      "of\n"
      "KIND is not installed; 2 wrong usage; 3 all were examined and no generator is usable.");
  doctor->callback([&request] { RunDoctor(request); });
  CLI::App* const child = app.add_subcommand("doctor-child", "")->group("");  // not in the help
  child->add_option("SUBJECT", childRequest.subject)->required();
  child->add_option("--file", childRequest.file);
  child->add_flag("--binding", childRequest.isForBinding);
  child->callback([&childRequest] { RunDoctorChild(childRequest); });
}

void AddCheck(CLI::App& app, CheckRequest& request, CheckChildRequest& childRequest) {
  CLI::App* const check =
      app.add_subcommand("check", "Check that a plug-in keeps the contract; for its authors");
  check->add_option("PLUGIN", request.plugin, "The file of the plug-in")->required();
  check
      ->add_option("--factory", request.factory,
                   "Call this factory, not the one that belongs to the file name")
      ->type_name("NAME");
  check->add_option("--timeout", request.timeout, "How long each call may take, at most 3600")
      ->type_name("SECONDS")
      ->capture_default_str()
      ->check(CheckDecimal)
      ->check(CLI::Range(1, 3600));
  check->add_flag("--json", request.asJson, "Print the report as JSON");
  check->footer(
      "Opens and calls the plug-in as the library and its hosts do, again and again: draws,\n"
      "devices, several threads, 1,000 loads. Each check runs in a process of its own, so a\n"
      "crash or an endless wait spoils that check alone. A draw that waits for a user is\n"
      "cancelled after a quarter of the time, and what needs its bytes is then not examined.\n"
      "Nor is what needs many calls, when together they take longer than the time for one.\n"
      "What the plug-in prints on standard error is shown.\n\n"
      "A failed check breaks the contract; so does an operation that ends the process, in any\n"
      "check. A warning does not, but hosts will have trouble with the generator. A note tells\n"
      "what this machine lacks.\n\n"
      "Exit status: 0 no check failed (there may be warnings); 1 one failed; 2 wrong usage, or\n"
      "PLUGIN is not a shared library for this machine.");
  check->callback([&request] { RunCheck(request); });
  CLI::App* const child = app.add_subcommand("check-child", "")->group("");  // not in the help
  child->add_option("REQUEST", childRequest.what)->required();
  child->add_option("PLUGIN", childRequest.plugin)->required();
  child->add_option("--factory", childRequest.factory);
  child->callback([&childRequest] { RunCheckChild(childRequest); });
}

int Run(int count, char** arguments) {
  CLI::App app("Lists random-number generators, draws from them, and keeps the default.", "rngctl");
  app.set_version_flag("--version", "rngctl " RNGCTL_VERSION);
  app.require_subcommand(1);
  app.failure_message([](const CLI::App* asked, const CLI::Error& error) {
    const std::vector<std::string> rest = asked->remaining();
    const bool isUnknown = !rest.empty() && asked->get_subcommands().empty();
    return "rngctl: " + (isUnknown ? "There is no command " + Quoted(rest[0]) : error.what()) +
           "\nRun with --help for more information.\n";
  });
  app.footer(
      "Exit status: 0 done, 1 negative answer, 2 wrong usage, 3 (doctor) no usable generator.");
  ReadRequest request;
  std::uint32_t mask =
      kDefaultFallbackBio | kDefaultFallbackBioQt | kDefaultFallbackBioX11 | kDefaultFallbackBioKb;
  std::string name;
  std::string hardwareId;
  AddList(app);
  AddRead(app, request);
  AddDefault(app, mask, name, hardwareId);
  DoctorRequest doctorRequest;
  DoctorChildRequest doctorChildRequest;
  AddDoctor(app, doctorRequest, doctorChildRequest);
  CheckRequest checkRequest;
  CheckChildRequest checkChildRequest;
  AddCheck(app, checkRequest, checkChildRequest);
  try {
    app.parse(count, arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kWrongUsage;
  }
  FinishOutput();
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
    std::cerr << "rngctl: A plug-in or the system failed: " << Printable(error.what())
              << "\n\"rngctl doctor\" may tell which.\n";
    return kNegativeAnswer;
  } catch (...) {
    std::cerr << "rngctl: A plug-in failed without saying why.\n";
    return kNegativeAnswer;
  }
}
