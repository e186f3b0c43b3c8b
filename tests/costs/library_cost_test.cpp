// What the library's file costs whoever loads it.

#include "tests/costs/limits.h"
#include "tests/support/process.h"
#include "tests/support/tree.h"

#include <bit>
#include <elf.h>
#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <span>

namespace {

using SectionVisitor = std::function<void(const Elf64_Shdr&, const char* bytes)>;

void VisitSections(const std::string& file, const SectionVisitor& visit) {
  const auto* const header = reinterpret_cast<const Elf64_Ehdr*>(file.data());
  const auto* const sections = reinterpret_cast<const Elf64_Shdr*>(file.data() + header->e_shoff);
  for (const Elf64_Shdr& section : std::span(sections, header->e_shnum)) {
    visit(section, file.data() + section.sh_offset);
  }
}

// An even word is an address to relocate; an odd one marks some of the 63 words behind the last.
long CountPacked(std::span<const Elf64_Relr> words) {
  long count = 0;
  for (const Elf64_Relr word : words) count += word & 1 ? std::popcount(word >> 1) : 1;
  return count;
}

long CountRelocations(const std::string& file) {
  long count = 0;
  VisitSections(file, [&](const Elf64_Shdr& section, const char* bytes) {
    if (section.sh_type == SHT_RELA)
      count += static_cast<long>(section.sh_size / sizeof(Elf64_Rela));
    if (section.sh_type == SHT_RELR) {
      count += CountPacked(
          {reinterpret_cast<const Elf64_Relr*>(bytes), section.sh_size / sizeof(Elf64_Relr)});
    }
  });
  return count;
}

long CountNeeded(const std::string& file) {
  long count = 0;
  VisitSections(file, [&](const Elf64_Shdr& section, const char* bytes) {
    if (section.sh_type != SHT_DYNAMIC) return;
    const std::span entries(reinterpret_cast<const Elf64_Dyn*>(bytes),
                            section.sh_size / sizeof(Elf64_Dyn));
    for (const Elf64_Dyn& entry : entries) count += entry.d_tag == DT_NEEDED;
  });
  return count;
}

// The file as it is installed for use: debug information is loaded by nobody.
std::string StrippedLibrary() {
  const std::string stripped = TreePath("stripped.so");
  const std::string command = STRIP " -o " + stripped + " " + TreePath("lib/librngaggregator.so");
  EXPECT_EQ(0, RunShell(command).status);
  return ReadFile(stripped);
}

// The pages of the writable segments: a process has those to itself once it has written to them, and
// relocation writes to nearly all.
long WritableKiB(const std::string& file) {
  constexpr Elf64_Addr kPage = 4096;
  const auto* const header = reinterpret_cast<const Elf64_Ehdr*>(file.data());
  const auto* const segments = reinterpret_cast<const Elf64_Phdr*>(file.data() + header->e_phoff);
  Elf64_Addr pages = 0;
  for (const Elf64_Phdr& segment : std::span(segments, header->e_phnum)) {
    if (segment.p_type != PT_LOAD || !(segment.p_flags & PF_W)) continue;
    const Elf64_Addr end = segment.p_vaddr + segment.p_memsz;
    pages += (end + kPage - 1) / kPage - segment.p_vaddr / kPage;
  }
  return static_cast<long>(pages * kPage / 1024);
}

}  // namespace

TEST(LibraryFile, IsSmall) {
  const std::string file = StrippedLibrary();
  std::cout << file.size() << " bytes\n";
  ASSERT_FALSE(file.empty());
  EXPECT_GE(kStrippedBytes, static_cast<long>(file.size()));
}

TEST(LibraryFile, HasFewRelocations) {
  const long relocations = CountRelocations(StrippedLibrary());
  std::cout << relocations << " relocations\n";
  EXPECT_LT(0, relocations);
  EXPECT_GE(kRelocations, relocations);
}

TEST(LibraryFile, NeedsFewLibraries) {
  const long needed = CountNeeded(StrippedLibrary());
  EXPECT_LT(0, needed);
  EXPECT_GE(kNeededLibraries, needed);
}

TEST(LibraryFile, HasFewPrivatePages) {
  const long size = WritableKiB(StrippedLibrary());
  std::cout << size << " KiB\n";
  EXPECT_LT(0, size);
  EXPECT_GE(kPrivateKiB, size);
}
