#include "tools/rngctl/loader/undeclared.h"

#include "tools/rngctl/loader/elf_facts.h"
#include "tools/rngctl/loader/link_map.h"

std::string FindUndeclared(void* library) {
  for (const std::string& name : ReadElfFacts(MapOf(library)->l_name).needs) {
    const bool isDeclared = ::dlsym(library, name.c_str()) != nullptr;
    if (!isDeclared && ::dlsym(RTLD_DEFAULT, name.c_str())) return name;
  }
  return "";
}
