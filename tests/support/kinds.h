#ifndef TESTS_SUPPORT_KINDS_H
#define TESTS_SUPPORT_KINDS_H

#include <stdexcept>
#include <string>
#include <vector>

struct Kind {
  std::string name;
  std::string libraryFile;
  std::string factory;
  std::string variable;
  bool needsDisplay;
};

/// In catalogue order.
inline const std::vector<Kind>& AllKinds() {
  static const std::vector<Kind> kinds = {
#define KIND(name, libraryFile, factory, variable, needsDisplay) \
  {name, libraryFile, factory, #variable, needsDisplay},
#include "tests/support/kinds.def"
#undef KIND
  };
  return kinds;
}

inline std::vector<std::string> KindNames() {
  std::vector<std::string> names;
  for (const Kind& kind : AllKinds()) names.push_back(kind.name);
  return names;
}

inline const Kind& KindOfName(const std::string& name) {
  for (const Kind& kind : AllKinds()) {
    if (kind.name == name) return kind;
  }
  throw std::invalid_argument("no such kind: " + name);
}

#endif
