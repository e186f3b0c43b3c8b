// Programs whose habits could disturb a draw, or that a draw could disturb.

#include "tests/openssl/openssl_test.h"
#include "tests/support/tree.h"

namespace {

class Habits : public OpensslTest {
 protected:
  static void ExpectOk(const std::string& habit) {
    const Result result = Run(HABITS " " + habit);
    EXPECT_EQ("ok\n", result.output) << result.errors;
  }
};

}  // namespace

TEST_F(Habits, AThreadIsNotCancelledInADraw) { ExpectOk("cancel_thread"); }

TEST_F(Habits, AThreadThatCannotBeCancelledStaysSo) { ExpectOk("forbid_cancellation"); }

TEST_F(Habits, SignalsInterruptNoDraw) {
  Command("very_slow");
  ExpectOk("catch_signals");
}

TEST_F(Habits, AStandardStreamThatIsClosedStaysClosed) {
  for (const char* first : {"0", "1", "2", "3"}) ExpectOk(std::string("close_streams ") + first);
}

TEST_F(Habits, ACopyClosesTheSocketOfTheOriginal) { ExpectOk("count_in_copy"); }

TEST_F(Habits, TheEndOfAContextInACopyClosesItsSocket) { ExpectOk("end_context_in_copy"); }

TEST_F(Habits, AHelperThatHasTerminatedLeavesNoDescriptor) {
  ExpectOk("count_after '" + KillHelpers() + "'");
}

TEST_F(Habits, SocketsInThePlaceOfOursAreLeftAlone) {
  ExpectOk("replace_sockets");
  ExpectOk("replace_sockets_in_copy");
}

TEST_F(Habits, TheEndOfAContextEndsItsHelper) {
  ExpectOk("end_context 'for i in $(seq 200); do pgrep -f ^" + HelperProgram() +
           " >/dev/null || exit 0; sleep 0.05; done; exit 1'");
}

TEST_F(Habits, AKernelThatCannotWipeCopiesGivesNoBytes) {
  const Result result = Run(HABITS " refuse_to_wipe");
  EXPECT_EQ("ok\n", result.output);
  EXPECT_THAT(result.errors, testing::HasSubstr("This needs Linux 4.14"));
}

TEST_F(Habits, AFailureInTheMiddleOfALargeDrawLeavesZeros) {
  Command("draw_once");
  ExpectOk("draw_much");
}
