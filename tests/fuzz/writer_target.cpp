// Fields: section, key, value, letters (those of the folder and the name), content.

#include "settings/profile_file.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/fuzz/scratch_folder.h"

void CheckInput(std::string_view bytes) {
  FuzzInput input(bytes);
  profile_model::WriteCall call;
  call.section = input.Section();
  call.key = input.Key();
  call.value = input.Argument();
  const std::string_view letters = input.Letters();
  call.name = ArrangedName(letters);

  const profile_model::Folder before = ArrangedFolder(letters, input.Content());
  const ScratchFolder scratch(before);
  const profile_model::Text path = call.name ? scratch.Path(*call.name) : call.name;
  const int result = WriteProfileString(Characters(call.section), Characters(call.key),
                                        Characters(call.value), Characters(path));

  const profile_model::WriteOutcome outcome = profile_model::Write(before, call);
  ExpectEqual("result", outcome.result, result);
  scratch.Expect(outcome.folder);
}
