#include "elf_facts.h"

#include "host.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gelf.h>
#include <memory>
#include <unistd.h>

namespace {

[[noreturn]] void Refuse(const std::string& sentence) { throw Refusal(kWrongUsage, sentence); }

class ReadableFile {
 public:
  explicit ReadableFile(const std::string& path)
      : descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (descriptor < 0) Refuse("Cannot read " + Quoted(path) + ": " + std::strerror(errno) + ".");
  }
  ReadableFile(const ReadableFile&) = delete;
  ReadableFile& operator=(const ReadableFile&) = delete;
  ~ReadableFile() { ::close(descriptor); }
  const int descriptor;
};

struct EndElf {
  void operator()(Elf* elf) const { ::elf_end(elf); }
};
using ElfHandle = std::unique_ptr<Elf, EndElf>;

// For these the linker alone answers; they are the same in every library.
bool IsAddedByLinkers(const std::string& name) {
  const char* const names[] = {"_init", "_fini", "__bss_start", "_edata", "_end"};
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

void ReadSymbol(const GElf_Sym& symbol, const std::string& name, ElfFacts& facts) {
  const unsigned binding = GELF_ST_BIND(symbol.st_info);
  if (symbol.st_shndx == SHN_UNDEF) {
    if (name == "__cxa_thread_atexit" || name == "__cxa_thread_atexit_impl") {
      facts.hasThreadDestructors = true;
    }
  } else if (binding == STB_GNU_UNIQUE) {
    facts.uniqueSymbols.push_back(name);
  } else if (binding != STB_LOCAL && symbol.st_shndx != SHN_ABS && !IsAddedByLinkers(name)) {
    facts.exports.push_back(name);  // an absolute one is the name of a version
  }
}

void ReadSymbols(Elf* elf, Elf_Scn* section, const GElf_Shdr& header, ElfFacts& facts) {
  Elf_Data* const data = ::elf_getdata(section, nullptr);
  if (!data || header.sh_entsize == 0) return;
  const auto count = static_cast<int>(header.sh_size / header.sh_entsize);
  for (int i = 0; i < count; ++i) {
    GElf_Sym symbol;
    if (!::gelf_getsym(data, i, &symbol)) return;
    const char* const name = ::elf_strptr(elf, header.sh_link, symbol.st_name);
    if (name && *name) ReadSymbol(symbol, name, facts);
  }
}

void ReadDynamicEntries(Elf_Scn* section, const GElf_Shdr& header, ElfFacts& facts) {
  Elf_Data* const data = ::elf_getdata(section, nullptr);
  if (!data || header.sh_entsize == 0) return;
  const auto count = static_cast<int>(header.sh_size / header.sh_entsize);
  GElf_Dyn entry;
  for (int i = 0; i < count && ::gelf_getdyn(data, i, &entry); ++i) {
    if (entry.d_tag == DT_FLAGS && (entry.d_un.d_val & DF_STATIC_TLS)) facts.hasStaticTls = true;
    if (entry.d_tag != DT_FLAGS_1) continue;
    if (entry.d_un.d_val & DF_1_NODELETE) facts.refusesUnloading = true;
    if (entry.d_un.d_val & DF_1_PIE) facts.isProgram = true;
  }
}

void ReadSections(Elf* elf, ElfFacts& facts) {
  for (Elf_Scn* section = nullptr; (section = ::elf_nextscn(elf, section));) {
    GElf_Shdr header;
    if (!::gelf_getshdr(section, &header)) continue;
    if (header.sh_type == SHT_DYNSYM) ReadSymbols(elf, section, header, facts);
    if (header.sh_type == SHT_DYNAMIC) ReadDynamicEntries(section, header, facts);
  }
}

// Without the header the loader takes the stack of a library for executable.
bool HasExecutableStack(Elf* elf) {
  std::size_t count = 0;
  ::elf_getphdrnum(elf, &count);
  GElf_Phdr header;
  for (int i = 0; i < static_cast<int>(count) && ::gelf_getphdr(elf, i, &header); ++i) {
    if (header.p_type == PT_GNU_STACK) return (header.p_flags & PF_X) != 0;
  }
  return true;
}

}  // namespace

ElfFacts ReadElfFacts(const std::string& path) {
  const ReadableFile file(path);
  if (std::filesystem::is_directory(path)) Refuse(Quoted(path) + " is a directory.");
  ::elf_version(EV_CURRENT);
  const ElfHandle elf(::elf_begin(file.descriptor, ELF_C_READ, nullptr));
  GElf_Ehdr header;
  if (!elf || ::elf_kind(elf.get()) != ELF_K_ELF || !::gelf_getehdr(elf.get(), &header)) {
    Refuse(Quoted(path) + " is not a shared library.");
  }
  if (header.e_type != ET_DYN || header.e_machine != EM_X86_64 ||
      header.e_ident[EI_CLASS] != ELFCLASS64) {
    Refuse(Quoted(path) + " is not a shared library for this machine (x86-64).");
  }
  ElfFacts facts;
  ReadSections(elf.get(), facts);
  if (facts.isProgram) Refuse(Quoted(path) + " is a program, not a shared library.");
  facts.hasExecutableStack = HasExecutableStack(elf.get());
  return facts;
}
