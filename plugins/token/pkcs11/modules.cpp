#include "modules.h"

#include "text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

struct Freed {
  void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Freed>;

std::string OrEmpty(const Text& text) { return text ? text.get() : ""; }

// Also unmaps the module if no other code has loaded it. p11_kit_module_release would leave it mapped.
void Release(CK_FUNCTION_LIST* module) {
  auto** const list = static_cast<CK_FUNCTION_LIST**>(std::calloc(2, sizeof(void*)));
  if (!list) return p11_kit_module_release(module);
  list[0] = module;
  p11_kit_modules_release(list);  // frees the list, too
  // NOLINTNEXTLINE(clang-analyzer-unix.Malloc)
}

std::string NameOf(CK_FUNCTION_LIST* module) {
  return OrEmpty(Text(p11_kit_module_get_name(module)));
}

}  // namespace

Module::Module(CK_FUNCTION_LIST* loaded)
    : functions(loaded), file(OrEmpty(Text(p11_kit_module_get_filename(loaded)))) {}

Module::~Module() {
  Close();
  Release(functions);
}

CK_RV Module::Open() {
  const CK_RV result = isManaged ? OpenManaged() : OpenWithoutLocks();
  isOpen = result == CKR_OK;
  return result;
}

CK_RV Module::OpenManaged() {
  // In a forked copy, this only corrects p11-kit's count. It does not finalize the module of the original.
  if (openedBy != 0) p11_kit_module_finalize(functions);
  const CK_RV result = p11_kit_module_initialize(functions);
  openedBy = result == CKR_OK ? ::getpid() : 0;
  return result == CKR_CANT_LOCK ? OpenWithoutLocks() : result;
}

CK_RV Module::OpenWithoutLocks() {
  if (isManaged) {
    CK_FUNCTION_LIST* const bare = p11_kit_module_load(file.c_str(), P11_KIT_MODULE_UNMANAGED);
    if (!bare) return CKR_CANT_LOCK;
    Release(functions);
    functions = bare;
    isManaged = false;
  }
  if (openedBy == ::getpid()) functions->C_Finalize(nullptr);
  const CK_RV result = functions->C_Initialize(nullptr);
  openedBy = result == CKR_OK ? ::getpid() : 0;
  return result == CKR_CRYPTOKI_ALREADY_INITIALIZED ? CKR_OK : result;
}

void Module::Close() {
  if (openedBy != 0 && isManaged) p11_kit_module_finalize(functions);
  if (openedBy == ::getpid() && !isManaged) functions->C_Finalize(nullptr);
}

Modules::Modules(const TokenUri& uri) {
  if (!uri.Problem().empty()) {
    problems.push_back(uri.Problem());
  } else if (!uri.ModulePath().empty()) {
    LoadFile(uri.ModulePath());
  } else {
    LoadRegistered(uri.ModuleName());
  }
}

void Modules::Reopen() {
  for (const auto& module : all) module->Open();
}

bool Modules::AreThreadSafe() const {
  return std::all_of(all.begin(), all.end(),
                     [](const auto& module) { return module->IsThreadSafe(); });
}

void Modules::LoadFile(const std::string& path) {
  CK_FUNCTION_LIST* const loaded = p11_kit_module_load(path.c_str(), 0);
  if (loaded) return Add(loaded);
  const char* const reason = p11_kit_message();
  problems.push_back("The module " + path + " cannot be loaded: " + Plain(reason ? reason : "") +
                     ". Install it, or rebuild the plug-in with another module-path.");
}

void Modules::LoadRegistered(const std::string& name) {
  CK_FUNCTION_LIST** const loaded = p11_kit_modules_load(nullptr, 0);
  if (!loaded) {
    const char* const reason = p11_kit_message();
    problems.push_back("The registered modules cannot be loaded: " + Plain(reason ? reason : "") +
                       ". \"p11-kit list-modules\" lists them.");
    return;
  }
  bool isFound = false;
  for (CK_FUNCTION_LIST** module = loaded; *module; ++module) {
    const bool isOurs = name.empty() || NameOf(*module) == name;
    isFound = isFound || isOurs;
    if (isOurs) {
      Add(*module);
    } else {
      Release(*module);
    }
  }
  std::free(loaded);
  if (isFound) return;
  problems.push_back(
      name.empty()
          ? "No module is registered with p11-kit. Install the token vendor's module."
          : "No module named \"" + Plain(name) +
                "\" is registered with p11-kit. \"p11-kit list-modules\" lists those that are.");
}

void Modules::Add(CK_FUNCTION_LIST* loaded) {
  auto module = std::make_unique<Module>(loaded);
  const CK_RV result = module->Open();
  if (result == CKR_OK) {
    all.push_back(std::move(module));
  } else {
    problems.push_back("The module " + module->File() +
                       " cannot be initialized: " + Explain(result) + ". See its vendor's manual.");
  }
}

std::string Explain(CK_RV result) {
  char number[24];
  std::snprintf(number, sizeof number, " (0x%lx)", static_cast<unsigned long>(result));
  return p11_kit_strerror(result) + std::string(number);
}
