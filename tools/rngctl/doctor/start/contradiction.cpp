#include "tools/rngctl/doctor/start/contradiction.h"

#include "tools/rngctl/doctor/start/started_library.h"
#include "tools/rngctl/terminal/text.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr char kIsAuthoritative[] =
    "Programs get the result of the start. Check what else is installed, and ask the vendor about "
    "dependencies and conflicts.";

std::string CallOf(const std::string& kind) { return "GetRng(" + Quoted(kind) + ")"; }

Contradiction ExplainException(const KindLookup& lookup, const StartAnswer& answer) {
  Contradiction found{CallOf(lookup.kind) + " throws an exception", ""};
  if (!lookup.exception.empty()) found.words += " (" + lookup.exception + ")";
  for (const StartedGenerator& generator : answer.generators) {
    const bool isToBlame = !generator.name || generator.name->size < 0;
    if (!isToBlame || generator.codeFile.empty()) continue;
    return {found.words + " because of " + generator.codeFile,
            "Remove " + generator.codeFile + ", or get a fixed version from its vendor."};
  }
  found.fix = "Find the plug-in whose name cannot be read, and remove it or get a fixed version.";
  return found;
}

Contradiction ExplainForeign(const std::string& kind, const std::string& file) {
  return {CallOf(kind) + " returns the generator of " + file,
          "Both plug-ins report this name. Keep one of them, or ask the vendor of " + file +
              " whether it is the plug-in for another kind."};
}

// The loader knows another library by this name.
Contradiction ExplainClash(const GeneratorReport& row, const std::string& taken) {
  return {"a start uses " + taken + " in its place",
          "The loader never opens " + row.file + ", because " + taken + " has the SONAME " +
              Quoted(row.libraryFile) + ". If LD_PRELOAD names " + taken +
              ", remove it there; otherwise ask its vendor for a version with its own SONAME."};
}

Contradiction ExplainClosed(const std::string& closer) {
  return {closer + " closes it",
          "Report this to the vendor of " + closer +
              ": it closes a library that it did not open. Remove it until it is fixed."};
}

Contradiction ExplainShared(const std::string& kind, const std::string& file) {
  return {CallOf(kind) + " returns null: its generator runs the code of " + file,
          "Both plug-ins define a class of the same name. Ask the vendors to hide everything but "
          "the factory (-fvisibility=hidden), and keep one of the two until then."};
}

Contradiction ExplainRenamed(const std::string& kind, const StartedGenerator& generator) {
  const std::string name = generator.name ? Quoted(generator.name->text) : "another";
  return {CallOf(kind) + " returns null: in a start with all plug-ins, its name is " + name,
          kIsAuthoritative};
}

// Why GetRng returned null.
Contradiction ExplainNothing(const GeneratorReport& row, const std::string& own,
                             const StartAnswer& answer) {
  const std::string taken = TakenFor(row.kind, answer);
  if (!taken.empty() && !IsPluginNamed(taken, row.libraryFile)) return ExplainClash(row, taken);
  const std::string shared = FindSharedCode(own, answer);
  if (!taken.empty() && !shared.empty()) return ExplainShared(row.kind, shared);
  const StartedGenerator* const generator = FindIn(own, answer);
  if (generator) return ExplainRenamed(row.kind, *generator);
  if (!taken.empty()) {
    return {CallOf(row.kind) + " returns null in a start with all plug-ins", kIsAuthoritative};
  }
  return {"a start with all plug-ins does not keep it", kIsAuthoritative};
}

// The lookup itself ended the process.
bool EndedInLookup(const StartAnswer& answer, const std::string& kind) {
  return answer.step == StartStep::kLookUp && answer.subject == kind;
}

}  // namespace

bool IsPluginNamed(const std::string& file, const std::string& libraryFile) {
  return fs::path(file).filename() == libraryFile;
}

void Contradict(GeneratorReport& row, const Contradiction& contradiction) {
  Put(row, DoctorVerdict::kContradicted, row.summary + ", but " + contradiction.words,
      contradiction.fix);
}

std::string DescribeStartEnd(const StartEvidence& start, std::chrono::seconds limit) {
  const StartAnswer& answer = *start.answer;
  if (answer.called) return std::string("calls ") + NameOf(*answer.called);
  return answer.threwIn ? "threw an exception" : DescribeEnd(start.result, limit);
}

Contradiction ExplainMissing(const GeneratorReport& row, const std::string& own,
                             const StartEvidence& start, std::chrono::seconds limit) {
  const StartAnswer& answer = *start.Fullest();
  const ForeignClose* const close = FindForeignClose(answer);
  if (close && IsSameFile(close->closed, own)) return ExplainClosed(close->closer);
  if (EndedInLookup(*start.answer, row.kind)) {
    return {CallOf(row.kind) + " " + DescribeEnd(start.result, limit), kIsAuthoritative};
  }
  const KindLookup* const lookup = FindLookup(row.kind, answer);
  if (!lookup) return {};
  if (lookup->end == LookupEnd::kThrew) return ExplainException(*lookup, answer);
  const StartedGenerator* const found = FindObject(lookup->object, answer);
  if (found) return ExplainForeign(row.kind, ForeignFileOf(*found, own, answer));
  return ExplainNothing(row, own, answer);
}

Contradiction ExplainOther(const GeneratorReport& row, const std::string& own, bool isKept) {
  return {
      std::string("a start with all plug-ins ") + (isKept ? "keeps " + own : "does not keep it"),
      row.fix.empty() ? kIsAuthoritative : row.fix};
}
