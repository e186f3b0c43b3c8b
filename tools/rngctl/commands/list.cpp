#include "tools/rngctl/commands/list.h"

#include "providers/catalogue.h"
#include "tools/rngctl/commands/provider_text.h"
#include "tools/rngctl/devices/ask.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/started_aggregator.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <utility>
#include <vector>

#include <rngaggregator/aggregator.h>

namespace {

constexpr std::uint32_t kAnyCapability = 0xFFFFFFFF;

struct Row {
  std::string name;
  std::string interactive;
  std::string flags;
  std::string description;
};

std::string FlagNames(std::uint32_t flags) {
  constexpr struct {
    std::uint32_t bit;
    const char* name;
  } kNames[] = {{kRngCapabilityHardware, "hardware"},
                {kRngCapabilityNeedsUser, "needs-user"},
                {kRngCapabilityOperatingSystem, "operating-system"},
                {kRngCapabilityPrerecorded, "prerecorded"},
                {kRngCapabilityMayBlock, "may-block"}};
  std::string text;
  const auto add = [&text](const std::string& name) { text += (text.empty() ? "" : ",") + name; };
  for (const auto& [bit, name] : kNames) {
    if (flags & bit) add(name);
    flags &= ~bit;
  }
  for (std::uint32_t bit = 1; flags != 0; bit <<= 1) {
    if (flags & bit) add("bit-" + std::to_string(bit));
    flags &= ~bit;
  }
  return text.empty() ? "-" : text;
}

// First the providers with a capability, then those without one that have a known name: the library
// does not list these, but finds them by name.
std::vector<IRngProvider*> LoadedProviders() {
  std::vector<IRngProvider*> providers(
      static_cast<std::size_t>(GetAvailableRng(nullptr, kAnyCapability)));
  GetAvailableRng(providers.data(), kAnyCapability);
  std::vector<std::string> names;
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) names.push_back(row.name);
  names.emplace_back(rngBioWin);  // in no catalogue row
  for (const std::string& name : names) {
    IRngProvider* const provider = GetRng(name.c_str());
    if (provider && provider->GetFlags() == 0) providers.push_back(provider);
  }
  return providers;
}

std::vector<Row> LoadedRows() {
  std::vector<Row> rows;
  for (IRngProvider* const provider : LoadedProviders()) {
    const std::string name = ReadText(*provider, &IRngProvider::GetName);
    rows.push_back({Printable(name), IsInteractiveRng(name.c_str()) ? "yes" : "no",
                    FlagNames(provider->GetFlags()),
                    Printable(ReadText(*provider, &IRngProvider::GetDescription))});
  }
  return rows;
}

// The width of the widest text, plus two blanks.
std::size_t Width(const std::vector<Row>& rows, std::string Row::*column) {
  std::size_t width = 0;
  for (const Row& row : rows) width = std::max(width, CountColumns(row.*column));
  return width + 2;
}

void PrintList() {
  std::vector<Row> rows = LoadedRows();
  if (rows.empty()) throw Refusal(kNegativeAnswer, "No generator is usable.");
  rows.insert(rows.begin(), {"NAME", "INTERACTIVE", "FLAGS", "DESCRIPTION"});
  for (const Row& row : rows) {
    for (const auto column : {&Row::name, &Row::interactive, &Row::flags}) {
      std::cout << Padded(row.*column, Width(rows, column));
    }
    std::cout << row.description << '\n';
  }
}

struct Reporter {
  std::string name;
  std::string file;
  std::string factory;
};

// The listed plug-ins that can report their devices.
std::vector<Reporter> FindReporters() {
  std::vector<Reporter> reporters;
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
    const std::string file = GetRng(row.name.c_str()) ? FindOpenReporter(row.libraryFile) : "";
    if (!file.empty()) reporters.push_back({row.name, file, row.factorySymbol});
  }
  return reporters;
}

void PrintDevices(const std::vector<Reporter>& reporters) {
  constexpr std::chrono::seconds kLimit(10);
  const char* separator = "\n";
  for (const Reporter& reporter : reporters) {
    const DeviceReport report = AskForDevices(reporter.file, reporter.factory, kLimit);
    for (const Device& device : report.devices) {
      std::cout << std::exchange(separator, "") << reporter.name << ", device "
                << Printable(device.identifier) << ": " << Printable(device.text) << '\n';
    }
    for (const std::string& problem : report.problems) {
      std::cout << std::exchange(separator, "") << reporter.name
                << ", problem: " << Printable(problem) << '\n';
    }
    if (report.fault.empty()) continue;
    std::cerr << "rngctl: " << Quoted(reporter.name) << ": " << Printable(report.fault) << '\n';
  }
}

}  // namespace

// The children run after the stop: while this process uses a device, they may not see it.
void RunList() {
  std::vector<Reporter> reporters;
  WithStartedAggregator([&reporters] {
    PrintList();
    reporters = FindReporters();
  });
  PrintDevices(reporters);
}
