#include "tools/rngctl/doctor/causes/wrong_kind.h"

#include "providers/catalogue.h"
#include "tools/rngctl/loader/elf_facts.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <filesystem>

namespace {

using Row = ProviderCatalogueEntry;

// Reads only regular files: reading anything else might never return.
std::vector<std::string> ExportsOf(const std::string& file) {
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(file, unknown)) return {};
  try {
    return ReadElfFacts(file).exports;
  } catch (const Refusal&) {
    return {};
  }
}

bool Exports(const std::string& file, const Row& row) {
  const std::vector<std::string> exports = ExportsOf(file);
  return std::find(exports.begin(), exports.end(), row.factorySymbol) != exports.end();
}

std::string ForAuthors(const GeneratorReport& report) {
  return " Its author can check it with \"rngctl check " + report.file + "\".";
}

std::string InstallAs(const Row& row) {
  return "This is the plug-in for the kind " + Quoted(row.name) + ": install it as " +
         row.libraryFile;
}

}  // namespace

std::string FileNameByFactory(const std::string& file) {
  for (const Row& row : BuildProviderCatalogue()) {
    if (Exports(file, row)) return row.libraryFile;
  }
  return "";
}

std::string FixWrongFactory(const GeneratorReport& report) {
  for (const Row& row : BuildProviderCatalogue()) {
    if (Exports(report.file, row)) return InstallAs(row) + "." + ForAuthors(report);
  }
  return "Replace the file with the plug-in for this kind." + ForAuthors(report);
}

std::string FixWrongName(const GeneratorReport& report, const std::string& name) {
  const std::string right = "get the plug-in for " + Quoted(report.kind) + " from its vendor.";
  for (const Row& row : BuildProviderCatalogue()) {
    if (row.name != name) continue;
    if (Exports(report.file, row)) return InstallAs(row) + ", and " + right;
    return "Remove the file, whose name is that of another kind, and " + right + ForAuthors(report);
  }
  return "Ask for it by that name, or replace the file with the plug-in for this kind." +
         ForAuthors(report);
}
