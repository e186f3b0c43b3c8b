#ifndef TOOLS_RNGCTL_LOADER_ELF_SEGMENTS_H
#define TOOLS_RNGCTL_LOADER_ELF_SEGMENTS_H

#include <gelf.h>
#include <map>
#include <string>
#include <vector>

/// A library as the loader sees its file: by the segments. Sections are for linkers, and may be
/// stripped.
class ElfSegments {
 public:
  /// `file` must outlive this.
  explicit ElfSegments(Elf* file);

  /// Whether it can be linked at run time at all.
  bool HasDynamicTable() const { return !table.empty(); }
  /// An entry of that table, 0 without one: "DT_FLAGS".
  GElf_Xword Dynamic(GElf_Sxword tag) const;

  struct Symbol {
    GElf_Sym entry;
    std::string name;
  };
  /// Those that other libraries give to it or take from it, as far as the loader can find them.
  std::vector<Symbol> DynamicSymbols() const;

  /// Without the header that says so the loader takes the stack of a library for executable.
  bool HasExecutableStack() const;

 private:
  const GElf_Phdr* Find(GElf_Word type) const;
  Elf_Data* Read(GElf_Addr address, std::size_t size, Elf_Type type) const;
  std::vector<std::uint32_t> ReadWords(GElf_Addr address, std::size_t count) const;
  std::size_t CountSymbols() const;
  std::size_t CountByGnuHash() const;

  Elf* const elf;
  std::vector<GElf_Phdr> headers;
  std::map<GElf_Sxword, GElf_Xword> table;
};

#endif
