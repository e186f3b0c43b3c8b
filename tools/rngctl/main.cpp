// rngctl: the aggregator on the command line, for people and scripts.

#include "tools/rngctl/argument_checks.h"
#include "tools/rngctl/check/check.h"
#include "tools/rngctl/check/child.h"
#include "tools/rngctl/commands/default.h"
#include "tools/rngctl/commands/list.h"
#include "tools/rngctl/commands/read/read.h"
#include "tools/rngctl/devices/ask.h"
#include "tools/rngctl/doctor/doctor.h"
#include "tools/rngctl/doctor/examine/child.h"
#include "tools/rngctl/doctor/openssl/child.h"
#include "tools/rngctl/doctor/openssl/openssl.h"
#include "tools/rngctl/process/interruption.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/standard_output.h"
#include "tools/rngctl/terminal/text.h"
#include "tools/rngctl/test/test.h"

#include <CLI/CLI.hpp>
#include <cxxabi.h>
#include <iostream>

#include <rngaggregator/aggregator.h>

namespace {

// Every message of this program on standard error. The sentence may contain text from outside.
std::string Message(const std::string& sentence, const std::string& advice = "") {
  return "rngctl: " + Printable(sentence) + '\n' + (advice.empty() ? "" : advice + '\n');
}

void PrintMessage(const std::string& sentence, const std::string& advice = "") {
  std::cerr << Message(sentence, advice);
}

void AddList(CLI::App& app, bool& asJson) {
  CLI::App* const list = app.add_subcommand("list", "Show the usable generators");
  list->add_flag("--json", asJson, "Print the list as JSON");
  list->callback([&asJson] { RunList(asJson); });
}

CLI::Option* AddCombination(CLI::App& read, ReadRequest& request) {
  CLI::Option* const from =
      read.add_option("--from", request.draw.from,
                      "Combine these generators, each with the identifier of its device if a colon "
                      "follows; nothing is written unless all of them can be used")
          ->type_name("NAME[:ID],...")
          ->check(CheckSources);
  read.add_option("--need", request.draw.need, "With --from, N of the generators are enough")
      ->type_name("N")
      ->check(CheckDecimal)
      ->needs(from);
  read.add_option_function<std::string>(
          "--record",
          [&request](const std::string& file) {
            request.record = file;
            request.draw.isRecorded = true;
          },
          "Write to FILE, as JSON, which generators and plug-ins the bytes are from")
      ->type_name("FILE")
      ->check(CheckRecord);
  return from;
}

void AddRead(CLI::App& app, ReadRequest& request) {
  CLI::App* const read = app.add_subcommand("read", "Draw random bytes from a generator");
  CLI::Option* const name =
      read->add_option("NAME", request.draw.name, "The generator; default: the configured one");
  read->add_option("-n", request.draw.size, "The number of bytes")
      ->type_name("BYTES")
      ->required()
      ->check(CheckDecimal);
  const auto addEncoding = [read, &request](const char* flag, Encoding encoding, const char* help) {
    return read->add_flag_callback(
        flag, [&request, encoding] { request.encoding = encoding; }, help);
  };
  CLI::Option* const raw =
      addEncoding("--raw", Encoding::kRaw, "Write the bytes unchanged, but never to a terminal");
  CLI::Option* const hex =
      addEncoding("--hex", Encoding::kHex, "Write hexadecimal digits (the default)");
  CLI::Option* const base64 = addEncoding("--base64", Encoding::kBase64, "Write base64");
  raw->excludes(hex)->excludes(base64);
  hex->excludes(base64);
  CLI::Option* const file =
      read->add_option(
              "-o", request.file,
              "Write to FILE instead of standard output; only its owner can read it, and it "
              "appears once all bytes are drawn")
          ->type_name("FILE")
          ->check(CheckFileName);
  read->add_flag("--force", request.replacesOthers,
                 "With -o, replace a file that belongs to another user")
      ->needs(file);
  CLI::Option* const device = read->add_option("--device", request.draw.device,
                                               "Draw from the device with this hardware identifier")
                                  ->type_name("ID")
                                  ->check(CheckDevice);
  CLI::Option* const unchecked = read->add_flag_callback(
      "--unchecked", [&request] { request.draw.isChecked = false; },
      "Write the bytes without checking that they look random");
  CLI::Option* const from = AddCombination(*read, request);
  from->excludes(name)->excludes(device)->excludes(unchecked);
  read->callback([&request] { RunRead(request); });
}

void AddDefault(CLI::App& app, std::uint32_t& mask, std::string& name, std::string& hardwareId) {
  CLI::App* const show = app.add_subcommand("default", "Show or store the default generator");
  CLI::Option* const maskOption =
      show->add_option(
              "--mask", mask,
              "The acceptable fallbacks when no default is configured, as a sum: 1 bio, 2 bioqt, "
              "8 unixx11, 4 biokbd")
          ->capture_default_str()
          ->check(CheckMask);
  CLI::App* const set = show->add_subcommand("set", "Store the default generator");
  set->add_option("NAME", name, "The generator, at most 17 bytes; \"\" removes the default")
      ->required();
  set->add_option("HARDWARE-ID", hardwareId, "The device to use, at most 17 bytes");
  set->excludes(maskOption);
  set->callback([&name, &hardwareId] { RunDefaultSet(name, hardwareId); });
  show->callback([show, &mask] {
    if (show->get_subcommands().empty()) RunDefault(mask);
  });
}

void AddDoctor(CLI::App& app, DoctorRequest& request) {
  CLI::App* const doctor =
      app.add_subcommand("doctor", "Explain why a generator is not listed and how to fix it");
  CLI::Option* const kind =
      doctor->add_option("KIND", request.kind, "The kind to examine; default: all twelve");
  doctor->add_flag("--json", request.asJson, "Print the report as JSON");
  doctor->add_option("--timeout", request.timeout, "Time limit for each plug-in, at most 3600")
      ->type_name("SECONDS")
      ->capture_default_str()
      ->check(CheckDecimal)
      ->check(CLI::Range(1, 3600));
  CLI::Option* const openssl =
      doctor
          ->add_flag("--openssl", request.isOpenssl,
                     "Draw as programs that use OpenSSL do, and show from which generator the "
                     "bytes come")
          ->excludes(kind);
  doctor
      ->add_option("--user", request.user,
                   "With --openssl, draw as this user; only root can name another one")
      ->type_name("NAME")
      ->needs(openssl)
      ->check(CheckUser);
  doctor->footer(
      "Starts the library with all plug-ins in one process, and each examined plug-in alone in a\n"
      "separate process, so a crash or a hang ends neither the doctor nor the other\n"
      "examinations. Where the two results differ, the start is authoritative. What a plug-in\n"
      "prints on standard error is shown.\n\n"
      "Exit status:\n"
      "  0  Every installed plug-in works, or needs a display or a terminal and there is none.\n"
      "     The library starts and stops. The configured default can be used, and no line that\n"
      "     was meant to configure it is ignored. Other users cannot change what root's\n"
      "     processes load or write.\n"
      "     With KIND: programs get that generator, even if other plug-ins have problems.\n"
      "     With --openssl: the draw comes from this project's provider.\n"
      "  1  One of these is not true, or an examination failed.\n"
      "  2  Wrong usage.\n"
      "  3  Without KIND: no generator is usable.");
  doctor->callback(
      [&request] { request.isOpenssl ? RunOpensslDoctor(request) : RunDoctor(request); });
}

void AddCheck(CLI::App& app, CheckRequest& request) {
  CLI::App* const check =
      app.add_subcommand("check", "Check that a plug-in meets the contract; for plug-in authors");
  check->add_option("PLUGIN", request.file, "The file of the plug-in")->required();
  check
      ->add_option("--factory", request.factory,
                   "Call this factory instead of the one that belongs to the file name")
      ->type_name("NAME");
  check->add_option("--timeout", request.timeout, "Time limit for each call, at most 3600")
      ->type_name("SECONDS")
      ->capture_default_str()
      ->check(CheckDecimal)
      ->check(CLI::Range(1, 3600));
  check
      ->add_option("--only", request.only,
                   "Run only these checks, named as in the report and separated by commas")
      ->type_name("CHECK[,CHECK]")
      ->allow_extra_args(false)
      ->delimiter(',');
  check->add_flag("--json", request.asJson, "Print the report as JSON");
  check->footer(
      "Opens and calls the plug-in as the library and its hosts do, many times: draws, devices,\n"
      "several threads, 1,000 loads. Each check runs in a process of its own, so a crash or a\n"
      "hang affects that check alone. A draw that waits for a user is cancelled after a quarter\n"
      "of the time limit; checks that need its bytes are then not examined. The same goes for\n"
      "checks whose calls together exceed the time limit for one call. What the plug-in prints\n"
      "is shown at the end, each line once with its count; what it prints on standard error\n"
      "before a call waits is also shown at once, because it may be a question to the user.\n\n"
      "A failed check means that the plug-in breaks the contract. In any check, an operation\n"
      "that ends the process is a failure. A warning is about something that is permitted, but\n"
      "hosts will have trouble with the generator. A note says what this machine lacks.\n\n"
      "Exit status: 0 no check failed (there may be warnings); 1 a check failed; 2 wrong usage,\n"
      "or PLUGIN is not a shared library for this machine.");
  check->callback([&request] { RunCheck(request); });
}

void AddTest(CLI::App& app, TestRequest& request) {
  CLI::App* const test =
      app.add_subcommand("test", "Draw from a generator and test whether its bytes look random");
  test->add_option("KIND", request.source.name, "The generator; default: the configured one");
  test->add_option("-n", request.size,
                   "The number of bytes; default: what comes in about five seconds, at most 64 MiB")
      ->type_name("BYTES")
      ->check(CheckDecimal)
      ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1} << 40).description(""));
  test->add_option("--restarts", request.restarts,
                   "The number of processes that start the library, to compare their first bytes; "
                   "default: 200")
      ->type_name("N")
      ->check(CheckDecimal);
  test->add_option("--device", request.source.device,
                   "Test the device with this hardware identifier")
      ->type_name("ID")
      ->check(CheckDevice);
  test->add_flag("--json", request.asJson, "Print the report as JSON");
  test->add_option("--picture", request.picture, "Write a picture of the bytes to FILE, as PNG")
      ->type_name("FILE")
      ->check(CheckPicture);
  test->footer(
      "A generator that needs the user is tested with 256 bytes and without restarts, unless -n\n"
      "and --restarts say otherwise. A perfect source fails fewer than one run in a million.\n\n"
      "Statistics cannot show whether bytes can be predicted: a counter hashed with SHA-256\n"
      "passes every test.\n\n"
      "Exit status: 0 nothing was found; 1 the bytes are not random; 2 wrong usage, or the file\n"
      "of the picture cannot be created; 3 the generator could not be tested.");
  test->callback([&request] { RunTest(request); });
}

// The commands that rngctl runs in child processes. They are not in the help.
void AddChildren(CLI::App& app, int& channel) {
  const auto add = [&app, &channel](const char* command, void (*run)(int channel)) {
    CLI::App* const child = app.add_subcommand(command, "")->group("");
    child->add_option("CHANNEL", channel)->required();
    child->callback([run, &channel] { run(channel); });
  };
  add(kDoctorChildCommand, RunDoctorChild);
  add(kOpensslChildCommand, RunOpensslChild);
  add(kCheckChildCommand, [](int number) { RunCheckChild(number); });
  add(kDevicesChildCommand, [](int number) { RunDevicesChild(number); });
  add(kTestChildCommand, RunTestChild);
}

int Run(int count, char** arguments) {
  CLI::App app("Lists random-number generators, draws from them, and stores the default.",
               "rngctl");
  app.set_version_flag("--version", "rngctl " RNGCTL_VERSION);
  app.require_subcommand(1);
  app.failure_message([](const CLI::App* asked, const CLI::Error& error) {
    const std::vector<std::string> rest = asked->remaining();
    const bool isUnknown =
        !rest.empty() && !rest[0].starts_with('-') && asked->get_subcommands().empty();
    return Message(isUnknown ? "There is no command " + Quoted(rest[0]) : error.what(),
                   "Run with --help for more information.");
  });
  app.footer(
      "Exit status: 0 success, 1 negative answer, 2 wrong usage, 3 no usable generator (doctor)\n"
      "or generator not tested (test).");
  ReadRequest request;
  std::uint32_t mask =
      kDefaultFallbackBio | kDefaultFallbackBioQt | kDefaultFallbackBioX11 | kDefaultFallbackBioKb;
  std::string name;
  std::string hardwareId;
  bool listsAsJson = false;
  AddList(app, listsAsJson);
  AddRead(app, request);
  AddDefault(app, mask, name, hardwareId);
  DoctorRequest doctorRequest;
  AddDoctor(app, doctorRequest);
  CheckRequest checkRequest;
  AddCheck(app, checkRequest);
  TestRequest testRequest;
  AddTest(app, testRequest);
  int channel = -1;
  AddChildren(app, channel);
  int status = kDone;
  try {
    app.parse(count, arguments);
  } catch (const CLI::ParseError& error) {  // or a request for help, whose status is 0
    status = app.exit(error) == 0 ? kDone : kWrongUsage;
  }
  FinishOutput();
  return status;
}

}  // namespace

int main(int count, char** arguments) {
  try {
    OpenStandardDescriptors();
    return Run(count, arguments);
  } catch (const Interrupted& interrupted) {
    for (const std::string& process : interrupted.leftRunning) {
      PrintMessage("Still running: " + process);
    }
    EndBySignal(interrupted.signal);
  } catch (const Refusal& refusal) {
    PrintMessage(refusal.what(), refusal.advice);
    return refusal.status;
  } catch (const std::exception& error) {
    PrintMessage(std::string("A plug-in or the system failed: ") + error.what(),
                 "Run \"rngctl doctor\" to find out which.");
    return kNegativeAnswer;
  } catch (const abi::__forced_unwind&) {
    throw;  // a plug-in called pthread_exit: stopping it here would abort the process
  } catch (...) {
    PrintMessage("A plug-in failed without an error message.");
    return kNegativeAnswer;
  }
}
