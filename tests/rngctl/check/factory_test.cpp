#include "tests/rngctl/check/check.h"
#include "tests/support/tree.h"

#include <elf.h>
#include <filesystem>
#include <gmock/gmock.h>

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

// Linkers leave hidden symbols out of that table; a tool that rewrites files may not.
void HideDynamicSymbol(const std::string& file, const std::string& name) {
  std::string bytes = ReadFile(file);
  const auto* const header = reinterpret_cast<const Elf64_Ehdr*>(bytes.data());
  const auto* const sections = reinterpret_cast<const Elf64_Shdr*>(bytes.data() + header->e_shoff);
  for (int i = 0; i < header->e_shnum; ++i) {
    if (sections[i].sh_type != SHT_DYNSYM) continue;
    const char* const names = bytes.data() + sections[sections[i].sh_link].sh_offset;
    auto* const symbols = reinterpret_cast<Elf64_Sym*>(bytes.data() + sections[i].sh_offset);
    for (std::size_t n = 0; n < sections[i].sh_size / sizeof(Elf64_Sym); ++n) {
      if (names + symbols[n].st_name == name) symbols[n].st_other = STV_HIDDEN;
    }
  }
  WriteFile(file, bytes);
}

// The new name is not longer.
void RenameDynamicSymbol(const std::string& file, const std::string& name, std::string newName) {
  std::string bytes = ReadFile(file);
  newName.resize(name.size(), '\0');
  bytes.replace(bytes.find('\0' + name + '\0') + 1, name.size(), newName);
  WriteFile(file, bytes);
}

}  // namespace

TEST(Check, AHiddenFactoryIsNotExported) {
  const std::string file = TreePath("librngdsdr.so");
  fs::copy_file(Breaking("correct"), file);
  HideDynamicSymbol(file, "GetDsdrRng");
  const json report = Report(file);
  EXPECT_EQ("one-export", Failed(report));
  EXPECT_EQ("It does not export GetDsdrRng; it exports nothing.", Found(report, "one-export"));
}

TEST(Check, AFileThatTheCatalogueDoesNotKnowNeedsAFactory) {
  const std::string file = TreePath("mine.so");
  fs::copy_file(Breaking("correct"), file);
  const json report = Report(file);
  EXPECT_EQ("catalogue-pair", Failed(report));
  EXPECT_EQ("error", Find(report, "catalogue-pair").at("severity"));
  EXPECT_EQ(1, Check(file).status);
  EXPECT_EQ("Rename the file to librngdsdr.so, which belongs to GetDsdrRng.",
            Find(report, "catalogue-pair").at("fix"));
  EXPECT_TRUE(report.at("factory").is_null());
  EXPECT_EQ("the factory is unknown; name it with --factory", Reason(report, "name"));

  const Result named = Check("--json --factory GetDsdrRng " + file);
  EXPECT_EQ(0, named.status);
  EXPECT_EQ("catalogue-pair", Failed(json::parse(named.output)));
  EXPECT_EQ("warning", Find(json::parse(named.output), "catalogue-pair").at("severity"));
  EXPECT_EQ("the file name is not in the catalogue",
            Reason(json::parse(named.output), "name-in-catalogue"));
}

TEST(Check, AFactoryOfAnotherKindIsNoPair) {
  const std::string file = TreePath("librngsobol.so");
  fs::copy_file(Breaking("correct"), file);
  const json named = Report("--factory GetDsdrRng " + file);
  EXPECT_EQ("catalogue-pair name-in-catalogue", Failed(named));
  EXPECT_EQ("Use the file name and the factory name of the kind; provider.h has the table.",
            Find(named, "catalogue-pair").at("fix"));
  const json report = Report(file);
  EXPECT_EQ("one-export", Failed(report));
  EXPECT_EQ("It does not export GetSobolRng; it exports GetDsdrRng.", Found(report, "one-export"));
  EXPECT_THAT(Find(report, "one-export").at("fix"),
              AllOf(StartsWith("Define it as extern \"C\" with default visibility and this exact"),
                    EndsWith("Or rename the file to librngdsdr.so, which belongs to GetDsdrRng.")));
  EXPECT_EQ("it does not export GetSobolRng", Reason(report, "catalogue-pair"));
  EXPECT_EQ("there is no factory GetSobolRng", Reason(report, "name"));
  EXPECT_THAT(Reason(report, "no-output"),
              StartsWith("these were not called, or did not return: the factory, SetSettings, "));
}

TEST(Check, AFunctionInCppIsAnExport) {
  const json report = Report("--only one-export " + FakePlugin("dsdr", "shared_operation"));
  EXPECT_EQ("It exports 1 symbol besides the factory: _ZN9SharedRng7GetNameEPc.",
            Found(report, "one-export"));
}

TEST(Check, ManyExportsAreListedInPart) {
  const json report = Report("--only one-export --factory sin /lib/x86_64-linux-gnu/libm.so.6");
  EXPECT_THAT(
      Found(report, "one-export"),
      MatchesRegex("It exports [0-9]+ symbols besides the factory: ([a-z0-9_]+, ){5}[.]{4}"));
}

// Other linkers than ours export these.
TEST(Check, WhatLinkersAddIsNoExport) {
  const std::string file = TreePath("librngdsdr.so");
  for (const auto& [symbol, found] :
       {std::pair<std::string, std::string>("_init", ""),
        {"_fini", ""},
        {"__bss_start", ""},
        {"_edata", ""},
        {"_end", ""},
        {"_start", "It exports 1 symbol besides the factory: _start."}}) {
    fs::copy_file(Breaking("exports_more"), file, fs::copy_options::overwrite_existing);
    RenameDynamicSymbol(file, "AnotherFunction", symbol);
    EXPECT_EQ(found, Found(Report("--only one-export " + file), "one-export")) << symbol;
  }
}

TEST(Check, AFactoryInCppIsSeenByItsMangledName) {
  const json report = Report(Breaking("factory_is_mangled"));
  EXPECT_EQ("It does not export GetDsdrRng; it exports _Z10GetDsdrRngi.",
            Found(report, "one-export"));
  EXPECT_THAT(Find(report, "one-export").at("fix"),
              EndsWith("make sure that no version script hides it."));
}

TEST(Check, ALibraryBesideThePluginNeedsARunPath) {
  const json report = Report(FakePlugin("biokbd", "missing_dependency"));
  EXPECT_EQ("opens", Failed(report));
  EXPECT_THAT(Found(report, "opens"), HasSubstr("libabsent_device.so: cannot open"));
  EXPECT_THAT(Find(report, "opens").at("fix"),
              AllOf(StartsWith("Install libabsent_device.so where"), HasSubstr("'$ORIGIN'")));
}

// The file header says where the section headers are and how many; zeros there mean that there are
// none.
TEST(Check, AFileNeedsNoSections) {
  for (const auto& [variant, failed] :
       {std::pair("correct", ""), std::pair("exports_more", "one-export"),
        std::pair("has_static_tls", "no-static-tls"), std::pair("stays_mapped", "unmapped")}) {
    const std::string file = TreePath("librngdsdr.so");
    fs::copy_file(Breaking(variant), file, fs::copy_options::overwrite_existing);
    const std::string zeros = "dd status=none conv=notrunc if=/dev/zero bs=1 of=" + file;
    ASSERT_EQ(0, RunShell(zeros + " seek=40 count=8; " + zeros + " seek=60 count=4").status);
    EXPECT_EQ(failed, Failed(Report(file))) << variant;
  }
}
