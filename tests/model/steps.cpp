#include "tests/model/steps.h"

#include "tests/support/kinds.h"

#include <cctype>
#include <cstdio>
#include <map>
#include <random>
#include <sstream>
#include <stdexcept>

namespace {

struct Shape {
  std::size_t words;
  bool isCall;
};

const std::map<std::string, Shape> kShapes = {
    {"plug", {3, false}},        {"null", {3, false}},       {"available", {3, false}},
    {"flags", {3, false}},       {"name", {5, false}},       {"throw", {4, false}},
    {"host", {4, false}},        {"refuse", {4, false}},     {"x11", {2, false}},
    {"service", {2, false}},     {"data", {2, false}},       {"file", {2, false}},
    {"variable", {3, false}},    {"initialize", {2, true}},  {"shutdown", {1, true}},
    {"initialized", {1, true}},  {"count", {2, true}},       {"list", {2, true}},
    {"rng", {2, true}},          {"interactive", {2, true}}, {"default", {2, true}},
    {"default_null", {2, true}}, {"set", {3, true}},         {"builtin", {1, true}},
    {"reload", {1, true}},       {"get_type", {1, true}},    {"set_type", {2, true}},
    {"get_id", {1, true}},       {"set_id", {2, true}},      {"dsdr_path", {1, true}}};

using Words = std::vector<std::string>;

const Words kKinds = KindNames();

// Most texts are names that mean something; the others are of critical lengths or odd in a file.
const Words kNames = {"bio",
                      "bioqt",
                      "unixx11",
                      "biokbd",
                      "dsdr",
                      "sobol",
                      "renamed",
                      "dsdr",
                      "unixdev",
                      "",
                      "Dsdr",
                      "bioq",
                      std::string(17, 's'),
                      std::string(18, 'e')};
const Words kValues = {"dsdr",
                       "unixdev",
                       "",
                       std::string(17, 's'),
                       std::string(18, 'e'),
                       " blank ",
                       "a=b",
                       "x\ny",
                       "cr\rcr",
                       "[Devices]",
                       "\n",
                       "no kind",
                       "0123456789",
                       std::string(100, 'v')};
const Words kFiles = {
    "",
    "[Devices]\n",
    "[Devices]\nRandomNumberGeneratorType=sobol\nRandomNumberGeneratorHardwareID=X1\n",
    "[devices] of this machine\r\nrandomnumbergeneratortype = accord \r\n",
    "[Other]\nA=1\n\n[Devices]\nB=2\n\n[Later]\nRandomNumberGeneratorType=late\nC=3\n",
    "[Devices]\nB=2\n[Later]\nC=3\n",
    "[Devices]\r\nRandomNumberGeneratorTypeOld=long\r\n\r\n[Later]\r\nC=3\r\nlost",
    "[Devices]\nRandomNumberGeneratorType\nRandomNumberGeneratorHardwareID=\t\n",
    "[Devices]\nRandomNumberGeneratorHardwareID=eighteen characters",
};
const Words kMasks = {"0", "1", "2", "4", "8", "3", "c", "e", "f", "10", "80000000", "ffffffff"};
const Words kVariables = {"rngBioWin", "rngBioQt", "rngBioX11", "rngBioKb", "rngDsdr"};
const Words kSettings = {"A", "B", "builtin", "null"};
const Words kHosts = {"A", "B"};
const Words kX11 = {"whole", "whole", "refusing", "no_open", "no_close", "absent"};

class Dice {
 public:
  Dice(std::uint64_t seed, std::uint64_t number) : engine(seed * 0x9E3779B97F4A7C15 + number) {}

  std::size_t Below(std::size_t end) { return static_cast<std::size_t>(engine() % end); }
  bool Chance(std::size_t percent) { return Below(100) < percent; }
  const std::string& One(const Words& words) { return words[Below(words.size())]; }
  std::string Kind() { return One(kKinds); }
  std::string Flag(std::size_t percent) { return Chance(percent) ? "1" : "0"; }
  // Two of the names turn up more often than the others, so that they meet.
  std::string Name() { return EncodeText((Chance(60) ? One(favourites) : One(kNames)).c_str()); }
  std::string Text(const Words& words) { return EncodeText(One(words).c_str()); }
  std::string TextOrNull(const Words& words) { return Chance(20) ? "null" : Text(words); }

 private:
  std::mt19937_64 engine;
  Words favourites{One(kNames), One(kNames)};
};

Step RandomFault(Dice& dice, const std::string& kind) {
  switch (dice.Below(6)) {
    case 0:
      return {"null", kind, dice.Flag(60)};
    case 1:
      return {"available", kind, dice.Flag(40)};
    case 2:
      return {"flags", kind, dice.One(kMasks)};
    case 3:
      return {"name", kind, dice.Name(), dice.One({"same", "same", "0", "200", "-1"}),
              dice.One({"same", "same", "same", "5", "0"})};
    case 4:
      return {"throw", kind,
              dice.One({"factory", "SetSettings", "IsAvailable", "Release", "Release", "GetFlags",
                        "GetName", "GetName2"}),
              dice.Flag(50)};
    default:
      if (kind == "dsdr" && dice.Chance(30)) return {"plug", kind, "no_factory"};
      return {"plug", kind, dice.One({"scripted", "scripted", "missing", "garbage"})};
  }
}

Step RandomSurroundings(Dice& dice) {
  switch (dice.Below(9)) {
    case 0:
      return {"x11", dice.One(kX11)};
    case 1:
      return {"service", dice.One({"here", "here", "deep", "blocked", "none"})};
    case 2:
      return {"data", dice.One({"here", "none"})};
    case 3:
      return {"file", dice.TextOrNull(kFiles)};
    case 4:
    case 5:
      return {"variable", dice.One(kVariables), dice.Name()};
    case 6:
      return {"host", dice.One(kHosts), dice.One({"type", "id"}), dice.TextOrNull(kValues)};
    case 7:
      return {"refuse", dice.One(kHosts), dice.One({"type", "id"}), dice.Flag(50)};
    default:
      return {"throw", dice.One(kHosts),
              dice.One({"GetType", "SetType", "GetHardwareId", "SetHardwareId"}), dice.Flag(40)};
  }
}

Step RandomCall(Dice& dice) {
  switch (dice.Below(24)) {
    case 0:
    case 1:
    case 2:
    case 3:
      return {"initialize", dice.One(kSettings)};
    case 4:
    case 5:
    case 6:
      return {"shutdown"};
    case 7:
      return {"initialized"};
    case 8:
    case 9:
      return {"count", dice.One(kMasks)};
    case 10:
    case 11:
      return {"list", dice.One(kMasks)};
    case 12:
    case 13:
      return {"rng", dice.Chance(50) ? EncodeText(dice.Kind().c_str()) : dice.Name()};
    case 14:
      return {"interactive", dice.Name()};
    case 15:
    case 16:
    case 17:
      return {"default", dice.One(kMasks)};
    case 18:
      return {"default_null", dice.One(kMasks)};
    case 19:
    case 20:
      return {"set", dice.TextOrNull(kValues), dice.TextOrNull(kValues)};
    case 21:
      return dice.Chance(50) ? Step{"builtin"} : Step{"dsdr_path"};
    case 22:
      switch (dice.Below(4)) {
        case 0:
          return {"get_type"};
        case 1:
          return {"set_type", dice.TextOrNull(kValues)};
        case 2:
          return {"get_id"};
        default:
          return {"set_id", dice.TextOrNull(kValues)};
      }
    default:
      return dice.Chance(50) ? Step{"reload"} : Step{"shutdown"};
  }
}

bool IsPlain(unsigned char c) { return std::isalnum(c) || c == '_' || c == '[' || c == ']'; }

}  // namespace

bool IsCall(const Step& step) { return kShapes.at(step.front()).isCall; }

std::string ToText(const Steps& steps) {
  std::string text;
  for (const Step& step : steps) {
    if (!text.empty()) text += "; ";
    for (const std::string& word : step) text += (&word == &step.front() ? "" : " ") + word;
  }
  return text;
}

Steps ParseSteps(const std::string& text) {
  Steps steps;
  std::istringstream parts(text);
  for (std::string part; std::getline(parts, part, ';');) {
    Step step;
    std::istringstream words(part);
    for (std::string word; words >> word;) step.push_back(word);
    if (step.empty()) continue;
    const auto shape = kShapes.find(step.front());
    if (shape == kShapes.end() || shape->second.words != step.size()) {
      throw std::invalid_argument("no such step: " + part);
    }
    steps.push_back(step);
  }
  return steps;
}

Steps RandomSteps(std::uint64_t seed, std::uint64_t number) {
  Dice dice(seed, number);
  Steps steps;
  const std::size_t chance = 10 + dice.Below(80);
  Words installed;
  const std::size_t faulty = dice.Below(40);
  steps.push_back({"x11", dice.One(kX11)});
  for (const std::string& kind : kKinds) {
    if (!dice.Chance(chance)) continue;
    installed.push_back(kind);
    steps.push_back({"plug", kind, "scripted"});
    while (dice.Chance(faulty)) steps.push_back(RandomFault(dice, kind));
  }
  // Most of the changes meet one plug-in, so that one leads to the next.
  const std::string victim = installed.empty() ? dice.Kind() : dice.One(installed);
  for (std::size_t left = 5 + dice.Below(40); left > 0; --left) {
    if (dice.Chance(25)) {
      steps.push_back(RandomFault(dice, dice.Chance(60) ? victim : dice.Kind()));
    }
    if (dice.Chance(20)) steps.push_back(RandomSurroundings(dice));
    steps.push_back(RandomCall(dice));
  }
  return steps;
}

std::string EncodeText(const char* text) {
  if (!text) return "null";
  std::string word = ":";
  for (; *text; ++text) {
    const auto c = static_cast<unsigned char>(*text);
    char code[4] = {*text};
    if (!IsPlain(c)) std::snprintf(code, sizeof code, "%%%02x", static_cast<unsigned>(c));
    word += code;
  }
  return word;
}

std::string EncodeText(const std::optional<std::string>& text) {
  return EncodeText(text ? text->c_str() : nullptr);
}

std::optional<std::string> DecodeText(const std::string& word) {
  if (word == "null") return std::nullopt;
  std::string text;
  for (std::size_t i = 1; i < word.size(); ++i) {
    if (word[i] != '%') {
      text += word[i];
      continue;
    }
    text += static_cast<char>(std::stoi(word.substr(i + 1, 2), nullptr, 16));
    i += 2;
  }
  return text;
}

std::uint32_t DecodeMask(const std::string& word) {
  return static_cast<std::uint32_t>(std::stoul(word, nullptr, 16));
}
