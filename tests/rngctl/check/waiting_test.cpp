#include "tests/rngctl/check/breach.h"

#include <gtest/gtest.h>

TEST(CheckBreaches, ThatTakeTimeFailTheirCheckAloneAndAreWaitedForOnce) {
  const Breach breaches[] = {
      {"hangs_with_settings", "built-in-settings", "It did not answer within 1 s in IsAvailable.",
       kReturnSoon},
      // An error, because every start of a host waits as long.
      {"factory_hangs", "gives-object", "It did not answer within 1 s in the factory.", kReturnSoon,
       "error"},
      {"name_hangs", "name", "It did not answer within 1 s in GetName.", kReturnSoon},
      {"self_test_hangs", "self-test", "It did not answer within 1 s in SelfTest.", kReturnSoon},
      {"cancel_hangs", "cancel", "It did not answer within 1 s in Cancel.", kFreeCancel},
      {"waits_without_flag", "waits-are-flagged",
       "A draw still waits after 0.25 s, and GetFlags returns 1, without kRngCapabilityNeedsUser "
       "or kRngCapabilityMayBlock."},
      {"ignores_cancel", "cancel", "A waiting draw does not end within 0.75 s of Cancel."},
      {"cancels_one_draw", "cancel", "A waiting draw does not end within 0.75 s of Cancel."},
      {"cancelled_draw_succeeds", "cancel", "A draw that Cancel ended returns true."},
      {"cancel_waits", "draw-succeeds cancel failed-draw-is-zero",
       "While a draw waits, Cancel does not return within 0.5 s.", kFreeCancel, "error"},
      {"large_draw_waits", "cancel failed-draw-is-zero draw-fills-buffer draws-look-random",
       "While a draw waits, Cancel does not return within 0.5 s.", kFreeCancel},
      {"slow_cancel_waits", "cancel", "Cancel returns only when the draw in progress has ended.",
       kFreeCancel},
      {"later_draw_waits", "cancel", "A waiting draw does not end within 0.75 s of Cancel."},
      {"waits_only_once", "cancel", "Cancelling one draw also ends the next one."},
      {"cancelled_draw_leaves_bytes", "failed-draw-is-zero",
       "After a draw that was cancelled, the buffer is not all zero."}};
  std::vector<std::string> variants;
  for (const Breach& breach : breaches) variants.push_back(breach.variant);
  std::map<std::string, Result> results = CheckTogether(variants);
  for (const Breach& breach : breaches) {
    SCOPED_TRACE(breach.variant);
    ExpectBreach(breach, results[breach.variant]);
  }
  // A step that timed out is not tried again.
  EXPECT_EQ("IsAvailable did not answer within 1 s in the check built-in-settings",
            Reason(json::parse(results["hangs_with_settings"].output), "load-cycles"));
}
