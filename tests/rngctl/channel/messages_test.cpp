#include "tools/rngctl/channel/messages.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

enum class Fruit { kApple, kPear };
constexpr Fruit LastOf(Fruit) { return Fruit::kPear; }

struct Basket {
  Fruit fruit = Fruit::kApple;
  std::string label;
  std::optional<Fruit> second;
  std::vector<std::string> notes;
};
RNGCTL_MESSAGE(Basket, fruit, label, second, notes)

std::string Bytes(const nlohmann::json& json) {
  std::string bytes;
  nlohmann::json::to_cbor(json, bytes);
  return bytes;
}

nlohmann::json Whole() {
  return {{"fruit", 1}, {"label", "a"}, {"second", nullptr}, {"notes", nlohmann::json::array()}};
}

}  // namespace

TEST(Messages, ArriveAsTheyWereSent) {
  const auto basket = Decode<Basket>(Encode(Basket{Fruit::kPear, "red", Fruit::kApple, {"x", ""}}));
  ASSERT_TRUE(basket);
  EXPECT_EQ(Fruit::kPear, basket->fruit);
  EXPECT_EQ("red", basket->label);
  EXPECT_EQ(Fruit::kApple, basket->second);
  EXPECT_EQ((std::vector<std::string>{"x", ""}), basket->notes);
}

TEST(Messages, CarryAnyBytes) {
  const std::string bytes("\xFF\xC3(\0\n", 5);
  const auto basket = Decode<Basket>(Encode(Basket{Fruit::kApple, bytes, std::nullopt, {}}));
  ASSERT_TRUE(basket);
  EXPECT_EQ(bytes, basket->label);
  EXPECT_FALSE(basket->second);
}

TEST(Messages, AMissingFieldIsNotUnderstood) {
  ASSERT_TRUE(Decode<Basket>(Bytes(Whole())));
  for (const char* field : {"fruit", "label", "second", "notes"}) {
    nlohmann::json json = Whole();
    json.erase(field);
    EXPECT_FALSE(Decode<Basket>(Bytes(json))) << field;
  }
}

TEST(Messages, AnUnknownValueIsNotUnderstood) {
  for (const auto& value : std::vector<nlohmann::json>{2, -1, 1.0, 4294967296, "kPear", nullptr}) {
    nlohmann::json json = Whole();
    json["fruit"] = value;
    EXPECT_FALSE(Decode<Basket>(Bytes(json))) << value;
    if (value.is_null()) continue;  // for an optional field that is a value
    json = Whole();
    json["second"] = value;
    EXPECT_FALSE(Decode<Basket>(Bytes(json))) << value;
  }
}

TEST(Messages, WhatIsNoMessageIsNotUnderstood) {
  for (const std::string& bytes : {std::string(), std::string("hello"), Encode(Basket{}) + "x"}) {
    EXPECT_FALSE(Decode<Basket>(bytes)) << bytes;
  }
}
