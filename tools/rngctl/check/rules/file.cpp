#include "providers/catalogue.h"
#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/devices/device_report.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>

namespace {

// The first few: a library that hides nothing has hundreds.
std::string Listed(const std::vector<std::string>& names) {
  constexpr std::size_t kShown = 5;
  std::string text;
  for (std::size_t i = 0; i < std::min(names.size(), kShown); ++i) {
    text += (i == 0 ? "" : ", ") + names[i];
  }
  return text + (names.size() > kShown ? ", ..." : "");
}

bool ExportsFactory(const CheckSubject& subject) {
  const std::vector<std::string>& exports = subject.facts.exports;
  return std::find(exports.begin(), exports.end(), subject.plugin.factory) != exports.end();
}

// The files in which the library looks for the factories that this one exports.
std::vector<std::string> FindRightFiles(const std::vector<std::string>& exports) {
  std::vector<std::string> files;
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
    if (std::find(exports.begin(), exports.end(), row.factorySymbol) == exports.end()) continue;
    files.push_back(row.libraryFile + ", which belongs to " + row.factorySymbol);
  }
  return files;
}

Finding FailedWithoutFactory(const CheckSubject& subject) {
  const std::vector<std::string>& exports = subject.facts.exports;
  std::string fix =
      "Define it as extern \"C\" with default visibility and this exact name, and make sure that "
      "no version script hides it.";
  for (const std::string& file : FindRightFiles(exports))
    fix += " Or rename the file to " + file + ".";
  return Failed("It does not export " + subject.plugin.factory + "; it exports " +
                    (exports.empty() ? "nothing" : Listed(exports)) + ".",
                fix);
}

// A user who names a factory on the command line knows that it is not the catalogue's.
Finding JudgedFor(const CheckSubject& subject, const std::string& fault,
                  const std::string& fix = "") {
  Finding finding = Failed(fault, fix);
  if (subject.isFactoryGiven) finding.severity = Severity::kWarning;
  return finding;
}

Finding FailedForUnknownName(const CheckSubject& subject) {
  std::string fix;
  for (const std::string& file : FindRightFiles(subject.facts.exports)) {
    fix += (fix.empty() ? "Rename the file to " : " Or to ") + file + ".";
  }
  return JudgedFor(subject, "No kind has a plug-in named " + Quoted(subject.fileName) + ".", fix);
}

Finding CheckCataloguePair(const CheckSubject& subject) {
  if (subject.isCataloguePair && !ExportsFactory(subject)) {
    return NotExamined("it does not export " + subject.plugin.factory);
  }
  if (subject.isCataloguePair) return Passed();
  if (subject.plugin.kind.empty()) return FailedForUnknownName(subject);
  return JudgedFor(subject, subject.plugin.factory + " is not the factory that belongs to " +
                                Quoted(subject.fileName) + ".");
}

Finding CheckExports(const CheckSubject& subject) {
  if (subject.plugin.factory.empty())
    return NotExamined("the factory that it should export is unknown");
  if (!ExportsFactory(subject)) return FailedWithoutFactory(subject);
  std::vector<std::string> others = subject.facts.exports;
  std::erase(others, subject.plugin.factory);
  std::erase(others, kReportFunction);
  if (others.empty()) return Passed();
  return Failed("It exports " + Counted(others.size(), "symbol") +
                " besides the factory: " + Listed(others) + ".");
}

Finding CheckUniqueSymbols(const CheckSubject& subject) {
  const std::vector<std::string>& symbols = subject.facts.uniqueSymbols;
  if (symbols.empty()) return Passed();
  return Failed("It has " + Counted(symbols.size(), "GNU-unique symbol") + ": " + Listed(symbols) +
                ".");
}

Finding CheckStaticTls(const CheckSubject& subject) {
  if (!subject.facts.hasStaticTls) return Passed();
  return Failed("The file has the flag STATIC_TLS.");
}

Finding CheckExecutableStack(const CheckSubject& subject) {
  if (!subject.facts.hasExecutableStack) return Passed();
  return Failed("The file requires an executable stack, or does not say that it needs none.");
}

}  // namespace

std::vector<Rule> FileRules() {
  return {
      {"catalogue-pair", Severity::kError,
       "The file name and the factory name belong to the same kind",
       "Use the file name and the factory name of the kind; provider.h has the table.",
       CheckCataloguePair},
      {"one-export", Severity::kError,
       "The factory is the only exported symbol, except for GetRngReport",
       "Hide everything else: compile with -fvisibility=hidden, and link with a version script "
       "whose only global names are the factory and, if it has one, GetRngReport.",
       CheckExports},
      {"no-unique-symbols", Severity::kError,
       "There are no GNU-unique symbols, which prevent unloading",
       "Compile with -fno-gnu-unique, or hide the symbols.", CheckUniqueSymbols},
      {"no-static-tls", Severity::kError,
       "There is no static thread-local storage, of which a process has little",
       "Compile without -ftls-model=initial-exec or local-exec.", CheckStaticTls},
      {"no-executable-stack", Severity::kError, "The file does not require an executable stack",
       "Link with -z noexecstack; in assembler sources add a .note.GNU-stack section.",
       CheckExecutableStack},
  };
}
