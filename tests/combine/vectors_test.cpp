// The bytes that combinations give, computed by another program.

#include "tests/combine/fake_source.h"

#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>

namespace {

Bytes FromHex(const std::string& digits) {
  Bytes bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(static_cast<unsigned char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

struct Vector {
  std::size_t size;
  Bytes end;
  std::vector<std::unique_ptr<FakeSource>> fakes;
  std::vector<rng::CombinedSource> sources;
};

Vector ParseVector(const std::string& line) {
  std::istringstream parts(line);
  const auto next = [&parts](std::string text = "") {
    std::getline(parts, text, '\t');
    return text;
  };
  Vector vector{std::stoul(next()), FromHex(next()), {}, {}};
  for (std::string kind = next(); !kind.empty(); kind = next()) {
    const std::string device = next();
    const Bytes bytes = FromHex(next());
    vector.fakes.push_back(std::make_unique<FakeSource>(kind));
    vector.fakes.back()->draw = [bytes](unsigned char* buffer, std::size_t size) {
      std::copy_n(bytes.begin(), size, buffer);
      return size == bytes.size();
    };
    vector.sources.push_back(vector.fakes.back()->Named(device == "-" ? "" : device));
  }
  return vector;
}

}  // namespace

TEST(CombinedBytes, AreThoseOfAnIndependentProgram) {
  std::ifstream file(COMBINED_VECTORS);
  int count = 0;
  for (std::string line; std::getline(file, line); ++count) {
    const Vector vector = ParseVector(line);
    const Bytes bytes = DrawOf(vector.sources, vector.size);
    ASSERT_EQ(vector.size, bytes.size()) << line;
    EXPECT_TRUE(std::equal(vector.end.rbegin(), vector.end.rend(), bytes.rbegin())) << line;
  }
  EXPECT_EQ(8, count);
}
