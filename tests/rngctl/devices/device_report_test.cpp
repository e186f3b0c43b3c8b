#include "tools/rngctl/devices/device_report.h"

#include <gmock/gmock.h>
#include <utility>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(DeviceReport, HasDevicesAndProblemsInTheirOrder) {
  const DeviceReport report = ParseDeviceReport(
      "device\tA\tFirst\nproblem\tThe second is off.\ndevice\t12345678901234567\tThird");
  ASSERT_EQ(2U, report.devices.size());
  EXPECT_EQ("A", report.devices[0].identifier);
  EXPECT_EQ("First", report.devices[0].text);
  EXPECT_EQ("12345678901234567", report.devices[1].identifier);
  EXPECT_THAT(report.problems, ElementsAre("The second is off."));
  EXPECT_EQ("", report.fault);
}

TEST(DeviceReport, IsEmptyWithoutText) {
  const DeviceReport report = ParseDeviceReport("");
  EXPECT_THAT(report.devices, IsEmpty());
  EXPECT_THAT(report.problems, IsEmpty());
  EXPECT_EQ("", report.fault);
}

TEST(DeviceReport, DropsLinesThatBreakTheContractAndNamesTheFirst) {
  const std::string form = "is neither \"device<TAB>";
  for (const auto& [line, fault] :
       {std::pair<std::string, std::string>("device A First", form),
        {"", form},
        {"device\tA", form},
        {"device\tA\tFirst\tmore", form},
        {"problem", form},
        {"problem\tone\ttwo", form},
        {"gadget\tA\tFirst", form},
        {"Device\tA\tFirst", form},
        {"device\tA\t", form},
        {"problem\t", form},
        {"device\t\tFirst", "names a device without an identifier"},
        {"device\t123456789012345678\tFirst", "more than 17 bytes"},
        {"device\tB\tAgain", "repeats the identifier \"B\""},
        {"device\tA\tFi\033[2Jrst", "has a control character, or is not UTF-8"},
        {"device\tA\tFirst\r", "has a control character, or is not UTF-8"},
        {"problem\t\xE9t\xE9", "has a control character, or is not UTF-8"}}) {
    const DeviceReport report = ParseDeviceReport("device\tB\tText\n" + line + "\nproblem\tP\nx");
    EXPECT_EQ(1U, report.devices.size()) << line;
    EXPECT_THAT(report.problems, ElementsAre("P")) << line;
    EXPECT_THAT(report.fault, AllOf(testing::StartsWith("Line 2 of its device report "),
                                    HasSubstr(fault), testing::EndsWith(".")))
        << line;
  }
}
