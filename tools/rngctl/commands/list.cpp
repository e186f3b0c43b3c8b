#include "tools/rngctl/commands/list.h"

#include "providers/catalogue.h"
#include "tools/rngctl/commands/generators.h"
#include "tools/rngctl/devices/ask.h"
#include "tools/rngctl/process/forked/forked_process.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/started_aggregator.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <utility>
#include <vector>

#include <rngaggregator/aggregator.h>

namespace {

using Json = nlohmann::ordered_json;

struct Row {
  std::string name;
  std::string interactive;
  std::string flags;
  std::string description;
};

std::string Joined(const std::vector<std::string>& flags) {
  std::string text;
  for (const std::string& flag : flags) text += (text.empty() ? "" : ",") + flag;
  return text.empty() ? "-" : text;
}

// The width of the widest text, plus two blanks.
std::size_t Width(const std::vector<Row>& rows, std::string Row::*column) {
  std::size_t width = 0;
  for (const Row& row : rows) width = std::max(width, CountColumns(row.*column));
  return width + 2;
}

std::string Table(const std::vector<Generator>& generators) {
  if (generators.empty()) return "";
  std::vector<Row> rows = {{"NAME", "INTERACTIVE", "FLAGS", "DESCRIPTION"}};
  for (const Generator& generator : generators) {
    rows.push_back({Printable(generator.name), generator.isInteractive ? "yes" : "no",
                    Joined(generator.flags), Printable(generator.description)});
  }
  std::string table;
  for (const Row& row : rows) {
    for (const auto column : {&Row::name, &Row::interactive, &Row::flags}) {
      table += Padded(row.*column, Width(rows, column));
    }
    table += row.description + '\n';
  }
  return table;
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

void AddReports(const std::vector<Reporter>& reporters, std::vector<Generator>& generators) {
  constexpr std::chrono::seconds kLimit(10);
  for (const Reporter& reporter : reporters) {
    const auto place = std::find_if(
        generators.begin(), generators.end(),
        [&reporter](const Generator& generator) { return generator.name == reporter.name; });
    if (place == generators.end()) continue;
    place->report = AskForDevices(reporter.file, reporter.factory, kLimit);
  }
}

std::string Reports(const std::vector<Generator>& generators) {
  std::ostringstream text;
  const char* separator = "\n";
  for (const auto& [name, isInteractive, flags, description, report] : generators) {
    for (const Device& device : report.devices) {
      text << std::exchange(separator, "") << name << ", device " << Printable(device.identifier)
           << ": " << Printable(device.text) << '\n';
    }
    for (const std::string& problem : report.problems) {
      text << std::exchange(separator, "") << name << ", problem: " << Printable(problem) << '\n';
    }
    if (report.fault.empty()) continue;
    std::cerr << "rngctl: " << Quoted(name) << ": " << Printable(report.fault) << '\n';
  }
  return text.str();
}

Json OrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

Json AsJson(const Generator& generator) {
  Json devices = Json::array();
  for (const Device& device : generator.report.devices) {
    devices.push_back({{"identifier", device.identifier}, {"text", device.text}});
  }
  return {{"name", OrNull(generator.name)},
          {"interactive", generator.isInteractive},
          {"flags", generator.flags},
          {"description", OrNull(generator.description)},
          {"devices", devices},
          {"problems", generator.report.problems},
          {"report_fault", OrNull(generator.report.fault)}};
}

std::string JsonText(const std::vector<Generator>& generators) {
  Json json = {{"generators", Json::array()}};
  for (const Generator& generator : generators) json["generators"].push_back(AsJson(generator));
  return EscapedJson(json.dump(2, ' ', false, Json::error_handler_t::replace)) + '\n';
}

// The plug-ins are asked for their devices after the stop: while this process uses a device, the processes that
// ask may not see it.
void List(bool asJson, const TakePiece& pass) {
  std::vector<Generator> generators;
  std::vector<Reporter> reporters;
  WithStartedAggregator([&] {
    generators = LoadedGenerators();
    if (!asJson) PassText(pass, Table(generators));  // asking for the devices may take long
    reporters = FindReporters();
  });
  AddReports(reporters, generators);
  PassText(pass, asJson ? JsonText(generators) : Reports(generators));
  if (generators.empty()) throw Refusal(kNegativeAnswer, "No generator is usable.");
}

}  // namespace

void RunList(bool asJson) {
  ForkedProcess process(kPluginsAndService,
                        [asJson](const TakePiece& pass) { List(asJson, pass); });
  const InterruptionWatch interruption;
  process.ForEachPiece([](const SecretBytes& piece) {
    std::cout.write(piece.data(), static_cast<std::streamsize>(piece.size())) << std::flush;
  });
}
