#ifndef TOOLS_RNGCTL_CHECK_SUBJECT_H
#define TOOLS_RNGCTL_CHECK_SUBJECT_H

#include "tools/rngctl/check/plugin/plugin_file.h"
#include "tools/rngctl/loader/elf_facts.h"

/// What is known about the plug-in before it is opened.
struct CheckSubject {
  PluginFile plugin;
  std::string fileName;          ///< without directories, as in the catalogue
  bool isFactoryGiven = false;   ///< on the command line
  bool isCataloguePair = false;  ///< file name and factory belong to one kind
  ElfFacts facts;
};

#endif
