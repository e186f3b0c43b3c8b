// Buffers that a draw does not fill.

#include "tools/rngctl/check/looks/faults.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>

namespace {

constexpr char kFix[] =
    "Fill the whole buffer in each draw: ask the source again until it has returned as many bytes "
    "as requested.";

// The first row of at least `least` places where `isSo`.
template <typename Predicate>
std::optional<Range> FindRow(std::size_t size, std::size_t least, Predicate isSo) {
  for (std::size_t begin = 0; begin < size; ++begin) {
    std::size_t end = begin;
    while (end < size && isSo(end)) ++end;
    if (end > begin && end - begin >= least) return Range{begin, end};
    begin = end;
  }
  return std::nullopt;
}

std::string AllDraws(const DrawsOfSize& drawn) {
  return "seven draws of " + Counted(drawn.size, "byte");
}

bool IsUnwritten(const DrawnBytes& draw, std::size_t place) {
  return draw.before[place] == draw.after[place];
}

}  // namespace

// A written byte equals what was there before with a probability of 2^-8. That one does in seven draws has
// 2^-56, for the 74,690 bytes of all sizes together 1.1 * 10^-12. Eight in a row in one of the draws have
// 2^-64, for the 522,830 bytes of all draws 2.9 * 10^-14.
std::optional<Fault> FindUnwritten(const DrawsOfSize& drawn) {
  const auto isNeverWritten = [&drawn](std::size_t place) {
    return std::all_of(drawn.draws.begin(), drawn.draws.end(),
                       [place](const DrawnBytes& draw) { return IsUnwritten(draw, place); });
  };
  const bool isComplete = drawn.draws.size() == kDrawsOfSize;
  if (const auto row = isComplete ? FindRow(drawn.size, 1, isNeverWritten) : std::nullopt) {
    return Fault{"None of " + AllDraws(drawn) + " writes " + InWords(*row) +
                     ": the buffer still has its old contents there.",
                 kFix};
  }
  constexpr std::size_t kWord = 8;
  for (std::size_t i = 0; i < drawn.draws.size(); ++i) {
    const DrawnBytes& draw = drawn.draws[i];
    const auto row =
        FindRow(drawn.size, kWord, [&draw](std::size_t place) { return IsUnwritten(draw, place); });
    if (!row) continue;
    return Fault{
        "In " + DrawInWords(i, drawn.size) + ", " + InWords(*row) + " still have their old values.",
        kFix};
  }
  return std::nullopt;
}

// Seven draws agree in a byte with a probability of 2^-48; for the 74,687 bytes of the sizes that are judged,
// that is 2.7 * 10^-10.
std::optional<Fault> FindConstant(const DrawsOfSize& drawn) {
  if (drawn.draws.size() < kDrawsOfSize) return std::nullopt;
  const Bytes& first = drawn.draws[0].after;
  const auto isConstant = [&](std::size_t place) {
    return std::all_of(drawn.draws.begin(), drawn.draws.end(),
                       [&](const DrawnBytes& draw) { return draw.after[place] == first[place]; });
  };
  const auto row = FindRow(drawn.size, 1, isConstant);
  if (!row) return std::nullopt;
  const bool areZero = std::all_of(first.begin() + static_cast<std::ptrdiff_t>(row->begin),
                                   first.begin() + static_cast<std::ptrdiff_t>(row->end),
                                   [](unsigned char byte) { return byte == 0; });
  return Fault{
      (areZero ? "All " + AllDraws(drawn) + " have zeros in "
               : "The " + AllDraws(drawn) + " do not differ in ") +
          InWords(*row) + ".",
      "Fill the whole buffer with new bytes in each draw: the source may return fewer bytes than "
      "requested, or numbers that use only some of their bits."};
}
