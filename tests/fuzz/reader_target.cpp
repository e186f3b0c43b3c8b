// Fields: section, key, default, size of the buffer, letters (those of the folder and the name, and
// "b" for a null buffer), content.

#include "settings/profile_file.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/fuzz/scratch_folder.h"

namespace {

constexpr std::uint32_t kSizes = 601;
constexpr std::size_t kCanary = 64;

// No two neighbours are equal and none is zero, so that a byte written or moved is seen.
std::string Pattern(std::size_t size) {
  std::string pattern(size, '\0');
  for (std::size_t i = 0; i < size; ++i) pattern[i] = static_cast<char>(0x80 + i % 97);
  return pattern;
}

}  // namespace

void CheckInput(std::string_view bytes) {
  FuzzInput input(bytes);
  profile_model::ReadCall call;
  call.section = input.Section();
  call.key = input.Key();
  call.defaultValue = input.Argument();
  const std::uint32_t size = input.Number(kSizes);
  const std::string_view letters = input.Letters();
  call.name = ArrangedName(letters);
  const bool hasBuffer = letters.find('b') == letters.npos;

  std::string memory = Pattern(kCanary + size + kCanary);
  std::string expected = memory;
  if (hasBuffer) call.buffer = memory.substr(kCanary, size);

  const profile_model::Folder folder = ArrangedFolder(letters, input.Content());
  const ScratchFolder scratch(folder);
  const profile_model::Text path = call.name ? scratch.Path(*call.name) : call.name;
  const std::uint32_t result = ReadProfileString(
      Characters(call.section), Characters(call.key), Characters(call.defaultValue),
      hasBuffer ? memory.data() + kCanary : nullptr, size, Characters(path));

  const profile_model::ReadOutcome outcome = profile_model::Read(folder, call);
  if (hasBuffer) expected.replace(kCanary, size, outcome.buffer);
  ExpectEqual("result", outcome.result, result);
  ExpectEqual("buffer", expected, memory);
  scratch.Expect(folder);
}
