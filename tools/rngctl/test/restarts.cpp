#include "tools/rngctl/test/restarts.h"

#include "tools/rngctl/drawing/progress.h"
#include "tools/rngctl/process/child.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"
#include "tools/rngctl/test/messages.h"
#include "tools/rngctl/test/test.h"

#include <iostream>

namespace {

using Clock = std::chrono::steady_clock;

// Otherwise what a plug-in prints in each start would be printed hundreds of times.
void ShowQuestion(const std::string& text) { std::cerr << PrintableLines(text) << std::flush; }

FirstDraw DrawOnce(const GeneratorChoice& source, std::size_t start, std::chrono::seconds limit) {
  ChildOrder order = {kTestChildCommand, Encode(RestartOrder{source.name, source.device}), limit};
  order.whileItWaits = ShowQuestion;
  order.endsDescendants = true;  // otherwise hundreds of leftover processes could accumulate
  const ChildResult result = RunChild(order);
  const auto answer = result.Last<RestartAnswer>();
  if (answer && answer->draw) return *answer->draw;
  const std::string which = "In start " + std::to_string(start) + ": ";
  if (answer) throw Refusal(kNothingUsable, which + answer->refusal, answer->advice);
  throw Refusal(kNothingUsable, which + "a plug-in " + DescribeEnd(result, limit) + ".",
                "Run \"rngctl doctor\" to find out which.");
}

}  // namespace

std::vector<FirstDraw> DrawAfterRestarts(const GeneratorChoice& source, std::uint64_t restarts,
                                         std::chrono::seconds limit) {
  Progress progress(restarts, true);
  std::vector<FirstDraw> draws;
  const auto end = Clock::now() + kTimeForRestarts;
  while (draws.size() < restarts && Clock::now() < end) {
    draws.push_back(DrawOnce(source, draws.size() + 1, limit));
    progress.Show(draws.size());
  }
  return draws;
}
