#include "tools/rngctl/commands/read/record.h"

#include "tools/rngctl/commands/read/loaded_file.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <ctime>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

// RFC 3339, in UTC.
std::string Now() {
  const std::time_t now = std::time(nullptr);
  std::tm parts = {};
  ::gmtime_r(&now, &parts);
  char text[sizeof "2026-01-01T00:00:00Z" + 8] = "";
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text;
}

Json TextOrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

// The code of its first operation is in the plug-in.
const void* CodeOf(IRngProvider* provider) {
  return **reinterpret_cast<const void* const* const*>(provider);
}

LoadedFile FindPlugin(const RecordedSource& source) {
  if (!source.provider) return {};
  const LoadedFile file = FindLoadedFile(CodeOf(source.provider));
  if (file.problem.empty()) return file;
  throw Refusal(kNegativeAnswer,
                "The draw cannot be recorded: the plug-in of " + Quoted(source.kind) + ", " +
                    Quoted(file.path) + ", " + file.problem + ".",
                "Run the command again.");
}

Json Describe(const RecordedSource& source) {
  const LoadedFile plugin = FindPlugin(source);
  return {{"kind", source.kind},
          {"device", TextOrNull(source.device)},
          {"plugin", TextOrNull(plugin.path)},
          {"sha256", TextOrNull(plugin.sha256)},
          {"draws", source.draws},
          {"bytes", source.bytes},
          {"checked", source.isChecked},
          {"failure", TextOrNull(source.failure)}};
}

}  // namespace

void PassRecord(const RecordedDraw& draw, const std::vector<RecordedSource>& sources,
                const TakePiece& pass) {
  Json record = {{"time", Now()},     {"version", RNGCTL_VERSION},
                 {"size", draw.size}, {"combined", draw.isCombined},
                 {"need", draw.need}, {"draws", draw.draws}};
  for (const RecordedSource& source : sources) record["sources"].push_back(Describe(source));
  const std::string text =
      EscapedJson(record.dump(2, ' ', false, Json::error_handler_t::replace)) + '\n';
  for (std::size_t start = 0; start < text.size(); start += kLargestPiece) {
    const std::string part = text.substr(start, kLargestPiece);
    pass(SecretBytes(part.begin(), part.end()));
  }
}
