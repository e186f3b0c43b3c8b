// The helper's end of the connection, in a copy of this process.

#include "openssl/helper/host_connection.h"
#include "plugins/interactive/start_orphan.h"
#include "tests/support/process.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr unsigned char kSecret = 0x5A;

// What a helper leaves in memory after an answer with `size` bytes, and what it sends. Exits with the number of the
// fact that does not hold.
int AnswerAndLook(DrawAnswer::Result result, std::uint32_t size) {
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) return 1;
  const int host = ::dup(ends[0]);  // may be the descriptor that is replaced below
  ::dup2(ends[1], kOrphanSocket);
  const HostConnection connection;
  const auto reply = std::make_unique<Reply>();
  std::fill_n(reply->bytes, size, kSecret);
  ProviderRequest request = {};
  request.number = 7;
  request.size = size;
  connection.Answer(request, result, "text", *reply);
  const auto received = std::make_unique<Reply>();
  const std::size_t expected = sizeof received->answer + size;
  if (::recv(host, received.get(), expected, MSG_WAITALL) != static_cast<ssize_t>(expected))
    return 2;
  const unsigned char sent = result == DrawAnswer::kDrawn ? kSecret : 0;
  const auto isSent = [sent](unsigned char byte) { return byte == sent; };
  if (!std::all_of(received->bytes, received->bytes + size, isSent)) return 3;
  const auto isZero = [](unsigned char byte) { return byte == 0; };
  const bool isWiped = std::all_of(std::begin(reply->bytes), std::end(reply->bytes), isZero);
  ::_exit(isWiped ? 0 : 4);  // before the end of the connection ends this process
}

}  // namespace

TEST(Reply, IsWipedInTheHelperAfterItWasSent) {
  for (const std::uint32_t size : {1U, 32U, kLargestDraw}) {
    EXPECT_EQ(0, RunForked([&] { return AnswerAndLook(DrawAnswer::kDrawn, size); }).status) << size;
  }
}

TEST(Reply, HasZerosIfTheDrawFailed) {
  for (const DrawAnswer::Result result : {DrawAnswer::kFailed, DrawAnswer::kRefused}) {
    EXPECT_EQ(0, RunForked([&] { return AnswerAndLook(result, 100); }).status) << result;
  }
}
