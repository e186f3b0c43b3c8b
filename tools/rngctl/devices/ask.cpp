#include "tools/rngctl/devices/ask.h"

#include "providers/library_handle.h"
#include "tools/rngctl/devices/messages.h"
#include "tools/rngctl/loader/elf_facts.h"
#include "tools/rngctl/loader/link_map.h"
#include "tools/rngctl/process/child.h"

namespace {

DeviceReport Faulty(const std::string& what) { return {{}, {}, "Its device report " + what + "."}; }

DeviceReport Understand(const DevicesAnswer& answer) {
  if (answer.size == 0) return {};
  const std::string size = std::to_string(answer.size);
  if (answer.size < 0) return Faulty("has the negative size " + size);
  if (answer.size > kLargestReport) {
    return Faulty("has " + size + " bytes; the maximum is " + std::to_string(kLargestReport));
  }
  if (answer.sizeAgain != answer.size) {
    return Faulty("has " + size + " bytes in the first call and " +
                  std::to_string(answer.sizeAgain) + " in the second");
  }
  return ParseDeviceReport(answer.text);
}

}  // namespace

std::string FindOpenReporter(const std::string& libraryFile) {
  const LibraryHandle library(::dlopen(libraryFile.c_str(), RTLD_LAZY | RTLD_NOLOAD));
  const link_map* const map = MapOf(library.get());
  const std::string file = map ? map->l_name : "";
  return !file.empty() && Exports(file, kReportFunction) ? file : "";
}

DeviceReport AskForDevices(const std::string& file, const std::string& factory,
                           std::chrono::seconds limit) {
  const ChildResult result = RunChild(
      {kDevicesChildCommand, Encode(DevicesQuestion{file, factory}), limit, LimitOf::kLife});
  const auto answer = result.Last<DevicesAnswer>();
  if (answer && answer->step == DevicesStep::kEnd) return Understand(*answer);
  const std::string where =
      answer && answer->step == DevicesStep::kReport ? "" : "could not be read: the plug-in ";
  const bool hasThrown = answer && answer->hasThrown;
  return Faulty(where + (hasThrown ? "threw an exception" : DescribeEnd(result, limit)));
}
