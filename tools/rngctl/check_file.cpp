#include "checks.h"
#include "host.h"
#include "providers/catalogue.h"

#include <algorithm>

namespace {

std::string Count(std::size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

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
  return std::find(exports.begin(), exports.end(), subject.factory) != exports.end();
}

Finding FailedWithoutFactory(const CheckSubject& subject) {
  const std::vector<std::string>& exports = subject.facts.exports;
  std::string mend =
      "Define it extern \"C\", with default visibility and this exact name, and have no version "
      "script hide it.";
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
    if (std::find(exports.begin(), exports.end(), row.factorySymbol) == exports.end()) continue;
    mend += " Or name the file " + row.libraryFile + ": " + row.factorySymbol + " belongs to that.";
  }
  return Failed("It does not export " + subject.factory + ", but " +
                    (exports.empty() ? "nothing" : Listed(exports)) + ".",
                mend);
}

}  // namespace

Finding CheckCataloguePair(const CheckSubject& subject) {
  if (subject.isCataloguePair && !ExportsFactory(subject)) {
    return NotExamined("it does not export " + subject.factory);
  }
  if (subject.isCataloguePair) return Passed();
  if (subject.kind.empty()) {
    return Failed("No kind of generator has the file name " + Quoted(subject.file) + ".");
  }
  return Failed("To " + Quoted(subject.file) + " belongs another factory than " + subject.factory +
                ".");
}

Finding CheckExports(const CheckSubject& subject) {
  if (subject.factory.empty()) return NotExamined("which factory it should export is unknown");
  if (!ExportsFactory(subject)) return FailedWithoutFactory(subject);
  std::vector<std::string> others = subject.facts.exports;
  std::erase(others, subject.factory);
  if (others.empty()) return Passed();
  return Failed("It exports " + Count(others.size(), "symbol") +
                " besides the factory: " + Listed(others) + ".");
}

Finding CheckUniqueSymbols(const CheckSubject& subject) {
  const std::vector<std::string>& symbols = subject.facts.uniqueSymbols;
  if (symbols.empty()) return Passed();
  return Failed("It has " + Count(symbols.size(), "GNU-unique symbol") + ": " + Listed(symbols) +
                ".");
}

Finding CheckStaticTls(const CheckSubject& subject) {
  if (!subject.facts.hasStaticTls) return Passed();
  return Failed("The file carries the flag STATIC_TLS.");
}

Finding CheckExecutableStack(const CheckSubject& subject) {
  if (!subject.facts.hasExecutableStack) return Passed();
  return Failed("The file asks for an executable stack, or does not say that it needs none.");
}
