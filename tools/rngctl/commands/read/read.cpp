#include "tools/rngctl/commands/read/read.h"

#include "tools/rngctl/drawing/output.h"
#include "tools/rngctl/drawing/progress.h"
#include "tools/rngctl/process/forked/forked_process.h"
#include "tools/rngctl/refusal.h"

#include <nlohmann/json.hpp>

namespace {

constexpr std::uint64_t kMostHeld = 16U << 20;

// What arrives from the forked process: the bytes, then the record if there is one.
class Arrival {
 public:
  Arrival(const ReadRequest& asked, Output& whereBytesGo, bool holdsBytes)
      : request(asked),
        output(whereBytesGo),
        isHeld(holdsBytes),
        progress(asked.draw.size, !whereBytesGo.MayBeShown()) {}

  void Take(const SecretBytes& piece) {
    if (request.draw.isRecorded && done == request.draw.size) {
      record.insert(record.end(), piece.begin(), piece.end());
      return;
    }
    done += piece.size();
    Write(Encode(piece, request.encoding));
    progress.Show(done);
  }

  void RequireCompleteness() const {
    const bool hasRecord = nlohmann::json::accept(record.begin(), record.end());
    if (done == request.draw.size && hasRecord == request.draw.isRecorded) return;
    throw Refusal(kNegativeAnswer,
                  "A plug-in interfered with the draw: " + std::to_string(done) +
                      " bytes arrived instead of " + std::to_string(request.draw.size) + ".",
                  "Run \"rngctl doctor\" to find out which.");
  }

  void Finish(std::optional<Output>& recordFile) {
    if (request.encoding != Encoding::kRaw) Write({'\n'});
    if (recordFile) {
      recordFile->Write(record);
      recordFile->Commit();
    }
    for (const SecretBytes& bytes : held) output.Write(bytes);
    output.Commit();
  }

 private:
  void Write(SecretBytes&& bytes) {
    if (isHeld) {
      held.push_back(std::move(bytes));
    } else {
      output.Write(bytes);
    }
  }

  const ReadRequest& request;
  Output& output;
  const bool isHeld;
  Progress progress;
  std::uint64_t done = 0;
  std::vector<SecretBytes> held;
  SecretBytes record;
};

void RequireTwoPlaces(const Output& output, const std::optional<Output>& record) {
  if (!record || !record->IsSameAs(output)) return;
  throw Refusal(kWrongUsage, "The record and the bytes cannot be written to the same place.");
}

// What does not appear at the end has to be held until then.
bool MustHold(const ReadRequest& request, const Output& output) {
  const bool isWhole = !request.draw.from.empty() || request.draw.isRecorded;
  if (!isWhole || output.AppearsAtEnd()) return false;
  if (request.draw.size <= kMostHeld) return true;
  throw Refusal(
      kNegativeAnswer,
      "With --from or --record, at most " + std::to_string(kMostHeld) +
          " bytes can be written to anything but a file, because they are held until all have "
          "been drawn.",
      "Write them to a file with -o.");
}

}  // namespace

void RunRead(const ReadRequest& request) {
  Output output(request.file,
                request.replacesOthers ? OthersFile::kReplaced : OthersFile::kRefusedUnlessForced);
  if (request.encoding == Encoding::kRaw && output.IsTerminal()) {
    throw Refusal(kWrongUsage,
                  "Raw bytes are not written to a terminal: choose --hex, --base64 or a file.");
  }
  std::optional<Output> record;
  if (request.draw.isRecorded) record.emplace(request.record, OthersFile::kRefused);
  RequireTwoPlaces(output, record);
  const bool isHeld = MustHold(request, output);
  ForkedProcess process(kPlugins, [&](const TakePiece& pass) {
    output.LeaveToParent();
    if (record) record->LeaveToParent();
    Draw(request.draw, pass);
  });
  const InterruptionWatch interruption;
  const NoCore noCore;
  Arrival arrival(request, output, isHeld);
  process.ForEachPiece([&](const SecretBytes& piece) { arrival.Take(piece); });
  arrival.RequireCompleteness();
  arrival.Finish(record);
}
