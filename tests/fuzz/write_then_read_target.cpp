// Fields: section, key and value of one write, the same of a second write, content. Without the
// last there is no file at first.

#include "settings/profile_file.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/fuzz/scratch_folder.h"

using profile_model::Text;

namespace {

constexpr std::size_t kSize = 512;

void Write(const ScratchFolder& scratch, profile_model::Folder& folder, const Text& section,
           const Text& key, const Text& value) {
  const auto outcome = profile_model::Write(folder, {section, key, value, kProfileName});
  const std::string path = scratch.Path(kProfileName);
  ExpectEqual(
      "written", outcome.result,
      WriteProfileString(Characters(section), Characters(key), Characters(value), path.c_str()));
  folder = outcome.folder;
}

void ReadBack(const ScratchFolder& scratch, const profile_model::Folder& folder,
              const Text& section, const Text& key) {
  std::string buffer(kSize, '~');
  const auto outcome = profile_model::Read(folder, {section, key, "default", buffer, kProfileName});
  const std::string path = scratch.Path(kProfileName);
  ExpectEqual("length", outcome.result,
              ReadProfileString(Characters(section), Characters(key), "default", buffer.data(),
                                kSize, path.c_str()));
  ExpectEqual("value", outcome.buffer, buffer);
}

}  // namespace

void CheckInput(std::string_view bytes) {
  FuzzInput input(bytes);
  const Text section = input.Section();
  const Text key = input.Key();
  const Text value = input.Argument();
  const Text otherSection = input.Argument();
  const Text otherKey = input.Argument();
  const Text otherValue = input.Argument();
  profile_model::Folder folder = ArrangedFolder(input.HasMore() ? "" : "m", input.Content());

  const ScratchFolder scratch(folder);
  Write(scratch, folder, section, key, value);
  ReadBack(scratch, folder, section, key);
  Write(scratch, folder, otherSection, otherKey, otherValue);
  ReadBack(scratch, folder, section, key);
  ReadBack(scratch, folder, otherSection, otherKey);
  ReadBack(scratch, folder, section, otherKey);
  ReadBack(scratch, folder, otherSection, key);
}
