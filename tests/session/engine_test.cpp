#include "tests/session/own_provider.h"
#include "tests/support/process.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <numeric>
#include <random>
#include <sstream>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <rngaggregator/engine.h>

using rng::ErrorCode;
using testing::ElementsAre;
using testing::Pair;

namespace {

static_assert(std::uniform_random_bit_generator<rng::Engine>);
static_assert(std::is_same_v<rng::Engine::result_type, std::uint64_t>);
static_assert(rng::Engine::min() == 0 && rng::Engine::max() == UINT64_MAX);

bool g_refusesAdvice = false;

}  // namespace

// The program's own stands before the system's.
extern "C" int madvise(void* page, std::size_t size, int advice) noexcept {
  if (g_refusesAdvice && advice == MADV_WIPEONFORK) return -1;
  return static_cast<int>(::syscall(SYS_madvise, page, size, advice));
}

namespace {

using Number = std::uint64_t;
using Page = std::vector<Number>;

// The pages that the kernel empties after a fork and keeps out of core files.
std::vector<Page> EnginePages() {
  std::vector<Page> pages;
  std::ifstream map("/proc/self/smaps");
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;
  for (std::string line; std::getline(map, line);) {
    unsigned long from = 0;
    unsigned long to = 0;
    if (std::sscanf(line.c_str(), "%lx-%lx ", &from, &to) == 2) begin = from, end = to;
    const bool isOne =
        line.find(" wf") != std::string::npos && line.find(" dd") != std::string::npos;
    if (line.rfind("VmFlags:", 0) != 0 || !isOne) continue;
    for (; begin != end; begin += 4096) {
      const auto* const numbers = reinterpret_cast<const Number*>(begin);
      pages.emplace_back(numbers, numbers + 512);
    }
  }
  return pages;
}

bool Contains(const Page& page, Number number) {
  return std::find(page.begin(), page.end(), number) != page.end();
}

// Draws numbers that the case knows: good bytes, and a copy of them.
struct KnownNumbers {
  KnownNumbers() {
    provider.draw = [this](unsigned char* buffer, std::size_t size) {
      OwnProvider::DrawWell(buffer, size);
      Page numbers(size / sizeof(Number));
      std::memcpy(numbers.data(), buffer, size);
      drawn.insert(drawn.end(), numbers.begin(), numbers.end());
      return true;
    };
  }

  OwnProvider provider;
  Page drawn;
};

Page Take(rng::Engine& engine, std::size_t count) {
  Page numbers(count);
  std::generate(numbers.begin(), numbers.end(), std::ref(engine));
  return numbers;
}

}  // namespace

TEST(Engine, ShufflesAndFeedsDistributions) {
  OwnProvider provider;
  rng::Engine engine(GeneratorOf(provider));
  std::vector<int> cards(52);
  std::iota(cards.begin(), cards.end(), 0);
  std::vector<int> shuffled = cards;
  std::shuffle(shuffled.begin(), shuffled.end(), engine);
  EXPECT_NE(cards, shuffled);
  EXPECT_TRUE(std::is_permutation(cards.begin(), cards.end(), shuffled.begin()));
  std::vector<int> counts(6);
  for (int i = 0; i < 6000; ++i) ++counts[std::uniform_int_distribution<std::size_t>(0, 5)(engine)];
  // 1,000 each, with a standard deviation of 29.
  for (const int count : counts) EXPECT_NEAR(1000, count, 230);
}

TEST(Engine, ReturnsEachDrawnNumberOnceAndDrawsMoreEachTime) {
  KnownNumbers source;
  rng::Engine engine(GeneratorOf(source.provider));
  EXPECT_TRUE(source.drawn.empty());
  Page numbers = Take(engine, 8 + 16 + 32 + 64 + 128 + 256 + 511 + 511);
  EXPECT_THAT(source.provider.sizes, ElementsAre(64, 128, 256, 512, 1024, 2048, 4088, 4088));
  std::sort(numbers.begin(), numbers.end());
  std::sort(source.drawn.begin(), source.drawn.end());
  EXPECT_EQ(source.drawn, numbers);
}

TEST(Engine, WipesEachNumberThatItReturns) {
  KnownNumbers source;
  rng::Engine engine(GeneratorOf(source.provider));
  const Page taken = Take(engine, 8 + 16 + 5);
  const std::vector<Page> pages = EnginePages();
  ASSERT_EQ(1U, pages.size());
  for (const Number number : source.drawn) {
    const bool isTaken = std::find(taken.begin(), taken.end(), number) != taken.end();
    EXPECT_EQ(!isTaken, Contains(pages[0], number));
  }
}

TEST(Engine, SharesNoNumbersWithItsCopy) {
  KnownNumbers source;
  rng::Engine engine(GeneratorOf(source.provider));
  engine();
  rng::Engine copy(engine);
  Page numbers = Take(engine, 7);
  const Page others = Take(copy, 8);
  EXPECT_THAT(source.provider.sizes, ElementsAre(64, 64));
  for (const Number number : others) EXPECT_FALSE(Contains(numbers, number));
}

TEST(Engine, DrawsNewNumbersAfterAnAssignment) {
  KnownNumbers mine;
  KnownNumbers others;
  rng::Engine engine(GeneratorOf(mine.provider));
  rng::Engine other(GeneratorOf(others.provider));
  engine();
  Take(other, 8 + 16);
  engine = other;
  for (const Page& page : EnginePages()) {
    for (const Number number : mine.drawn) EXPECT_FALSE(Contains(page, number));
  }
  engine();
  EXPECT_THAT(mine.provider.sizes, ElementsAre(64));
  EXPECT_THAT(others.provider.sizes, ElementsAre(64, 128, 64));
  rng::Engine& same = engine;
  engine = same;
  engine();
  EXPECT_EQ(3U, others.provider.sizes.size());
}

TEST(Engine, IsUsableAfterAMove) {
  KnownNumbers source;
  rng::Engine engine(GeneratorOf(source.provider));
  engine();
  rng::Engine moved(std::move(engine));
  EXPECT_NE(moved(), engine());
}

TEST(Engine, UnmapsItsPage) {
  OwnProvider provider;
  {
    rng::Engine engine(GeneratorOf(provider));
    engine();
    EXPECT_EQ(1U, EnginePages().size());
  }
  EXPECT_EQ(0U, EnginePages().size());
}

// --- Fork

TEST(Engine, DrawsNewNumbersInAChildAndKeepsTheParents) {
  KnownNumbers source;
  rng::Engine engine(GeneratorOf(source.provider));
  engine();
  rng::Engine copy(engine);
  copy();
  const auto draws = [&] { return static_cast<int>(source.provider.sizes.size()); };
  EXPECT_EQ(2, draws());
  const Result child = RunForked([&] {
    engine();
    if (draws() != 3) return 1;
    copy();
    if (draws() != 4) return 2;
    for (const Page& page : EnginePages()) {  // of the parent's numbers
      for (std::size_t i = 0; i < 16; ++i) {
        if (Contains(page, source.drawn[i])) return 3;
      }
    }
    return 0;
  });
  EXPECT_EQ(0, child.status);
  Take(engine, 7);
  Take(copy, 7);
  EXPECT_EQ(2, draws());
}

TEST(Engine, GivesParentAndChildDifferentNumbers) {
  OwnProvider provider;
  rng::Engine engine(GeneratorOf(provider));
  engine();
  const auto print = [&] {
    std::ostringstream text;
    for (const Number number : Take(engine, 100)) text << number << ' ';
    return text.str();
  };
  const auto printInChild = [&] {
    return RunForked([&] { return std::fputs(print().c_str(), stdout), std::fflush(stdout), 0; })
        .output;
  };
  const std::string first = printInChild();
  const std::string second = printInChild();
  EXPECT_LT(1000U, first.size());
  EXPECT_NE(first, second);
  std::istringstream numbers(print());
  for (std::string number; numbers >> number;) {
    EXPECT_EQ(std::string::npos, (first + second).find(number));
  }
}

TEST(Engine, KeepsNoNumbersIfTheKernelCannotWipeThemInAChild) {
  g_refusesAdvice = true;
  KnownNumbers source;
  rng::Engine engine(GeneratorOf(source.provider));
  const Page numbers = Take(engine, 3);
  EXPECT_EQ(numbers, source.drawn);
  EXPECT_THAT(source.provider.sizes, ElementsAre(8, 8, 8));
  EXPECT_EQ(0U, EnginePages().size());
}

// --- Failure

TEST(Engine, RefusesAGeneratorThatAsksTheUser) {
  KnownNumbers source;
  source.provider.flags = kRngCapabilityNeedsUser | kRngCapabilityMayBlock;
  EXPECT_THAT(ErrorOf([&] { rng::Engine engine(GeneratorOf(source.provider)); }),
              Pair(ErrorCode::kNeedsUser,
                   "The generator \"own\" would ask the user for an engine's numbers. Choose "
                   "another, or pass Interaction::kAllowed."));
  rng::Engine engine(GeneratorOf(source.provider), rng::Interaction::kAllowed);
  Take(engine, 511);
  EXPECT_THAT(source.provider.sizes, ElementsAre(4088));
}

TEST(Engine, ThrowsIfADrawFails) {
  KnownNumbers source;
  const auto works = source.provider.draw;
  rng::Engine engine(GeneratorOf(source.provider));
  Take(engine, 8);
  source.provider.draw = [](unsigned char*, std::size_t) { return false; };
  EXPECT_EQ(ErrorCode::kDrawFailed, ErrorOf([&] { engine(); }).first);
  EXPECT_EQ(ErrorCode::kDrawFailed, ErrorOf([&] { engine(); }).first);
  source.provider.draw = works;
  EXPECT_NE(0U, engine());
}
