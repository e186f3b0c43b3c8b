// "rngctl read --record": what went into the bytes.

#include "tests/rngctl/installed_tool.h"
#include "tests/support/permissions.h"
#include "tests/support/tree.h"

#include <ctime>
#include <filesystem>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

using Json = nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

std::string RecordPath() { return TreePath("keys/record"); }

Json ParseRecord() {
  const std::string text = ReadFile(RecordPath());
  const Result valid = MatchSchema("read-record.schema.json", text);
  EXPECT_EQ(0, valid.status) << valid.errors;
  return Json::parse(text, nullptr, false);
}

std::string DigestOf(const std::string& file) {
  return RunShell("sha256sum " + file).output.substr(0, 64);
}

Json Source(const std::string& kind, int draws, int bytes) {
  const std::string file = fs::canonical(TreePath("lib/" + LibraryFileOf(kind)));
  return {{"kind", kind},   {"device", nullptr}, {"plugin", file},  {"sha256", DigestOf(file)},
          {"draws", draws}, {"bytes", bytes},    {"checked", true}, {"failure", nullptr}};
}

class ReadRecord : public RngctlTest {
 protected:
  void SetUp() override {
    RngctlTest::SetUp();
    fs::create_directory(TreePath("keys"));
  }

  static Result Record(const std::string& arguments) {
    return Run("read " + arguments + " --record " + RecordPath());
  }
};

}  // namespace

TEST_F(ReadRecord, SaysWhatWentIntoACombination) {
  InstallPlugin("dsdr", "stub");
  const Result result = Record("--from dsdr,unixdev -n 32");
  EXPECT_EQ(0, result.status) << result.errors;
  Json record = ParseRecord();
  EXPECT_THAT(record.at("time").get<std::string>(), StartsWith("20"));
  record.erase("time");
  EXPECT_EQ(Json({{"version", "1.0.0"},
                  {"size", 32},
                  {"combined", true},
                  {"need", 2},
                  {"draws", 1},
                  {"sources", {Source("dsdr", 1, 64), Source("unixdev", 1, 64)}}}),
            record);
  EXPECT_EQ(0600U, ModeOf(RecordPath()));
  // Neither the bytes nor what could be used to guess them.
  EXPECT_EQ(std::string::npos, ReadFile(RecordPath()).find(result.output.substr(0, 16)));
}

TEST_F(ReadRecord, SaysWhatASingleGeneratorGave) {
  EXPECT_EQ(0, Record("unixdev -n 5000 -o " + TreePath("keys/key")).status);
  const Json record = ParseRecord();
  EXPECT_FALSE(record.at("combined"));
  EXPECT_EQ(1, record.at("need"));
  EXPECT_EQ(5000, record.at("size"));
  EXPECT_LT(1, record.at("draws"));
  EXPECT_EQ(Json({Source("unixdev", record.at("draws"), 5000)}), record.at("sources"));
  EXPECT_EQ(0, Record("unixdev -n 0 --unchecked").status);
  EXPECT_FALSE(ParseRecord().at("sources").at(0).at("checked"));
}

TEST_F(ReadRecord, NamesTheDeviceThatIsInUse) {
  InstallPlugin("dsdr", "drawing/NamesItsDevice");
  EXPECT_EQ(0, Record("dsdr --device rr -n 8").status);
  EXPECT_EQ("rr", ParseRecord().at("sources").at(0).at("device"));
  EXPECT_EQ(0, Record("--from unixdev,dsdr:rr -n 8").status);
  EXPECT_EQ("rr", ParseRecord().at("sources").at(1).at("device"));
  EXPECT_EQ(0, Record("--from unixdev,dsdr --need 1 -n 8").status);
  EXPECT_EQ("r1", ParseRecord().at("sources").at(1).at("device"));
}

TEST_F(ReadRecord, SaysWhatWasLeftOut) {
  InstallPlugin("dsdr", "failing_device");
  EXPECT_EQ(0, Record("--from sobol,unixdev,dsdr:X1 -n 8 --need 1").status);
  const Json record = ParseRecord();
  EXPECT_EQ(1, record.at("need"));
  const Json missing = {
      {"kind", "sobol"},   {"device", nullptr},
      {"plugin", nullptr}, {"sha256", nullptr},
      {"draws", 0},        {"bytes", 0},
      {"checked", true},   {"failure", "The generator \"sobol\" is not usable now."}};
  Json failed = Source("dsdr", 0, 0);
  failed["device"] = "X1";
  failed["failure"] = "The generator \"dsdr\" failed, or the draw was cancelled.";
  EXPECT_EQ(Json({missing, Source("unixdev", 1, 64), failed}), record.at("sources"));
}

TEST_F(ReadRecord, CountsTheDrawsOfALongResult) {
  InstallPlugin("dsdr", "drawing/TurnConstant");
  EXPECT_EQ(0, Record("--from unixdev,dsdr -n 5000 --need 1 -o " + TreePath("keys/key")).status);
  const Json record = ParseRecord();
  const int draws = record.at("draws");
  EXPECT_LT(1, draws);
  EXPECT_EQ(64 * draws, record.at("sources").at(0).at("bytes"));
  EXPECT_EQ(1, record.at("sources").at(1).at("draws"));
}

// Draws from it went on, so its failures would otherwise be forgotten.
TEST_F(ReadRecord, KeepsTheLastFailureInPlainText) {
  InstallPlugin("dsdr", "drawing/ThrowsTwice");
  EXPECT_EQ(0, Record("--from dsdr,unixdev -n 20000 --need 1 -o " + TreePath("keys/key")).status);
  Json expected = Source("dsdr", 3, 192);
  expected["failure"] = "The generator \"dsdr\" threw an exception (draw 3 \033[2J\u202E\uFFFD).";
  EXPECT_EQ(expected, ParseRecord().at("sources").at(0));
  const std::string text = ReadFile(RecordPath());
  EXPECT_EQ(5, ParseRecord().at("draws"));
  EXPECT_THAT(text, HasSubstr("(draw 3 \\u001b[2J\\u202e\xEF\xBF\xBD)"));
}

TEST_F(ReadRecord, HasTheTimeInUtc) {
  const std::time_t before = std::time(nullptr);
  EXPECT_EQ(
      0,
      RunShell("TZ=AAA-11:30 " + Rngctl() + " read unixdev -n 8 --record " + RecordPath()).status);
  const std::string text = ParseRecord().at("time");
  std::tm parts = {};
  const char* const end = ::strptime(text.c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts);
  ASSERT_TRUE(end && *end == '\0') << text;
  EXPECT_LE(before, ::timegm(&parts));
  EXPECT_LE(::timegm(&parts), std::time(nullptr));
}

TEST_F(ReadRecord, MayBeLong) {
  InstallPlugin("dsdr", "drawing/LongTexts");
  EXPECT_EQ(0, Record("dsdr -n 8").status);
  EXPECT_EQ(std::string(1000000, 'x'), ParseRecord().at("sources").at(0).at("device"));
}

// Pieces of 768 and 1536 bytes; the second takes long, so the third is not larger.
TEST_F(ReadRecord, ShowsThatPiecesGrowUnlessTheyTakeLong) {
  InstallPlugin("dsdr", "drawing/BeSlow");
  EXPECT_EQ(0, Record("dsdr -n 5000").status);
  EXPECT_LE(4, ParseRecord().at("draws"));
  EXPECT_EQ(0, Record("unixdev -n 100000 -o " + TreePath("keys/key")).status);
  EXPECT_GT(131, ParseRecord().at("draws"));  // as many of the first size
}

// There is no result of which a generator could have been left out.
TEST_F(ReadRecord, IfItCannotBeWrittenNoGeneratorIsReportedAsLeftOut) {
  InstallPlugin("dsdr", "drawing/ReplacesItself");
  fs::copy_file(FakePlugin("dsdr", "stub"), TreePath("lib/librngdsdr.so.new"));
  const Result result = Record("--from dsdr,unixdev,sobol --need 2 -n 8");
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, StartsWith("rngctl: The draw cannot be recorded"));
}

// An old record stays. That no new one appears is tested with the failures of combinations.
TEST_F(ReadRecord, IsNotWrittenIfTheDrawFails) {
  InstallPlugin("dsdr", "failing_device");
  WriteFile(RecordPath(), "old");
  EXPECT_EQ(1, Record("dsdr -n 8").status);
  EXPECT_EQ("old", ReadFile(RecordPath()));
  EXPECT_EQ(1, std::distance(fs::directory_iterator(TreePath("keys")), {}));
}

TEST_F(ReadRecord, WithoutItNoBytesAppear) {
  fs::create_symlink("elsewhere", TreePath("keys/link"));
  const std::vector<std::pair<std::string, std::string>> failures = {
      {TreePath("keys/link"), "it is a link to \"elsewhere\"; name the target itself"},
      {TreePath("absent/record"), "No such file or directory"},
      {TreePath("keys"), "Is a directory"},
      {"/dev/full", "No space left on device"},
  };
  for (const auto& [file, reason] : failures) {
    for (const std::string& output : {std::string(), " -o " + TreePath("keys/key")}) {
      const Result result = Run("read unixdev -n 8 --record " + file + output);
      EXPECT_EQ(1, result.status);
      EXPECT_EQ("", result.output);
      EXPECT_EQ("rngctl: Cannot write to \"" + file + "\": " + reason + ".\n", result.errors);
      EXPECT_EQ(1, std::distance(fs::directory_iterator(TreePath("keys")), {}));
    }
  }
}

TEST_F(ReadRecord, IsNotWrittenWhereTheBytesGo) {
  for (const std::string& places :
       {"-o " + RecordPath() + " --record " + RecordPath(),
        "-o " + TreePath("keys/../keys/record") + " --record " + RecordPath(),
        std::string("--record /dev/stdout")}) {
    const Result result = Run("read unixdev -n 8 " + places);
    EXPECT_EQ(2, result.status) << places;
    EXPECT_EQ("rngctl: The record and the bytes cannot be written to the same place.\n",
              result.errors);
    EXPECT_EQ("", result.output);
    EXPECT_TRUE(fs::is_empty(TreePath("keys")));
  }
}

// The record would replace the name, and the bytes be written to the file that has lost it.
TEST_F(ReadRecord, IsNotWrittenWhereADescriptorLeads) {
  for (const std::string& places : {"--record " + RecordPath() + " >>" + RecordPath(),
                                    "-o " + RecordPath() + " --record /dev/fd/3 3>>" + RecordPath(),
                                    "--record /dev/fd/3 >>" + RecordPath() + " 3>>" + RecordPath(),
                                    std::string("--record /dev/stderr 2>&1 | cat")}) {
    WriteFile(RecordPath(), "old");
    const Result result = RunShell("{ " + Rngctl() + " read unixdev -n 8 " + places + "; } 2>&1");
    EXPECT_EQ("rngctl: The record and the bytes cannot be written to the same place.\n",
              result.output);
    EXPECT_EQ("old", ReadFile(RecordPath()));
  }
}

TEST_F(ReadRecord, IsNotWrittenToADescriptorOfTheProgramItself) {
  const std::string closing = "exec 3>&- 4>&- 5>&- 6>&- 7>&- 8>&- 9>&-; exec ";
  for (int number = 3; number <= 9; ++number) {
    const std::string path = "/dev/fd/" + std::to_string(number);
    const Result result = RunShell(closing + Rngctl() + " read unixdev -n 8 -o " +
                                   TreePath("keys/key") + " --record " + path);
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("rngctl: Cannot write to \"" + path + "\": Bad file descriptor.\n", result.errors);
    EXPECT_TRUE(fs::is_empty(TreePath("keys")));
  }
}

TEST_F(ReadRecord, DoesNotReplaceAFileOfAnotherUser) {
  WriteFile(RecordPath(), "old");
  const bool isGivenAway = ::chown(RecordPath().c_str(), 4711, 4711) == 0;
  const std::string record = isGivenAway ? RecordPath() : "/etc/passwd";
  for (const std::string& option : {std::string(), " --force -o " + TreePath("keys/key")}) {
    const Result result = Run("read unixdev -n 8 --record " + record + option);
    EXPECT_EQ(1, result.status) << option;
    EXPECT_EQ("", result.output);
    EXPECT_THAT(result.errors, EndsWith(std::string(": it belongs to another user (UID ") +
                                        (isGivenAway ? "4711" : "0") + ").\n"));
    EXPECT_EQ("old", ReadFile(RecordPath()));
  }
}

TEST_F(ReadRecord, MayGoToADescriptor) {
  const Result result = Run("read unixdev -n 8 --record /dev/stderr");
  EXPECT_EQ(0, result.status);
  EXPECT_TRUE(Json::accept(result.errors));
  EXPECT_EQ(17U, result.output.size());
}

// Its digest would be that of another plug-in than the one that was drawn from.
TEST_F(ReadRecord, IsRefusedIfThePluginHasBeenReplaced) {
  InstallPlugin("dsdr", "drawing/ReplacesItself");
  const std::string plugin = TreePath("lib/librngdsdr.so");
  EXPECT_EQ(0, Record("dsdr -n 8").status);
  for (const char* other :
       {"stub", "drawing/ReplacesItself"}) {  // the same content is another file
    fs::copy_file(FakePlugin("dsdr", other), plugin + ".new");
    const Result result = Record("--from unixdev,dsdr -n 8");
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("", result.output);
    EXPECT_THAT(
        result.errors,
        MatchesRegex("rngctl: The draw cannot be recorded: the plug-in of \"dsdr\", "
                     "\".*/librngdsdr.so[^\"]*\", has been replaced since it was loaded, or "
                     "cannot be read.\nRun the command again.\n"));
    fs::remove(plugin);
    InstallPlugin("dsdr", "drawing/ReplacesItself");
  }
}

// Both files are unfinished then. The program waits for one of these signals; the other ends it at once.
TEST_F(ReadRecord, LeavesNothingWhenTheDrawIsInterrupted) {
  InstallPlugin("dsdr", "drawing/TellOfSignals");
  const std::string log = TreePath("log");
  for (const auto& [signal, status] : {std::pair("TERM", "143"), std::pair("USR1", "138")}) {
    const Result result = RunShell(
        Rngctl() + " read dsdr -n 5000 -o " + TreePath("keys/key") + " --record " + RecordPath() +
        " 2>" + log + " & until grep -q waiting " + log + "; do sleep 0.01; done; ls " +
        TreePath("keys") + " | wc -l; kill -" + signal + " $!; wait $!; echo $?; rm " + log);
    EXPECT_EQ(std::string("2\n") + status + "\n", result.output);
    EXPECT_TRUE(fs::is_empty(TreePath("keys"))) << signal;
  }
}

// As the record in the forked process would be of the parent's plug-ins, and a forged one is none.
TEST_F(ReadRecord, AForgedEndIsNoRecord) {
  InstallPlugin("dsdr", "drawing/ForgeTheEnd");
  const Result result = Record("dsdr -n 5000 -o " + TreePath("keys/key"));
  EXPECT_EQ(1, result.status);
  EXPECT_TRUE(fs::is_empty(TreePath("keys")));
}
