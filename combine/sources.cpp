#include "combine/sources.h"

#include <algorithm>
#include <stdexcept>

namespace {

using rng::CombinedSource;
using Sources = std::vector<CombinedSource>;

[[noreturn]] void Refuse(const std::string& sentence) { throw std::invalid_argument(sentence); }

std::string Quote(const std::string& text) { return '"' + text + '"'; }

bool HasControls(const std::string& text) {
  return std::any_of(text.begin(), text.end(),
                     [](unsigned char character) { return character < ' ' || character == 0x7F; });
}

void RequireText(const std::string& text, const std::string& what) {
  if (HasControls(text))
    Refuse("A " + what + " in the list of sources contains a control character.");
  if (text.size() < kRngNameSize) return;
  Refuse("The " + what + ' ' + Quote(text) + " is longer than " + std::to_string(kRngNameSize - 1) +
         " bytes.");
}

void RequireDifference(const CombinedSource& earlier, const CombinedSource& source) {
  const char* const reason = " Only one device of a generator can take part.";
  if (earlier.kind == source.kind) {
    Refuse("The generator " + Quote(source.kind) + " is named twice." + reason);
  }
  if (!earlier.provider || earlier.provider != source.provider) return;
  Refuse("The generator " + Quote(source.kind) + " has the same provider as " +
         Quote(earlier.kind) + '.' + reason);
}

CombinedSource ParseItem(const std::string& item, const std::string& list) {
  if (item.empty()) {
    Refuse("The list of sources " + Quote(list) +
           " contains an empty item. Separate the generators with one comma.");
  }
  if (item.front() == ' ' || item.back() == ' ') {
    Refuse("The source " + Quote(item) +
           " begins or ends with a blank. Write the list without blanks.");
  }
  const std::size_t colon = item.find(':');
  if (colon == std::string::npos) return CombinedSource(item);
  if (colon == 0) Refuse("The source " + Quote(item) + " has no generator before the colon.");
  if (colon + 1 == item.size()) {
    Refuse("The source " + Quote(item) +
           " has no device after the colon. Leave out the colon to use any device.");
  }
  return CombinedSource(item.substr(0, colon), item.substr(colon + 1));
}

}  // namespace

void RequireDistinctSources(const Sources& sources) {
  for (auto source = sources.begin(); source != sources.end(); ++source) {
    if (source->kind.empty()) Refuse("The name of a source is empty.");
    RequireText(source->kind, "generator");
    RequireText(source->device, "device");
    for (auto earlier = sources.begin(); earlier != source; ++earlier) {
      RequireDifference(*earlier, *source);
    }
  }
}

Sources rng::ParseSources(const std::string& text) {
  // First, because the sentences below repeat parts of the text.
  if (HasControls(text)) Refuse("The list of sources contains a control character.");
  Sources sources;
  std::size_t end = 0;
  for (std::size_t start = 0; start <= text.size(); start = end + 1) {
    end = std::min(text.find(',', start), text.size());
    sources.push_back(ParseItem(text.substr(start, end - start), text));
  }
  RequireDistinctSources(sources);
  return sources;
}
