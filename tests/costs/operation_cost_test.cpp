#include "benchmarks/machine/operations.h"
#include "tests/costs/limits.h"
#include "tests/costs/measured_run.h"

#include <gtest/gtest.h>
#include <iostream>
#include <ostream>

void PrintTo(const CostLimit& limit, std::ostream* out) { *out << limit.operation; }

class OperationCost : public testing::TestWithParam<CostLimit> {};

TEST_P(OperationCost, InstructionsStayNearTheBareLoops) {
  const long bare = CountInstructions("bare", GetParam().operation);
  const long ours = CountInstructions("ours", GetParam().operation);
  const double ratio = static_cast<double>(ours) / static_cast<double>(bare);
  std::cout << ours << " instructions against " << bare << ": " << ratio << '\n';
  EXPECT_GE(GetParam().instructions * kInstructionSlack, ratio);
}

TEST_P(OperationCost, SystemCallsAreTheBareLoops) {
  const std::vector<long> bare = TraceSystemCalls("bare", GetParam().operation);
  std::cout << bare.size() << " system calls\n";
  EXPECT_EQ(bare, TraceSystemCalls("ours", GetParam().operation));
}

TEST_P(OperationCost, AllocationsStayNearTheBareLoops) {
  const long bare = CountAllocations("bare", GetParam().operation);
  const long ours = CountAllocations("ours", GetParam().operation);
  std::cout << ours << " allocations against " << bare << '\n';
  EXPECT_GE(GetParam().moreAllocations, ours - bare);
}

INSTANTIATE_TEST_SUITE_P(All, OperationCost, testing::ValuesIn(kCostLimits),
                         [](const auto& instance) {
                           return std::string(instance.param.operation);
                         });

TEST(CostLimits, CoverEveryOperation) {
  ASSERT_EQ(std::size(kCostLimits), AllOperations().size());
  for (const CostLimit& limit : kCostLimits) EXPECT_NO_THROW(FindOperation(limit.operation));
}

TEST(GetRng, AllocatesOnceForEachNamedProvider) {
  EXPECT_EQ(kAllPlugins, CountAllocations("ours", "GetRngLast"));
  EXPECT_EQ(kAllPlugins, CountAllocations("ours", "GetRngMissing"));
}

class LongerProfile : public testing::TestWithParam<const char*> {};

TEST_P(LongerProfile, CostsInProportion) {
  const std::string operation = GetParam();
  const long start = CountInstructions("ours", operation);
  const long thousand = CountInstructions("ours", operation + "1000") - start;
  const long more = CountInstructions("ours", operation + "100000") - start;
  const double straight = static_cast<double>(thousand) * (100'000.0 - 3) / (1'000.0 - 3);
  EXPECT_NEAR(1.0, static_cast<double>(more) / straight, kLinearity);
}

INSTANTIATE_TEST_SUITE_P(All, LongerProfile, testing::Values("GetType", "SetType"),
                         [](const auto& instance) { return std::string(instance.param); });
