// What the helper process sends and loads.

#include "tests/openssl/openssl_test.h"
#include "tests/support/tree.h"

#include <filesystem>

namespace {

constexpr const char* kProgram = R"(#!/usr/bin/python3
import socket, struct
host = socket.socket(fileno=3)
number, size = struct.unpack_from('II', host.recv(1544))
answer, piece = ANSWER
for begin in range(0, len(answer), piece):
    host.send(answer[begin:begin + piece])
)";

class Answers : public OpensslTest {
 protected:
  // Installs a fake helper. `answer` is Python: the bytes of its answer, and the size of the pieces in which it sends
  // them.
  static void InstallAnswer(const std::string& answer) {
    std::string program = kProgram;
    program.replace(program.find("ANSWER"), 6, answer);
    InstallHelper(program);
  }

  static void InstallHelper(const std::string& program) {
    std::filesystem::remove(HelperProgram());
    WriteFile(HelperProgram(), program);
    std::filesystem::permissions(HelperProgram(), std::filesystem::perms(0755));
  }

  static Result DrawWithAnswer(const std::string& answer) {
    InstallAnswer(answer);
    return Run("openssl rand -hex 32");
  }
};

}  // namespace

TEST_F(Answers, ArriveInPieces) {
  std::string expected;
  for (int i = 0; i < 16; ++i) expected += "3132";
  for (const char* piece : {"1", "519", "521", "1000"}) {
    const Result result = DrawWithAnswer("struct.pack('II512s', number, 1, b'x') + b'12' * 16, " +
                                         std::string(piece));
    EXPECT_EQ(expected + '\n', result.output) << piece << ": " << result.errors;
  }
}

TEST_F(Answers, EndTooEarly) {
  EXPECT_TRUE(Refused(DrawWithAnswer("struct.pack('II512s', number, 1, b'x') + b'1' * 31, 1000"),
                      "has terminated"));
}

TEST_F(Answers, AreToAnotherRequest) {
  for (const char* const number : {"number + 1", "number - 1"}) {
    EXPECT_TRUE(Refused(DrawWithAnswer(std::string("struct.pack('II512s', ") + number +
                                       ", 1, b'x') + b'1' * 32, 1000"),
                        "sent an unexpected answer"));
  }
}

TEST_F(Answers, HaveATextWithoutItsEnd) {
  const std::string answer = "struct.pack('II512s', number, 0, b'y' * 512) + bytes(32), 1000";
  const Result result = DrawWithAnswer(answer);
  EXPECT_TRUE(Refused(result, std::string(511, 'y')));
  EXPECT_EQ(std::string::npos, result.errors.find(std::string(512, 'y')));
}

// SIGPIPE would end a program that sends another request.
TEST_F(Answers, AreTheLastOfAHelperThatStopsReading) {
  InstallAnswer("struct.pack('II512s', number, 1, b'x') + b'12' * 16, 1000");
  WriteFile(HelperProgram(), ReadFile(HelperProgram()) +
                                 "host.shutdown(socket.SHUT_RD)\nimport time\ntime.sleep(5)\n");
  const Result result = RunHost("shell 'sleep 0.5'");
  EXPECT_EQ("X-", result.output);  // the first bytes have no watermark
  EXPECT_EQ(0, result.status);
}

// A helper that has not sent a draw is not asked again. The second one exits at once, and leaves no file.
TEST_F(Answers, OtherThanADrawEndTheConnection) {
  const std::string answers[] = {"number, 0", "number, 2", "number, 7", "number + 1, 1"};
  for (const std::string& answer : answers) {
    const std::string trace = TreePath("ended" + std::to_string(&answer - answers));
    InstallHelper(R"(#!/usr/bin/python3
import os, socket, struct
host = socket.socket(fileno=3)
trace = ')" + trace +
                  R"('
if os.path.exists(trace):
    os._exit(1)
while request := host.recv(1544):
    number, size = struct.unpack_from('II', request)
    host.send(struct.pack('II512s', )" +
                  answer + ", b'x') + bytes(32))\nopen(trace, 'w')\n");
    EXPECT_EQ("--", RunHost("shell 'for i in $(seq 600); do test -e " + trace +
                            " && exit; sleep 0.05; done; exit 1'")
                        .output)
        << answer;
  }
}

TEST_F(Answers, AreOfAnUnknownKind) {
  EXPECT_TRUE(Refused(
      DrawWithAnswer("struct.pack('II512s', number, 7, b'unknown') + b'1' * 32, 1000"), "unknown"));
}

// The library looks for a display twelve times.
TEST_F(Answers, TakeOneLoadOfTheXLibrary) {
  const Result result = Run("LD_DEBUG=files LD_DEBUG_OUTPUT=" + TreePath("loads") +
                            " openssl rand -hex 32 >/dev/null; cat " + TreePath("loads") +
                            ".* | grep -c 'calling init: .*/libX11[.]so'");
  EXPECT_EQ("1\n", result.output);
}
