// What the plug-in tells administrators' tools about the hardware generator.

#include "tests/support/fake_settings.h"
#include "tests/unixdev/hardware.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <stdexcept>

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr char kUdev[] =
    "Add a udev rule that lets a group read it, and add this user to the group.";

using Reporter = std::int32_t (*)(char* buffer);

Reporter FindReporter() {
  void* const plugin = ::dlopen(TreePath("lib/librngunixdev.so").c_str(), RTLD_LAZY | RTLD_NOLOAD);
  const auto report = reinterpret_cast<Reporter>(::dlsym(plugin, "GetRngReport"));
  ::dlclose(plugin);
  return report;
}

}  // namespace

class HardwareReport : public Hardware {
 protected:
  void SetUp() override {
    Hardware::SetUp();
    device.read = [this](unsigned char* bytes, std::size_t size) {
      ++reads;
      return FillWell(bytes, size);
    };
    SetSource("virtio_rng.0\n");
  }

  void SetSource(const std::string& text) {
    source.path = TreePath("rng_current");
    WriteFile(source.path, text);
  }

  void Configure(const char* type, const char* device_) {
    settings.type = type;
    settings.hardwareId = device_;
    ASSERT_EQ(1, Restart(&settings));
  }

  static std::string Report() {
    const Reporter report = FindReporter();
    const std::int32_t size = report(nullptr);
    if (size == 0) return "";
    EXPECT_LT(1, size);  // an empty report has no terminator either
    std::string text(static_cast<std::size_t>(size) + 1, '!');
    EXPECT_EQ(size, report(text.data()));
    EXPECT_EQ(std::string("\0!", 2), text.substr(text.size() - 2));
    text.resize(text.size() - 2);
    return text;
  }

  FakeFile& source = FileAt("/sys/class/misc/hw_random/rng_current");
  FakeSettings settings;
  int reads = 0;
};

TEST_F(HardwareReport, NamesTheDeviceAndItsSource) {
  EXPECT_EQ("device\thwrng\tThe kernel's hardware generator /dev/hwrng, source virtio_rng.0\n",
            Report());
}

TEST_F(HardwareReport, TakesNoBytesFromADraw) {
  Report();
  EXPECT_EQ(1, device.opened);
  EXPECT_EQ(O_NONBLOCK | O_CLOEXEC, device.flags & (O_NONBLOCK | O_CLOEXEC));
  EXPECT_EQ(0, reads);
}

TEST_F(HardwareReport, SelectsNothing) {
  Report();
  EXPECT_FALSE(IsSelected());
}

TEST_F(HardwareReport, NamesNoSourceIfTheKernelDoesNotSay) {
  constexpr char kLine[] = "device\thwrng\tThe kernel's hardware generator /dev/hwrng\n";
  for (const char* text : {"", "\n"}) {
    SetSource(text);
    EXPECT_EQ(kLine, Report());
  }
  source.error = ENOENT;
  EXPECT_EQ(kLine, Report());
}

TEST_F(HardwareReport, IsPlainTextWhateverTheSourceIsCalled) {
  for (const auto& [text, shown] : {std::pair<std::string, std::string>("a\tb\033[2J\n", "a?b?[2J"),
                                    {"\xE9t\xE9 \x7F\n", "?t? ?"},
                                    {"one\ntwo\n", "one"},
                                    {"x", "x"},
                                    {std::string("a\0b", 3), "a?b"},
                                    {std::string(1000, 'x'), std::string(64, 'x')}}) {
    SetSource(text);
    EXPECT_THAT(Report(), EndsWith(", source " + shown + "\n"));
  }
}

TEST_F(HardwareReport, WritesWhatTheFirstCallSaw) {
  const Reporter report = FindReporter();
  const std::int32_t size = report(nullptr);
  SetSource("a source with a longer name\n");
  std::string text(static_cast<std::size_t>(size), '!');
  EXPECT_EQ(size, report(text.data()));
  EXPECT_THAT(text, HasSubstr("virtio_rng.0"));
}

TEST_F(HardwareReport, IsEmptyWithoutTheDevice) {
  for (const int error : {ENOENT, EACCES}) {
    device.error = error;
    EXPECT_EQ("", Report());
  }
  device.error = 0;
  SetSource("none\n");
  EXPECT_EQ("", Report());
  device.path = TreePath("");
  EXPECT_EQ("", Report());
  char byte = '!';
  EXPECT_EQ(0, FindReporter()(&byte));
  EXPECT_EQ('!', byte);
}

TEST_F(HardwareReport, IsEmptyWhenSomethingElseIsConfigured) {
  device.error = ENOENT;
  for (const auto& [type, id] : {std::pair<const char*, const char*>("unixdev", ""),
                                 {"unixdev", "hwrng1"},
                                 {"unixdev1", "hwrng"},
                                 {"dsdr", "hwrng"},
                                 {"", "hwrng"}}) {
    Configure(type, id);
    EXPECT_EQ("", Report()) << type << ' ' << id;
  }
  settings.type.reset();
  EXPECT_EQ("", Report());
  Configure("unixdev", "hwrng");
  settings.hardwareId.reset();
  EXPECT_EQ("", Report());
}

TEST_F(HardwareReport, IsEmptyAfterTheSettingsWereTakenAway) {
  Configure("unixdev", "hwrng");
  device.error = ENOENT;
  ASSERT_NE("", Report());
  library.GetRng("unixdev")->SetSettings(nullptr);
  EXPECT_EQ("", Report());
}

TEST_F(HardwareReport, ExplainsWhyTheConfiguredDeviceCannotBeUsed) {
  Configure("unixdev", "hwrng");
  const std::string unreadable = "problem\tThis user may not read /dev/hwrng. ";
  for (const auto& [error, line] :
       {std::pair<int, std::string>(
            ENOENT,
            "problem\tThere is no /dev/hwrng. Load the driver of a hardware "
            "generator. In a container, pass the device through to it.\n"),
        {EACCES, unreadable + kUdev + '\n'},
        {EPERM, unreadable + kUdev + '\n'},
        {EMFILE, "problem\t/dev/hwrng cannot be opened: Too many open files.\n"}}) {
    device.error = error;
    EXPECT_EQ(line, Report());
  }
}

TEST_F(HardwareReport, ExplainsThatTheConfiguredDeviceHasNoSource) {
  Configure("unixdev", "hwrng");
  SetSource("none\n");
  EXPECT_EQ(
      "problem\tThe kernel has no source for /dev/hwrng. Connect a hardware generator, or load its "
      "driver.\n",
      Report());
  device.path = TreePath("");
  EXPECT_EQ("problem\t/dev/hwrng is not a character device. Remove it, and restart the machine.\n",
            Report());
}

TEST_F(HardwareReport, IsTheSameWhereTheDeviceIsOpenedAsStandardInput) {
  Configure("unixdev", "hwrng");
  const std::string report = Report();
  ::close(STDIN_FILENO);
  EXPECT_EQ(report, Report());
  device.path = TreePath("");
  errno = ENOENT;  // of an earlier call
  EXPECT_THAT(Report(), HasSubstr("is not a character device"));
  EXPECT_EQ(-1, ::fcntl(STDIN_FILENO, F_GETFD));
}

TEST_F(HardwareReport, OfAConfiguredDeviceThatWorksHasNoProblem) {
  Configure("unixdev", "hwrng");
  EXPECT_THAT(Report(), AllOf(StartsWith("device\t"), Not(HasSubstr("problem"))));
}

// The settings may be slow, and hosts may not expect the call.
TEST_F(HardwareReport, IsTheOnlyReaderOfTheSettings) {
  Configure("unixdev", "hwrng");
  EXPECT_TRUE(rng != nullptr && library.GetRng("unixdev")->SelectDevice("hwrng"));
  EXPECT_EQ("", CallLog("settings"));
  device.error = ENOENT;
  Report();
  EXPECT_EQ("GetType GetHardwareId", CallLog("settings"));
}

TEST_F(HardwareReport, OfSettingsThatThrowIsEmpty) {
  class ThrowingSettings final : public IRngSettings {
    const char* GetType() override {
      if (isMemoryShort) throw std::bad_alloc();
      throw std::runtime_error("no settings");
    }
    bool SetType(const char*) override { return false; }
    const char* GetHardwareId() override { return nullptr; }
    bool SetHardwareId(const char*) override { return false; }
    const char* GetDsdrFilePath() override { return ""; }

   public:
    bool isMemoryShort = false;
  } throwing;
  ASSERT_EQ(1, Restart(&throwing));
  EXPECT_NE("", Report());
  device.error = ENOENT;
  EXPECT_EQ("", Report());
  throwing.isMemoryShort = true;
  EXPECT_EQ("", Report());
}
