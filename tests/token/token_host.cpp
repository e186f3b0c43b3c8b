#include "tests/token/token_host.h"

#include "tests/support/all_bits.h"
#include "tests/support/tree.h"

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <stdexcept>
#include <vector>

namespace {

constexpr unsigned char kGuard = 0xEE;

std::string Judge(bool isDrawn, const std::vector<unsigned char>& bytes) {
  const auto end = bytes.end() - 1;
  if (bytes.front() != kGuard || *end != kGuard) return "written outside of the buffer";
  const auto size = static_cast<std::size_t>(end - bytes.begin() - 1);
  const auto zeros = static_cast<std::size_t>(std::count(bytes.begin() + 1, end, 0));
  if (!isDrawn) return zeros == size ? "zeros" : "failed, with bytes left in the buffer";
  return zeros <= 8 + size / 16 ? "drawn" : "drawn with too many zeros";
}

std::string TextOf(IRngProvider& rng, std::int32_t (IRngProvider::*operation)(char*)) {
  const std::int32_t size = (rng.*operation)(nullptr);
  if (size <= 0) return "";
  std::vector<char> text(static_cast<std::size_t>(size));
  EXPECT_EQ(size, (rng.*operation)(text.data()));
  return text.data();
}

}  // namespace

TokenHost::TokenHost(const std::string& plugin) {
  std::filesystem::copy_file(plugin, TreePath("lib/librngrutoken.so"));
  library = std::make_unique<AggregatorLibrary>();
}

bool TokenHost::IsAvailable(std::initializer_list<std::string> lines) {
  tokens.Set(lines);
  library->Initialize(nullptr);
  rng = library->GetRng("Rutoken");
  EXPECT_EQ(rng ? 1 : 0, library->GetAvailableRng(nullptr, kAllBits));
  return rng;
}

void TokenHost::Start(std::initializer_list<std::string> lines) {
  if (!IsAvailable(lines)) throw std::runtime_error("the plug-in is not available");
}

void TokenHost::Stop() {
  library->ShutDown();
  rng = nullptr;
}

std::string TokenHost::Draw(std::size_t size) const {
  std::vector<unsigned char> bytes(size + 2, kGuard);
  const bool isDrawn = rng->Generate(bytes.data() + 1, size);
  return Judge(isDrawn, bytes);
}

std::string TokenHost::HardwareId() const { return TextOf(*rng, &IRngProvider::GetHardwareId); }

std::string TokenHost::Description() const { return TextOf(*rng, &IRngProvider::GetDescription); }

std::string TokenHost::Report() const {
  void* const plugin = ::dlopen(TreePath("lib/librngrutoken.so").c_str(), RTLD_LAZY | RTLD_NOLOAD);
  const auto report =
      plugin ? reinterpret_cast<std::int32_t (*)(char*)>(::dlsym(plugin, "GetRngReport")) : nullptr;
  if (!report) return "none";
  const std::int32_t size = report(nullptr);
  std::vector<char> text(static_cast<std::size_t>(size) + 1);
  EXPECT_EQ(size, report(text.data()));
  ::dlclose(plugin);
  return text.data();
}

std::string Fault(unsigned long number, const std::string& function, unsigned long call,
                  unsigned long result) {
  return "fault number=" + std::to_string(number) + " function=" + function +
         " call=" + std::to_string(call) + " result=" + std::to_string(result);
}
