#include "tools/rngctl/loader/elf_facts.h"

#include "tools/rngctl/loader/elf_segments.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
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

// The linker adds these to every library.
bool IsAddedByLinkers(const std::string& name) {
  const char* const names[] = {"_init", "_fini", "__bss_start", "_edata", "_end"};
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

// The loader ignores others.
bool IsVisible(const GElf_Sym& symbol) {
  const unsigned visibility = GELF_ST_VISIBILITY(symbol.st_other);
  return visibility == STV_DEFAULT || visibility == STV_PROTECTED;
}

void ReadSymbol(const GElf_Sym& symbol, const std::string& name, ElfFacts& facts) {
  const unsigned binding = GELF_ST_BIND(symbol.st_info);
  if (symbol.st_shndx == SHN_UNDEF) {
    if (name == "__cxa_thread_atexit" || name == "__cxa_thread_atexit_impl") {
      facts.hasThreadDestructors = true;
    }
    if (binding == STB_GLOBAL) facts.needs.push_back(name);
  } else if (binding == STB_GNU_UNIQUE) {
    facts.uniqueSymbols.push_back(name);
  } else if (binding != STB_LOCAL && IsVisible(symbol) && symbol.st_shndx != SHN_ABS &&
             !IsAddedByLinkers(name)) {
    facts.exports.push_back(name);  // absolute symbols are the names of versions
  }
}

ElfFacts ReadSegments(const ElfSegments& segments) {
  ElfFacts facts;
  for (const auto& [symbol, name] : segments.DynamicSymbols()) {
    if (!name.empty()) ReadSymbol(symbol, name, facts);
  }
  facts.hasStaticTls = (segments.Dynamic(DT_FLAGS) & DF_STATIC_TLS) != 0;
  facts.refusesOpening = (segments.Dynamic(DT_FLAGS_1) & DF_1_NOOPEN) != 0;
  facts.refusesUnloading = (segments.Dynamic(DT_FLAGS_1) & DF_1_NODELETE) != 0;
  facts.isProgram = (segments.Dynamic(DT_FLAGS_1) & DF_1_PIE) != 0;
  facts.hasExecutableStack = segments.HasExecutableStack();
  return facts;
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
  const ElfSegments segments(elf.get());
  if (!segments.HasDynamicTable()) Refuse(Quoted(path) + " is not a shared library.");
  ElfFacts facts = ReadSegments(segments);
  if (facts.isProgram) Refuse(Quoted(path) + " is a program, not a shared library.");
  return facts;
}

bool Exports(const std::string& path, const std::string& symbol) {
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(path, unknown)) return false;
  try {
    const std::vector<std::string> exports = ReadElfFacts(path).exports;
    return std::find(exports.begin(), exports.end(), symbol) != exports.end();
  } catch (const Refusal&) {
    return false;
  }
}
