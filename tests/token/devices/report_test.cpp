// What GetRngReport says. Tools call it while the plug-in is listed, and after a start that found nothing.

#include "tests/support/tree.h"
#include "tests/token/token_host.h"

#include <algorithm>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <p11-kit/pkcs11.h>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr char kDeviceA1[] = "device\tA1\tToken \"Token\", model M1\n";

class TokenReport : public TokenHost {};

// The factory and the report alone, as in a tool that finds out why the plug-in is not available.
class UnavailableToken : public TokenHost {
 protected:
  UnavailableToken() : plugin(::dlopen(TreePath("lib/librngrutoken.so").c_str(), RTLD_LAZY)) {
    rng = reinterpret_cast<RngFactory>(::dlsym(plugin, "GetRuTokenRng"))();
    rng->SetSettings(nullptr);
  }
  ~UnavailableToken() override {
    rng->Release();
    ::dlclose(plugin);
  }

  std::string ReportOf(std::initializer_list<std::string> lines) {
    tokens.Set(lines);
    EXPECT_FALSE(rng->IsAvailable());
    return Report();
  }

  void* const plugin;
};

}  // namespace

TEST_F(TokenReport, HasALineForEachDevice) {
  Start({"slot id=0", "slot id=1 serial=B2 label=My%20token model=X"});
  EXPECT_EQ(std::string(kDeviceA1) + "device\tB2\tToken \"My token\", model X\n", Report());
}

TEST_F(TokenReport, SecondCallWritesWhatTheFirstSaw) {
  Start({"slot id=0"});
  void* const plugin = ::dlopen(TreePath("lib/librngrutoken.so").c_str(), RTLD_LAZY);
  const auto report = reinterpret_cast<decltype(&GetRngReport)>(::dlsym(plugin, "GetRngReport"));
  const std::int32_t size = report(nullptr);
  tokens.Set({"slot id=0", "slot id=1 serial=B2 label=A%20later%20one"});
  std::string text(static_cast<std::size_t>(size), '!');
  EXPECT_EQ(size, report(text.data()));
  EXPECT_EQ(kDeviceA1, std::string(text.c_str()));
  ::dlclose(plugin);
}

TEST_F(TokenReport, OpensOnlyTokensThatMatch) {
  Start({"slot id=0", "slot id=1 serial=B2 manufacturer=Other", "slot id=2 serial=C3 rng=no",
         "slot id=3 serial=D4 initialized=no", "slot id=4 serial=E5 manufacturer=Other rng=no"});
  const std::string report = Report();
  EXPECT_THAT(report, StartsWith(kDeviceA1));
  EXPECT_THAT(report, HasSubstr("\"Token\" (serial number B2) does not match"));
  EXPECT_THAT(report, HasSubstr(". To use it, rebuild the plug-in with another URI.\n"));
  EXPECT_THAT(report, HasSubstr("\"Token\" (serial number C3) has no random-number generator"));
  EXPECT_EQ(3, std::count(report.begin(), report.end(), '\n'));
  EXPECT_THAT(tokens.OpenedSlots(), ElementsAre(0));
}

TEST_F(TokenReport, SaysWhyATokenCannotBeUsed) {
  Start({"slot id=0", "slot id=1 serial=T label=One", "slot id=2 serial=T label=Other",
         "slot id=3 serial=P label=Locked pin=yes", "slot id=4 serial=Z label=Half zeros=half",
         "slot id=5 serial=a%3Db label=Odd"});
  const std::string report = Report();
  EXPECT_THAT(report, StartsWith(kDeviceA1));
  for (const char* const problem :
       {"problem\tToken \"One\" (serial number T) has the same serial number as another token, so "
        "neither is used. Remove one, or rebuild the plug-in with module-name, module-path or "
        "token in its URI.\n",
        "problem\tToken \"Other\" (serial number T) has the same serial number as another",
        "problem\tToken \"Locked\" (serial number P) requires a PIN to generate random bytes, and "
        "this plug-in never asks for one. Insert another token.\n",
        "problem\tToken \"Half\" (serial number Z) returns bytes that are not random. Remove it.\n",
        "problem\tToken \"Odd\" (serial number a=b) cannot be selected, because its serial number "
        "cannot be stored in rng.ini. It can be used only while no device is selected.\n"}) {
    EXPECT_THAT(report, HasSubstr(problem));
  }
  EXPECT_THAT(report, Not(HasSubstr("device\tT\t")));
}

TEST_F(TokenReport, ContainsNoControlCharactersOfTokens) {
  Start({"slot id=0", "slot id=1 serial=" + Encoded("a\tb\nc") +
                          " label=" + Encoded("x\ndevice\tfake\ttext\x1b[0m\xff")});
  const std::string report = Report();
  EXPECT_EQ(2, std::count(report.begin(), report.end(), '\n'));
  EXPECT_THAT(report, AllOf(StartsWith(kDeviceA1), Not(HasSubstr("\x1b")),
                            Not(HasSubstr("\ndevice\tfake"))));
}

TEST_F(TokenReport, TakesNoTokenAwayFromDraws) {
  Start({"slot id=0", "slot id=1 serial=B2"});
  ASSERT_TRUE(rng->SelectDevice("B2"));
  Report();
  EXPECT_EQ("B2", HardwareId());
  EXPECT_EQ("drawn", Draw());
  EXPECT_EQ(0U, tokens.OpenSessions());
}

// Somebody else uses it.
TEST_F(TokenReport, TokenWithoutAFreeSessionIsADevice) {
  Start({"slot id=0"});
  tokens.Set({"slot id=0 sessions=0"});
  EXPECT_EQ(kDeviceA1, Report());
}

// Not that another token has the same serial number.
TEST_F(TokenReport, GivesTheResultOfAModuleThatCancels) {
  Start({"slot id=0", "slot id=1 serial=B2"});
  tokens.Set({"slot id=0", "slot id=1 serial=B2", Fault(1, "C_OpenSession", 1, CKR_CANCEL)});
  EXPECT_THAT(Report(), AllOf(StartsWith("device\tB2\t"),
                              HasSubstr("(serial number A1) cannot generate random bytes"),
                              Not(HasSubstr("same serial number"))));
}

// It may be anything; it matters only if nothing else works.
TEST_F(TokenReport, SaysNothingOfAnUnreadableTokenBesideADevice) {
  Start({"slot id=0", "slot id=1 known=no"});
  EXPECT_EQ(kDeviceA1, Report());
}

TEST_F(TokenReport, SaysNothingOfATokenThatWasJustTakenOut) {
  Start({"slot id=0"});
  for (const unsigned long result : {CKR_TOKEN_NOT_PRESENT, CKR_SLOT_ID_INVALID}) {
    tokens.Set({"slot id=0", "slot id=1", Fault(result, "C_GetTokenInfo", 1, result) + " times=9"});
    const std::string report = Report();
    EXPECT_THAT(report, StartsWith("problem\tNo usable token"));
    EXPECT_EQ(1, std::count(report.begin(), report.end(), '\n'));
  }
}

TEST_F(UnavailableToken, ReportSaysWhy) {
  EXPECT_THAT(ReportOf({}),
              AllOf(StartsWith("problem\tNo usable token matches pkcs11:manufacturer=Mock"),
                    HasSubstr("Insert one. If one is inserted, allow this user to use it.\n")));
  EXPECT_THAT(ReportOf({"slot id=0 initialized=no"}), HasSubstr("If one is inserted"));
  EXPECT_THAT(ReportOf({"slot id=0 pin=yes"}), Not(HasSubstr("If one is inserted")));
  EXPECT_THAT(ReportOf({"slot id=0 manufacturer=Other"}),
              HasSubstr("does not match pkcs11:manufacturer=Mock"));
  EXPECT_THAT(ReportOf({"slot id=0 manufacturer=Other"}),
              HasSubstr(": its manufacturer is \"Other\" instead of \"Mock\"."));
  EXPECT_THAT(ReportOf({"slot id=0 manufacturer=Other rng=no"}), HasSubstr("does not match"));
  EXPECT_THAT(ReportOf({"slot id=0 rng=no"}), HasSubstr("has no random-number generator"));
  EXPECT_THAT(ReportOf({"slot id=0 pin=yes"}), HasSubstr("requires a PIN"));
  EXPECT_THAT(
      ReportOf({"slot id=0 initialized=no"}),
      HasSubstr("The token in slot 0 of " MOCK_MODULE " has not been initialized. Initialize "
                "it with its vendor's tool.\n"));
  EXPECT_THAT(ReportOf({"slot id=0 known=no"}), HasSubstr("The token in slot 0"));
  EXPECT_THAT(ReportOf({"slot id=0", Fault(1, "C_OpenSession", 1, 0x30) + " times=100"}),
              AllOf(HasSubstr("cannot generate random bytes: "), HasSubstr(" (0x30). ")));
  EXPECT_EQ(0U, tokens.OpenSessions());
}

// A token would not help.
TEST_F(UnavailableToken, ReportSaysThatNoModuleCanBeUsed) {
  EXPECT_THAT(ReportOf({"slot id=0", Fault(1, "C_Initialize", 1, CKR_DEVICE_ERROR) + " times=99"}),
              AllOf(StartsWith("problem\tThe module " MOCK_MODULE " cannot be initialized: "),
                    Not(HasSubstr("No usable token"))));
}
