#include "tools/rngctl/doctor/start/started_library.h"

#include "providers/catalogue.h"

#include <algorithm>
#include <filesystem>

namespace {

template <typename List, typename Fits>
auto* FindFirst(const List& list, Fits fits) {
  const auto found = std::find_if(list.begin(), list.end(), fits);
  return found == list.end() ? nullptr : &*found;
}

}  // namespace

std::string LibraryFileOf(const std::string& kind) {
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
    if (row.name == kind) return row.libraryFile;
  }
  return "";
}

bool IsSameFile(const std::string& one, const std::string& other) {
  if (one.empty() || other.empty()) return false;
  std::error_code unknown;
  return one == other || std::filesystem::equivalent(one, other, unknown);
}

std::string TakenFor(const std::string& kind, const StartAnswer& answer) {
  const auto* const taken =
      FindFirst(answer.taken, [&kind](const TakenFile& file) { return file.kind == kind; });
  return taken ? taken->file : "";
}

std::string KindOfFile(const std::string& file, const StartAnswer& answer) {
  const auto* const taken = FindFirst(
      answer.taken, [&file](const TakenFile& other) { return IsSameFile(other.file, file); });
  return taken ? taken->kind : "";
}

const KindLookup* FindLookup(const std::string& kind, const StartAnswer& answer) {
  return FindFirst(answer.lookups,
                   [&kind](const KindLookup& lookup) { return lookup.kind == kind; });
}

const StartedGenerator* FindObject(std::uint64_t object, const StartAnswer& answer) {
  return FindFirst(answer.generators, [object](const StartedGenerator& generator) {
    return generator.object == object;
  });
}

bool LiesIn(const StartedGenerator& generator, const std::string& file) {
  return IsSameFile(generator.tableFile, file) || IsSameFile(generator.codeFile, file);
}

const StartedGenerator* FindIn(const std::string& file, const StartAnswer& answer) {
  return FindFirst(answer.generators,
                   [&file](const StartedGenerator& generator) { return LiesIn(generator, file); });
}

std::string ForeignFileOf(const StartedGenerator& generator, const std::string& own,
                          const StartAnswer& answer) {
  for (const TakenFile& taken : answer.taken) {
    if (!IsSameFile(taken.file, own) && LiesIn(generator, taken.file)) return taken.file;
  }
  return "";
}

std::string FindSharedCode(const std::string& own, const StartAnswer& answer) {
  for (const TakenFile& taken : answer.taken) {
    if (IsSameFile(taken.file, own)) continue;
    const auto count =
        std::count_if(answer.generators.begin(), answer.generators.end(),
                      [&taken](const auto& generator) { return LiesIn(generator, taken.file); });
    if (count > 1) return taken.file;
  }
  return "";
}

const ForeignClose* FindForeignClose(const StartAnswer& answer) {
  if (!answer.seconds) return nullptr;
  return FindFirst(answer.closes, [&answer](const ForeignClose& close) {
    return KindOfFile(close.closed, answer).empty();
  });
}
