#include "tools/rngctl/process/forked/forked_process.h"

#include "tools/rngctl/process/descendants.h"
#include "tools/rngctl/refusal.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// The first byte of a message. After `kEnd` come the exit status, the sentence, a zero and the advice.
constexpr char kPiece = 'p';
constexpr char kEnd = 'e';

// Milliseconds between two checks of the process. After its last message it usually ends at once, so the
// checks are closer then.
constexpr int kTick = 20;
constexpr int kShortTick = 1;
constexpr int kGraceTicks = 50;
constexpr std::size_t kLargestMessage = kLargestPiece + 1;
constexpr std::size_t kLongestText = 4096;

// Passes the bytes straight to the system, so that no copy of them remains.
void SendTo(int socket, char kind, const char* bytes, std::size_t size) {
  iovec parts[] = {{&kind, 1}, {const_cast<char*>(bytes), size}};
  msghdr message = {};
  message.msg_iov = parts;
  message.msg_iovlen = 2;
  while (::sendmsg(socket, &message, MSG_NOSIGNAL) < 0) {
    if (errno != EINTR) throw Refusal(kNegativeAnswer, "The parent process has terminated.");
  }
}

[[noreturn]] void End(int socket, ExitStatus status, const std::string& text) {
  const std::string message = static_cast<char>(status) + text;
  try {
    SendTo(socket, kEnd, message.data(), message.size());
  } catch (const Refusal&) {  // nobody is left to tell
    std::exit(kNegativeAnswer);
  }
  std::exit(status);
}

// The callers on the stack are copies of the parent's, so their destructors must not run here.
[[noreturn]] void RunChild(pid_t parent, int socket, const Suspects& suspects,
                           const ForkedProcess::Work& work) noexcept {
  BecomeDependent();
  if (::getppid() != parent) std::_Exit(kNegativeAnswer);
  ::dup2(STDERR_FILENO, STDOUT_FILENO);
  try {
    work(
        [socket](const SecretBytes& piece) { SendTo(socket, kPiece, piece.data(), piece.size()); });
  } catch (const Refusal& refusal) {
    End(socket, refusal.status,
        std::string(refusal.what()).substr(0, kLongestText) + '\0' + refusal.advice);
  } catch (const Interrupted& interrupted) {
    EndBySignal(interrupted.signal);
  } catch (const std::exception& error) {
    const std::string text = std::string(suspects.who) + " failed: " + error.what() + ".";
    End(socket, kNegativeAnswer, text.substr(0, kLongestText));
  }
  End(socket, kDone, "");
}

[[noreturn]] void RefuseStart() {
  throw Refusal(kNegativeAnswer,
                std::string("Cannot start a process: ") + std::strerror(errno) + ".",
                HowToOpenMore(errno));
}

}  // namespace

ForkedProcess::ForkedProcess(const Suspects& whoRuns, const Work& work) : suspects(whoRuns) {
  std::signal(SIGCHLD, SIG_DFL);  // if it were ignored, waitpid could not report the end
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) RefuseStart();
  messages = Descriptor(ends[0]);
  const Descriptor theirs(ends[1]);
  const pid_t parent = ::getpid();
  process = ::fork();
  if (process < 0) RefuseStart();
  if (process > 0) return;
  messages.Close();
  RunChild(parent, theirs.Get(), suspects, work);
}

ForkedProcess::~ForkedProcess() {
  messages.Close();
  for (int i = 0; i < kGraceTicks && !HasEnded(); ++i) ::poll(nullptr, 0, kTick);
  if (process > 0) ::kill(process, SIGKILL);
  WaitForEnd();
}

bool ForkedProcess::HasEnded() {
  if (process > 0 && ::waitpid(process, &status, WNOHANG) == process) process = -1;
  return process < 0;
}

void ForkedProcess::WaitForEnd() {
  while (process > 0) {
    if (::waitpid(process, &status, 0) == process) process = -1;
  }
}

// Returns false if the process has ended and sent nothing more. A process that it left running may hold
// the other end open, so waiting for the end of the messages alone could take forever.
bool ForkedProcess::WaitForMessage(const GetLimit& limit) {
  const std::chrono::milliseconds most = limit ? limit() : std::chrono::milliseconds::max();
  for (std::chrono::milliseconds waited{0};;) {
    if (InterruptionWatch::Signal() != 0) {
      if (process > 0) ::kill(process, InterruptionWatch::Signal());
      throw Interrupted{InterruptionWatch::Signal(), {}};
    }
    const bool isLast = HasEnded();  // asked before poll, which then finds all that was sent
    pollfd place = {messages.Get(), POLLIN, 0};
    const int tick = messages.Get() < 0 ? kShortTick : kTick;
    if (::poll(&place, 1, isLast ? 0 : tick) > 0) return true;
    if (isLast) return false;
    // Counted in ticks, so that the time for which this program is stopped does not count.
    waited += std::chrono::milliseconds(tick);
    if (waited >= most) RefuseSilence(limit());
  }
}

// Empty when the other end is closed.
SecretBytes ForkedProcess::ReceiveMessage() {
  SecretBytes message(kLargestMessage);
  const ssize_t size = ::recv(messages.Get(), message.data(), message.size(), 0);
  message.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
  if (message.empty()) messages.Close();
  return message;
}

void ForkedProcess::ForEachPiece(const TakePiece& take, const GetLimit& limit) {
  while (WaitForMessage(limit)) {
    const SecretBytes message = ReceiveMessage();
    if (message.size() < 2) continue;
    if (message[0] == kEnd) return Conclude(message, limit);
    take(SecretBytes(message.begin() + 1, message.end()));
  }
  RefuseBadEnd();
}

void ForkedProcess::Conclude(const SecretBytes& message, const GetLimit& limit) {
  const std::string text(message.begin() + 2, message.end());
  const std::size_t end = std::min(text.find('\0'), text.size());
  if (message[1] != kDone) {
    throw Refusal(static_cast<ExitStatus>(message[1]), text.substr(0, end),
                  text.substr(std::min(end + 1, text.size())));
  }
  while (!HasEnded()) {
    if (WaitForMessage(limit)) ReceiveMessage();
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) RefuseBadEnd();
}

void ForkedProcess::RefuseSilence(std::chrono::seconds limit) const {
  throw Refusal(
      kNegativeAnswer,
      std::string(suspects.who) + " did not answer within " + std::to_string(limit.count()) + " s.",
      suspects.advice);
}

void ForkedProcess::RefuseBadEnd() const {
  const std::string end = WIFSIGNALED(status)
                              ? "crashed with signal " + std::to_string(WTERMSIG(status)) + " (" +
                                    ::strsignal(WTERMSIG(status)) + ")"
                              : "exited with status " + std::to_string(WEXITSTATUS(status));
  throw Refusal(kNegativeAnswer, std::string(suspects.who) + " " + end + ".", suspects.advice);
}

void PassText(const TakePiece& pass, const std::string& text) {
  for (std::size_t place = 0; place < text.size(); place += kLargestPiece) {
    const std::string part = text.substr(place, kLargestPiece);
    pass(SecretBytes(part.begin(), part.end()));
  }
}

std::string AnswerOfFork(const Suspects& whoRuns, const std::function<std::string()>& work) {
  ForkedProcess process(whoRuns, [&work](const TakePiece& pass) { PassText(pass, work()); });
  const InterruptionWatch interruption;
  std::string answer;
  process.ForEachPiece(
      [&answer](const SecretBytes& piece) { answer.append(piece.begin(), piece.end()); });
  if (InterruptionWatch::Signal() != 0) throw Interrupted{InterruptionWatch::Signal(), {}};
  return answer;
}
