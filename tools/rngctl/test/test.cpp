#include "tools/rngctl/test/test.h"

#include "tools/rngctl/drawing/output.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/standard_output.h"
#include "tools/rngctl/test/report/report.h"
#include "tools/rngctl/test/restarts.h"

#include <memory>

namespace {

// The file of the picture, and what is painted. Both exist from the beginning, so that a path that cannot
// be written is found before anything is drawn.
struct PictureFile {
  explicit PictureFile(const std::string& path) : output(path, OthersFile::kRefused) {
    if (output.IsStandardOutput()) {
      throw Refusal(kWrongUsage, "A picture is not written to standard output.");
    }
    if (output.IsTerminal()) {
      throw Refusal(kWrongUsage, "A picture is not written to a terminal.");
    }
  }
  Output output;
  Picture picture;
};

std::unique_ptr<PictureFile> OpenPicture(const std::string& path) {
  try {
    return path.empty() ? nullptr : std::make_unique<PictureFile>(path);
  } catch (const Refusal& refusal) {
    throw Refusal(kWrongUsage, refusal.what(), refusal.advice);
  }
}

std::uint64_t GetRestarts(const TestRequest& request, std::uint32_t flags) {
  const bool asksUser = (flags & kRngCapabilityNeedsUser) != 0;
  return request.restarts.value_or(asksUser ? 0 : kUsualRestarts);
}

TestReport TestGenerator(const TestRequest& request, PictureFile* file) {
  const DrawnStream stream = DrawStream(request, file ? &file->picture : nullptr, [file] {
    if (file) file->output.LeaveToParent();
  });
  const std::uint64_t restarts = GetRestarts(request, stream.facts.flags);
  const std::vector<FirstDraw> draws =
      DrawAfterRestarts(request.source, restarts, GetLimitOfStart(stream.facts.flags));
  return MakeReport(stream, restarts, draws);
}

// A script must not take a test that could not be made for a verdict on the generator.
TestReport TestAndReport(const TestRequest& request, PictureFile* file) {
  try {
    TestReport report = TestGenerator(request, file);
    if (file) {
      file->output.Write(file->picture.AsPng());
      file->output.Commit();
    }
    request.asJson ? PrintJson(report) : PrintText(report);
    FinishOutput();
    return report;
  } catch (const Refusal& refusal) {
    throw Refusal(kNothingUsable, refusal.what(), refusal.advice);
  } catch (const std::exception& error) {
    throw Refusal(kNothingUsable, std::string("rngctl itself failed: ") + error.what() + ".");
  }
}

}  // namespace

void RunTest(const TestRequest& request) {
  const std::unique_ptr<PictureFile> file = OpenPicture(request.picture);
  const TestReport report = TestAndReport(request, file.get());
  if (report.isSuspicious) throw Refusal(kNegativeAnswer, report.reason);
}
