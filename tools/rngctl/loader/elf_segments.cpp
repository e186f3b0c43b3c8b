#include "tools/rngctl/loader/elf_segments.h"

#include <algorithm>

ElfSegments::ElfSegments(Elf* file) : elf(file) {
  std::size_t count = 0;
  ::elf_getphdrnum(elf, &count);
  GElf_Phdr header;
  for (int i = 0; i < static_cast<int>(count) && ::gelf_getphdr(elf, i, &header); ++i) {
    headers.push_back(header);
  }
  const GElf_Phdr* const dynamic = Find(PT_DYNAMIC);
  Elf_Data* const data = dynamic ? Read(dynamic->p_vaddr, dynamic->p_filesz, ELF_T_DYN) : nullptr;
  GElf_Dyn entry;
  for (int i = 0; data && ::gelf_getdyn(data, i, &entry) && entry.d_tag != DT_NULL; ++i) {
    table[entry.d_tag] = entry.d_un.d_val;
  }
}

const GElf_Phdr* ElfSegments::Find(GElf_Word type) const {
  const auto isOfType = [type](const GElf_Phdr& header) { return header.p_type == type; };
  const auto header = std::find_if(headers.begin(), headers.end(), isOfType);
  return header == headers.end() ? nullptr : &*header;
}

// The bytes of the file for an address; null when the file does not have them all.
Elf_Data* ElfSegments::Read(GElf_Addr address, std::size_t size, Elf_Type type) const {
  for (const GElf_Phdr& header : headers) {
    const GElf_Addr place = address - header.p_vaddr;
    if (header.p_type != PT_LOAD || address < header.p_vaddr || place > header.p_filesz) continue;
    if (size > header.p_filesz - place) return nullptr;
    return ::elf_getdata_rawchunk(elf, static_cast<std::int64_t>(header.p_offset + place), size,
                                  type);
  }
  return nullptr;
}

std::vector<std::uint32_t> ElfSegments::ReadWords(GElf_Addr address, std::size_t count) const {
  const Elf_Data* const data = Read(address, count * sizeof(std::uint32_t), ELF_T_WORD);
  if (!data) return {};
  const auto* const words = static_cast<const std::uint32_t*>(data->d_buf);
  return {words, words + count};
}

GElf_Xword ElfSegments::Dynamic(GElf_Sxword tag) const {
  const auto entry = table.find(tag);
  return entry == table.end() ? 0 : entry->second;
}

// Only the hash tables tell how many symbols there are.
std::size_t ElfSegments::CountSymbols() const {
  if (!table.contains(DT_HASH)) return table.contains(DT_GNU_HASH) ? CountByGnuHash() : 0;
  const std::vector<std::uint32_t> sizes = ReadWords(Dynamic(DT_HASH), 2);
  return sizes.empty() ? 0 : sizes[1];
}

// The buckets hold the first symbol of each chain. The last symbol is at the end of the last chain.
std::size_t ElfSegments::CountByGnuHash() const {
  constexpr std::size_t kWord = sizeof(std::uint32_t);
  const GElf_Addr start = Dynamic(DT_GNU_HASH);
  const std::vector<std::uint32_t> head = ReadWords(start, 4);
  if (head.empty()) return 0;
  const std::size_t bucketCount = head[0];
  const std::size_t firstHashed = head[1];
  const GElf_Addr buckets = start + 4 * kWord + head[2] * sizeof(std::uint64_t);
  std::size_t last = 0;
  for (const std::uint32_t begin : ReadWords(buckets, bucketCount)) {
    last = std::max<std::size_t>(last, begin);
  }
  if (last < firstHashed) return firstHashed;
  const GElf_Addr chains = buckets + bucketCount * kWord;
  for (;; ++last) {
    const std::vector<std::uint32_t> link = ReadWords(chains + (last - firstHashed) * kWord, 1);
    if (link.empty() || (link[0] & 1) != 0) return last + 1;
  }
}

std::vector<ElfSegments::Symbol> ElfSegments::DynamicSymbols() const {
  const std::size_t count = CountSymbols();
  const Elf_Data* const texts = Read(Dynamic(DT_STRTAB), Dynamic(DT_STRSZ), ELF_T_BYTE);
  Elf_Data* const data = Read(Dynamic(DT_SYMTAB), count * sizeof(Elf64_Sym), ELF_T_SYM);
  std::vector<Symbol> symbols;
  if (!texts || !data) return symbols;
  const std::string names(static_cast<const char*>(texts->d_buf), texts->d_size);
  GElf_Sym entry;
  for (int i = 0; i < static_cast<int>(count) && ::gelf_getsym(data, i, &entry); ++i) {
    if (entry.st_name < names.size()) symbols.push_back({entry, names.c_str() + entry.st_name});
  }
  return symbols;
}

bool ElfSegments::HasExecutableStack() const {
  const GElf_Phdr* const stack = Find(PT_GNU_STACK);
  return !stack || (stack->p_flags & PF_X) != 0;
}
