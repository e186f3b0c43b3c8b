#include "tools/rngctl/process/child.h"

#include "tools/rngctl/commands/provider_text.h"
#include "tools/rngctl/drawing/chosen_generator.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"
#include "tools/rngctl/test/messages.h"
#include "tools/rngctl/test/test.h"

namespace {

FirstDraw DrawFrom(IRngProvider& rng) {
  FirstDraw draw = {};
  if (rng.Generate(draw.data(), draw.size())) return draw;
  throw Refusal(kNothingUsable, "the generator " + Quoted(ReadText(rng, &IRngProvider::GetName)) +
                                    " failed in its first draw.");
}

RestartAnswer Draw(const RestartOrder& order) {
  RestartAnswer answer;
  try {
    WithGenerator({order.name, order.device},
                  [&answer](IRngProvider& rng) { answer.draw = DrawFrom(rng); });
  } catch (const Refusal& refusal) {
    answer = {{}, refusal.what(), refusal.advice};
  }
  return answer;
}

}  // namespace

void RunTestChild(int channel) {
  Send(Draw(BecomeChild<RestartOrder>(channel)));
  ::_exit(0);  // "rngctl check" examines what a plug-in leaves for the exit
}
