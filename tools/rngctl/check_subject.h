#ifndef TOOLS_RNGCTL_CHECK_SUBJECT_H
#define TOOLS_RNGCTL_CHECK_SUBJECT_H

#include "elf_facts.h"

#include <string>

/// The plug-in that is checked.
struct CheckSubject {
  std::string path;     ///< absolute
  std::string file;     ///< its last part, by which the catalogue knows it
  std::string factory;  ///< empty when it is unknown
  std::string kind;     ///< the name that the catalogue has for the file, empty when it has none
  bool isCataloguePair = false;
  ElfFacts facts;
};

#endif
