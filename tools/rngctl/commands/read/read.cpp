#include "tools/rngctl/commands/read/read.h"

#include "tools/rngctl/drawing/output.h"
#include "tools/rngctl/drawing/progress.h"
#include "tools/rngctl/process/forked/forked_process.h"
#include "tools/rngctl/refusal.h"

void RunRead(const ReadRequest& request) {
  Output output(request.file,
                request.replacesOthers ? OthersFile::kReplaced : OthersFile::kRefusedUnlessForced);
  if (request.encoding == Encoding::kRaw && output.IsTerminal()) {
    throw Refusal(kWrongUsage,
                  "Raw bytes are not written to a terminal: choose --hex, --base64 or a file.");
  }
  ForkedProcess process(kPlugins, [&](const TakePiece& pass) {
    output.LeaveToParent();
    Draw(request.draw, pass);
  });
  const InterruptionWatch interruption;
  const NoCore noCore;
  Progress progress(request.draw.size, !output.MayBeShown());
  std::uint64_t done = 0;
  process.ForEachPiece([&](const SecretBytes& piece) {
    output.Write(Encode(piece, request.encoding));
    done += piece.size();
    progress.Show(done);
  });
  if (done != request.draw.size) {
    throw Refusal(kNegativeAnswer,
                  "A plug-in interfered with the draw: " + std::to_string(done) +
                      " bytes arrived instead of " + std::to_string(request.draw.size) + ".",
                  "Run \"rngctl doctor\" to find out which.");
  }
  if (request.encoding != Encoding::kRaw) output.Write({'\n'});
  output.Commit();
}
