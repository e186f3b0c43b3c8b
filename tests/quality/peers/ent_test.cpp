// The statistics of bytes against those of ent.

#include "quality/byte_statistics.h"
#include "tests/quality/peers/peer.h"

#include <cmath>
#include <gtest/gtest.h>
#include <sstream>

namespace {

struct EntResult {
  double chiSquare = 0;
  double correlation = 0;
};

// The second line of its table: line number, size, entropy, chi-square, mean, pi, correlation.
EntResult RunEnt(const Bytes& bytes) {
  const std::vector<std::string> lines = RunPeer("ent -t", bytes);
  std::istringstream table(lines.at(1));
  std::vector<double> cells;
  for (std::string cell; std::getline(table, cell, ',');) cells.push_back(std::stod(cell));
  return {cells.at(3), cells.at(6)};
}

class Ent : public testing::TestWithParam<Stream> {};

}  // namespace

TEST_P(Ent, AgreesOnTheStatisticsOfBytes) {
  const Bytes bytes = GetParam().make(40);
  ByteStatistics ours;
  ours.Feed(bytes.data(), bytes.size());
  const EntResult theirs = RunEnt(bytes);
  EXPECT_NEAR(theirs.chiSquare, ours.GetChiSquare()->value,
              1e-6 * std::abs(theirs.chiSquare) + 1e-5);
  // Where all bytes are alike the correlation is not defined: ent prints -100000.
  if (theirs.correlation > -2) {
    EXPECT_NEAR(theirs.correlation, ours.GetSerialCorrelation()->value, 2e-6);
  }
}

INSTANTIATE_TEST_SUITE_P(On, Ent, testing::ValuesIn(AllStreams()),
                         [](const auto& stream) { return stream.param.name; });
