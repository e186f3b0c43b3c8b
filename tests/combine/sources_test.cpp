// Which lists of sources are accepted.

#include "tests/combine/fake_source.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using rng::CombinedRng;
using rng::CombinedSource;
using rng::ParseSources;

std::string RefusalOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const std::invalid_argument& refusal) {
    return refusal.what();
  }
  return "none";
}

std::string RefusalOf(const std::string& list) {
  return RefusalOf([&list] { ParseSources(list); });
}

std::string RefusalOf(const std::vector<CombinedSource>& sources) {
  return RefusalOf([&sources] { CombinedRng{sources}; });
}

std::string Labels(const std::string& list) {
  std::string labels;
  for (const CombinedSource& source : ParseSources(list)) {
    EXPECT_EQ(nullptr, source.provider);
    labels += '[' + source.kind + '|' + source.device + ']';
  }
  return labels;
}

}  // namespace

TEST(ParseSources, ReadsKindsAndDevices) {
  EXPECT_EQ("[unixdev|]", Labels("unixdev"));
  EXPECT_EQ("[unixdev|][biokbd|][Rutoken|3a2f01]", Labels("unixdev,biokbd,Rutoken:3a2f01"));
  EXPECT_EQ("[Rutoken|a:b:]", Labels("Rutoken:a:b:"));
  EXPECT_EQ("[a | b]", Labels("a : b"));
  EXPECT_EQ("[\xC3\xA4|\xFF]", Labels("\xC3\xA4:\xFF"));
  EXPECT_EQ("[12345678901234567|12345678901234567]", Labels("12345678901234567:12345678901234567"));
}

TEST(ParseSources, ExplainsWhatIsWrong) {
  const std::map<std::string, std::string> refusals = {
      {"",
       "The list of sources \"\" contains an empty item. Separate the generators with one comma."},
      {",dsdr",
       "The list of sources \",dsdr\" contains an empty item. Separate the generators with one "
       "comma."},
      {"dsdr,",
       "The list of sources \"dsdr,\" contains an empty item. Separate the generators with one "
       "comma."},
      {"a,,b",
       "The list of sources \"a,,b\" contains an empty item. Separate the generators with one "
       "comma."},
      {"a, b", "The source \" b\" begins or ends with a blank. Write the list without blanks."},
      {"a ,b", "The source \"a \" begins or ends with a blank. Write the list without blanks."},
      {"a,:b", "The source \":b\" has no generator before the colon."},
      {"a:",
       "The source \"a:\" has no device after the colon. Leave out the colon to use any device."},
      {"a,b,a",
       "The generator \"a\" is named twice. Only one device of a generator can take part."},
      {"a:1,a:2",
       "The generator \"a\" is named twice. Only one device of a generator can take part."},
      {"123456789012345678", "The generator \"123456789012345678\" is longer than 17 bytes."},
      {"123456789012345678:123456789012345678",
       "The generator \"123456789012345678\" is longer than 17 bytes."},
      {"a:123456789012345678", "The device \"123456789012345678\" is longer than 17 bytes."},
      {"a\nb", "The list of sources contains a control character."},
      {"a:\x7f", "The list of sources contains a control character."},
      {"a\x1b[2J,,", "The list of sources contains a control character."},
  };
  for (const auto& [list, sentence] : refusals) EXPECT_EQ(sentence, RefusalOf(list));
}

TEST(CombinedRng, RefusesTwoSourcesOfOneProvider) {
  FakeSource one("unixdev");
  FakeSource other("dsdr");
  EXPECT_EQ(
      "The generator \"unixdev\" is named twice. Only one device of a generator can take part.",
      RefusalOf({one.Named("1"), other.Named(), CombinedSource("unixdev", "2", &other)}));
  EXPECT_EQ(
      "The generator \"alias\" has the same provider as \"unixdev\". Only one device of a "
      "generator can take part.",
      RefusalOf({one.Named("1"), CombinedSource("alias", "2", &one)}));
  EXPECT_EQ("none", RefusalOf({one.Named(), other.Named()}));
  EXPECT_EQ("none", RefusalOf({CombinedSource("a"), CombinedSource("b")}));  // both are missing
}

TEST(CombinedRng, RefusesInvalidNamesAndDevices) {
  FakeSource fake;
  EXPECT_EQ("The list of sources is empty.", RefusalOf(std::vector<CombinedSource>{}));
  EXPECT_EQ("The name of a source is empty.", RefusalOf({CombinedSource("", "", &fake)}));
  EXPECT_EQ("A generator in the list of sources contains a control character.",
            RefusalOf({CombinedSource("a\tb", "", &fake)}));
  EXPECT_EQ("A device in the list of sources contains a control character.",
            RefusalOf({CombinedSource("a", "\n", &fake)}));
  EXPECT_EQ("The device \"123456789012345678\" is longer than 17 bytes.",
            RefusalOf({fake.Named("123456789012345678")}));
}

TEST(CombinedRng, RefusesToNeedNoneOrMoreThanThereAre) {
  FakeSource one("unixdev");
  FakeSource other("dsdr");
  const std::vector<CombinedSource> both = {one.Named(), other.Named()};
  EXPECT_EQ("At least one of the sources must be needed.", RefusalOf([&both] {
              CombinedRng{both, 0};
            }));
  EXPECT_EQ("There are 2 sources, but 3 are needed.", RefusalOf([&both] { CombinedRng{both, 3}; }));
  EXPECT_EQ("none", RefusalOf([&both] { CombinedRng{both, 2}; }));
}

TEST(CombinedRng, CallsNoSourceBeforeADraw) {
  FakeSource fake;
  const CombinedRng combined({fake.Named("device")});
  EXPECT_TRUE(fake.selected.empty());
  EXPECT_TRUE(fake.sizes.empty());
}
