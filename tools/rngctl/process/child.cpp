#include "tools/rngctl/process/child.h"

#include "tools/rngctl/channel/last_words.h"
#include "tools/rngctl/process/descendants.h"
#include "tools/rngctl/process/interruption.h"
#include "tools/rngctl/process/spawn.h"
#include "tools/rngctl/process/terminal_settings.h"
#include "tools/rngctl/refusal.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// How often the state of a child is polled. A pidfd would announce its end, but some sandboxes refuse
// one. Usually the end of the messages wakes the wait much sooner.
constexpr milliseconds kTick(20);
constexpr milliseconds kShortTick(1);

// When the user stops and continues this program, the child may continue a moment later.
constexpr int kStoppedTicks = 10;

// A longer gap means that this program was stopped or the machine suspended: it does not count.
constexpr milliseconds kLongestTick(500);

// A plug-in that is quiet for longer may be waiting for the user.
milliseconds MomentOf(const ChildOrder& order) {
  return std::min(milliseconds(250), order.limit / 8);
}
constexpr std::size_t kMostShown = 1024;

// Reads a bounded amount, because a child may write faster than this reads. It is more than a channel
// holds. Stops listening at the end of the stream.
std::string ReadPiece(pollfd& place) {
  std::string text;
  char piece[65536];
  for (int i = 0; place.fd >= 0 && i < 16; ++i) {
    const ssize_t count = ::read(place.fd, piece, sizeof piece);
    if (count < 0) break;
    if (count == 0) place.fd = -1;
    text.append(piece, static_cast<std::size_t>(count));
  }
  return text;
}

// If a call of the plug-in prints on standard error, falls silent and does not return, it may have asked
// the user something, so the text is passed on. A call that keeps printing is not waiting for an answer.
class Prompt {
 public:
  explicit Prompt(const ChildOrder& order) : tell(order.whileItWaits), moment(MomentOf(order)) {}

  // The plug-in has returned, and another call has begun.
  void Restart() { text.clear(); }
  void Add(const std::string& piece) {
    if (piece.empty()) return;
    last = Clock::now();
    text += piece;
    text.erase(0, text.size() - std::min(kMostShown, text.size()));
  }
  void ShowWhenQuiet() {
    if (text.empty() || Clock::now() - last < moment) return;
    tell(text);
    text.clear();
  }

 private:
  const std::function<void(const std::string& text)> tell;
  const milliseconds moment;
  Clock::time_point last = Clock::now();
  std::string text;
};

// What a child sends and prints.
class Listener {
 public:
  Listener(const SpawnedChild& child, const ChildOrder& order)
      : prompt(order),
        waiting{{child.messages.Get(), POLLIN, 0},
                {child.output.Get(), POLLIN, 0},
                {child.errors.Get(), POLLIN, 0}} {}

  // Waits for a while. True when a message came.
  bool Listen() {
    const bool isClosed = waiting[0].fd < 0;
    const int count = ::poll(waiting, 3, static_cast<int>((isClosed ? kShortTick : kTick).count()));
    if (count < 0 && errno != EINTR) {
      throw Refusal(kNegativeAnswer,
                    std::string("Cannot wait for a process: ") + std::strerror(errno) + ".");
    }
    const bool hasMessage = count > 0 && ReadAll();
    // Messages come in bursts. Collecting them costs less than waking up for each.
    if (hasMessage) std::this_thread::sleep_for(kShortTick);
    prompt.ShowWhenQuiet();
    return hasMessage;
  }

  // Takes what is there. True when it was a message.
  bool ReadAll() {
    const std::string message = ReadPiece(waiting[0]);
    messages += message;
    if (!message.empty()) prompt.Restart();
    output.Add(ReadPiece(waiting[1]));
    const std::string text = ReadPiece(waiting[2]);
    errors.Add(text);
    prompt.Add(text);
    return !message.empty();
  }

  // When nothing more comes.
  void Finish() {
    output.Finish();
    errors.Finish();
  }

  std::string messages;
  PrintedLines output;
  PrintedLines errors;

 private:
  Prompt prompt;
  pollfd waiting[3];
};

// Nothing while the child runs.
siginfo_t LookAt(pid_t child) {
  siginfo_t info = {};
  ::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WSTOPPED | WNOHANG | WNOWAIT);
  return info;
}

// Waits for the end, a stop, an interruption, or the limit.
ChildEnd WaitFor(pid_t child, const ChildOrder& order, Listener& listener) {
  Clock::duration left = order.limit;
  Clock::duration leftOfAll =
      order.limitOfAll.count() > 0 ? order.limitOfAll : Clock::duration::max();
  int stoppedTicks = 0;
  for (Clock::time_point last = Clock::now(); std::min(left, leftOfAll).count() > 0;) {
    if (listener.Listen() && order.limited == LimitOf::kSilence) left = order.limit;
    const siginfo_t info = LookAt(child);
    const bool isStopped = info.si_pid != 0 && info.si_code == CLD_STOPPED;
    if (info.si_pid != 0 && !isStopped) {
      listener.ReadAll();
      return info.si_code == CLD_EXITED ? ChildEnd::kExited : ChildEnd::kSignalled;
    }
    stoppedTicks = isStopped ? stoppedTicks + 1 : 0;
    if (stoppedTicks == kStoppedTicks) return ChildEnd::kStopped;
    if (InterruptionWatch::Signal() != 0) break;
    const Clock::time_point now = Clock::now();
    const Clock::duration passed = std::min<Clock::duration>(now - last, kLongestTick);
    left -= passed;
    leftOfAll -= passed;
    last = now;
  }
  return ChildEnd::kTimedOut;
}

// The exit status, or the number of the signal. Kills a child that still runs.
int EndChild(pid_t child, ChildEnd end) {
  const int stopSignal = end == ChildEnd::kStopped ? LookAt(child).si_status : 0;
  if (end == ChildEnd::kStopped || end == ChildEnd::kTimedOut) ::kill(child, SIGKILL);
  int status = 0;
  TEMP_FAILURE_RETRY(::waitpid(child, &status, 0));
  if (end == ChildEnd::kStopped) return stopSignal;
  return end == ChildEnd::kSignalled ? WTERMSIG(status) : WEXITSTATUS(status);
}

std::string WhyAborted(const ChildResult& result) {
  return result.code != SIGABRT || result.lastWords.empty() ? "" : "; " + result.lastWords;
}

}  // namespace

ChildResult RunChild(const ChildOrder& order) {
  std::signal(SIGCHLD, SIG_DFL);  // a caller that ignores it would have the children disappear
  AdoptDescendants();
  const std::set<pid_t> known = ListChildren();
  const InterruptionWatch interruption;
  const TerminalSettings terminal;
  const SpawnedChild child =
      Spawn(order.command, order.request, order.libraryPath, order.whileItWaits != nullptr);
  Listener listener(child, order);
  const ChildEnd end = WaitFor(child.process, order, listener);
  const int code = EndChild(child.process, end);
  listener.Finish();
  ChildResult result{FindLastMessage(listener.messages),
                     end,
                     code,
                     listener.output,
                     listener.errors,
                     NameNewChildren(known),
                     listener.messages.empty(),
                     FindLastWords(listener.messages)};
  if (order.endsDescendants) EndNewChildren(known);
  if (InterruptionWatch::Signal() != 0)
    throw Interrupted{InterruptionWatch::Signal(), result.leftRunning};
  return result;
}

std::string DescribeEnd(const ChildResult& result, std::chrono::seconds limit) {
  switch (result.end) {
    case ChildEnd::kTimedOut:
      return "did not answer within " + std::to_string(limit.count()) + " s";
    case ChildEnd::kSignalled:
      return "crashed with signal " + std::to_string(result.code) + " (" +
             ::strsignal(result.code) + WhyAborted(result) + ")";
    case ChildEnd::kStopped:
      return "was stopped by signal " + std::to_string(result.code) + " (" +
             ::strsignal(result.code) + ")";
    default:  // a child whose messages cannot be sent looks as if it had exited early
      return "exited with status " + std::to_string(result.code) +
             (result.code == 0 ? ", or closed descriptors that are not its own," : "");
  }
}

std::string ReceiveRequest(int channel) {
  BecomeDependent();
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  const std::optional<std::string> request = OpenChannel(channel);
  if (!request) throw Refusal(kWrongUsage, "This command is for rngctl itself.");
  if (!IsHeard(channel)) ::_exit(kNegativeAnswer);  // the parent had already ended
  WatchTermination();
  return *request;
}
