// The machine's own /dev/hwrng, if it has one that this user may read.

#include "tests/unixdev/unixdev.h"

#include <fcntl.h>
#include <fstream>
#include <unistd.h>

class RealHardware : public UnixDev {
 protected:
  void SetUp() override {
    UnixDev::SetUp();
    const int descriptor = ::open("/dev/hwrng", O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor >= 0) ::close(descriptor);
    std::string source;
    std::getline(std::ifstream("/sys/class/misc/hw_random/rng_current"), source);
    if (descriptor < 0 || source == "none") GTEST_SKIP() << "no /dev/hwrng that this user can read";
  }
};

TEST_F(RealHardware, IsSelectedAndDrawn) {
  ASSERT_TRUE(rng->SelectDevice("hwrng"));
  EXPECT_EQ(kRngCapabilityHardware | kRngCapabilityMayBlock, rng->GetFlags());
  EXPECT_NE(Draw(100), Draw(100));
  EXPECT_TRUE(rng->SelfTest());
}
