#include "tools/rngctl/commands/read/pieces.h"

#include "tools/rngctl/refusal.h"

#include <algorithm>
#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;

// The first piece is small, so that a slow source shows progress.
constexpr std::size_t kFirstPiece = 3UL * 256;
constexpr std::uint64_t kMostFromUser = 1U << 20;
constexpr auto kQuick = std::chrono::milliseconds(100);

}  // namespace

void DrawAtOnce(std::uint64_t size, const std::string& what, const FillPiece& fill,
                const TakePiece& pass) {
  if (size > kMostFromUser) {
    throw Refusal(kNegativeAnswer,
                  what + " needs the user, so at most " + std::to_string(kMostFromUser) +
                      " bytes can be read at once.",
                  "Read fewer bytes, or choose a generator that does not need the user.");
  }
  const NoCore noCore;
  SecretBytes bytes(static_cast<std::size_t>(size));
  fill(bytes, 0);
  for (std::size_t done = 0; done < bytes.size(); done += kLargestPiece) {
    const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(done);
    const std::size_t part = std::min(bytes.size() - done, kLargestPiece);
    pass(SecretBytes(first, first + static_cast<std::ptrdiff_t>(part)));
  }
}

void DrawInPieces(std::uint64_t size, const FillPiece& fill, const TakePiece& pass) {
  const NoCore noCore;
  SecretBytes piece;
  std::size_t most = kFirstPiece;
  for (std::uint64_t done = 0; done < size; done += piece.size()) {
    piece.resize(static_cast<std::size_t>(std::min<std::uint64_t>(size - done, most)));
    const auto start = Clock::now();
    fill(piece, done);
    if (Clock::now() - start < kQuick) most = std::min(2 * most, kLargestPiece);
    pass(piece);
  }
}
