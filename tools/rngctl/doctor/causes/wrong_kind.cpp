#include "tools/rngctl/doctor/causes/wrong_kind.h"

#include "providers/catalogue.h"
#include "tools/rngctl/loader/elf_facts.h"
#include "tools/rngctl/terminal/text.h"

namespace {

using Row = ProviderCatalogueEntry;

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
    if (Exports(file, row.factorySymbol)) return row.libraryFile;
  }
  return "";
}

std::string FixWrongFactory(const GeneratorReport& report) {
  for (const Row& row : BuildProviderCatalogue()) {
    if (Exports(report.file, row.factorySymbol)) return InstallAs(row) + "." + ForAuthors(report);
  }
  return "Replace the file with the plug-in for this kind." + ForAuthors(report);
}

std::string FixWrongName(const GeneratorReport& report, const std::string& name) {
  const std::string right = "get the plug-in for " + Quoted(report.kind) + " from its vendor.";
  for (const Row& row : BuildProviderCatalogue()) {
    if (row.name != name) continue;
    if (Exports(report.file, row.factorySymbol)) return InstallAs(row) + ", and " + right;
    return "Remove the file, whose name is that of another kind, and " + right + ForAuthors(report);
  }
  return "Ask for it by that name, or replace the file with the plug-in for this kind." +
         ForAuthors(report);
}
