#include "borrowed.h"

#include "elf_facts.h"
#include "library_handle.h"

std::string FindBorrowed(void* library) {
  for (const std::string& name : ReadElfFacts(MapOf(library)->l_name).needs) {
    const bool isOwn = ::dlsym(library, name.c_str()) != nullptr;
    if (!isOwn && ::dlsym(RTLD_DEFAULT, name.c_str())) return name;
  }
  return "";
}
