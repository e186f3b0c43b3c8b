#include "tools/rngctl/doctor/settings/default_fault.h"

#include "tools/rngctl/settings/kinds.h"
#include "tools/rngctl/terminal/text.h"

#include <rngaggregator/provider.h>

namespace {

// The reader of rng.ini knows neither quotes nor comments, so both are part of the value.
DefaultFault FindFaultOfForm(const std::string& what, const std::string& value) {
  const std::string fix =
      "Correct the line in the settings file, or store the default with \"rngctl "
      "default set\".";
  const bool isQuoted = value.find_first_of("\"'") != std::string::npos;
  if (isQuoted)
    return {what + " " + Quoted(value) + " has quotes, which are part of the value", fix};
  if (value.find_first_of(";#") != std::string::npos) {
    return {what + " " + Quoted(value) + " has a comment, which is part of the value", fix};
  }
  if (value.size() < kRngNameSize) return {};
  return {what + " " + Quoted(value) + " is longer than 17 bytes", fix};
}

DefaultFault FindFaultOfName(const std::string& type) {
  if (IsKind(type)) return {};
  const std::string meant = FindMeantKind(type);
  const std::string guess = meant.empty() ? "" : "; did you mean " + Quoted(meant) + "?";
  const std::string fix = meant.empty()
                              ? "Store another default with \"rngctl default set KIND\"."
                              : "Store the right one with \"rngctl default set " + meant + "\".";
  return {"there is no kind " + Quoted(type) + guess, fix};
}

const GeneratorReport* FindRow(const DoctorReport& report, const std::string& kind) {
  for (const GeneratorReport& row : report.generators) {
    if (row.kind == kind) return &row;
  }
  return nullptr;
}

DefaultFault ExplainNotFound(const DoctorReport& report, const std::string& type) {
  if (!report.start.problem.empty()) {
    return {"a start with all plug-ins " + report.start.problem, ""};
  }
  const GeneratorReport* const row = FindRow(report, type);
  if (!row) {
    return {"its plug-in is not loaded", "Run \"rngctl doctor " + type + "\" to find out why."};
  }
  return {"its plug-in is not usable: " + row->summary,
          "Follow the advice for " + type +
              ", or store another default with \"rngctl default set "
              "KIND\"."};
}

// By the devices and problems that the plug-in reports, if it does. Otherwise it may have no devices to choose from.
std::string FixDevice(const DoctorReport& report) {
  const std::string& type = report.settings.type;
  const std::string command = "\"rngctl default set " + type;
  std::string known;
  std::string remedy = "Connect that device";
  if (const GeneratorReport* const row = FindRow(report, type)) {
    for (const Device& device : row->devices) {
      known += (known.empty() ? "" : ", ") + Quoted(device.identifier);
    }
    // The device may be connected, but not be readable, for example.
    if (!row->problems.empty()) remedy = "Follow the advice for " + type;
  }
  if (known.empty()) {
    return remedy + ", store another device with " + command +
           " DEVICE\", or accept any device with " + command + "\".";
  }
  return "The devices are " + known + ". Connect the configured one, or store one of these with " +
         command + " DEVICE\".";
}

// The first of the two that is not empty.
DefaultFault Or(const DefaultFault& one, const DefaultFault& other) {
  return one.problem.empty() ? other : one;
}

}  // namespace

DefaultFault FindDefaultFault(const DoctorReport& report) {
  const std::string& type = report.settings.type;
  const std::string& device = report.settings.hardwareId;
  if (type.empty() || !report.start.findsDefault) return {};
  if (!*report.start.findsDefault) {
    const DefaultFault form = Or(FindFaultOfForm("the kind", type), FindFaultOfName(type));
    const DefaultFault length =
        device.size() < kRngNameSize ? DefaultFault{} : FindFaultOfForm("the device", device);
    return Or(Or(form, length), ExplainNotFound(report, type));
  }
  if (report.start.acceptsDevice.value_or(true)) return {};
  const DefaultFault refusal = {"the generator refuses the device " + Quoted(device),
                                FixDevice(report)};
  return Or(FindFaultOfForm("the device", device), refusal);
}
