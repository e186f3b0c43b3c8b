#ifndef TOOLS_RNGCTL_LOADER_ELF_SEGMENTS_H
#define TOOLS_RNGCTL_LOADER_ELF_SEGMENTS_H

#include <gelf.h>
#include <map>
#include <string>
#include <vector>

/// The file of a library as the loader reads it, by segments. Sections are for linkers and may be
/// missing.
class ElfSegments {
 public:
  /// `file` must outlive this.
  explicit ElfSegments(Elf* file);

  /// Whether it can be linked at run time.
  bool HasDynamicTable() const { return !table.empty(); }
  /// An entry of that table, 0 without one: "DT_FLAGS".
  GElf_Xword Dynamic(GElf_Sxword tag) const;

  struct Symbol {
    GElf_Sym entry;
    std::string name;
  };
  /// The symbols that it exports or needs, as far as the loader can find them.
  std::vector<Symbol> DynamicSymbols() const;

  /// True also without the header that says so: the loader then assumes that the library needs one.
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
