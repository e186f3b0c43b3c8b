#include "tools/rngctl/doctor/openssl/configuration/provider_fault.h"

#include "providers/library_handle.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <openssl/crypto.h>
#include <string_view>

namespace {

using Naming = OpensslSections::Naming;

constexpr char kProvider[] = "rngaggregator";
constexpr char kModule[] = "/rngaggregator.so";
constexpr char kInstall[] =
    "Install the package openssl-provider-rngaggregator, or correct the path of the module.";
constexpr char kReinstall[] = "Reinstall the package openssl-provider-rngaggregator.";

// What OpenSSL reads in the section of a provider, and what ours does.
constexpr std::array<std::string_view, 7> kKnownLines = {
    "identity", "soft_load", "module", "activate", "kind", "hardware-id", "from"};

struct Entry {
  std::string section;
  std::string module;
};

// OpenSSL searches only one folder for a module without an absolute path.
std::string CompletePath(const std::string& module) {
  if (module.starts_with('/')) return module;
  const char* const given = ::secure_getenv("OPENSSL_MODULES");
  const char* const folder = given ? given : OPENSSL_info(OPENSSL_INFO_MODULES_DIR);
  return std::string(folder ? folder : "") + '/' + module;
}

// The provider may have another name if its section names the module.
std::optional<Entry> FindEntry(const OpensslSections& sections, const std::string& start) {
  const auto providers = sections.Find(start, "providers", Naming::kSuffix);
  if (!providers) return std::nullopt;
  for (const auto& [line, section] : sections.Lines(*providers)) {
    const std::string name = OpensslSections::Bare(line, Naming::kPrefix);
    const std::string module =
        sections.Find(section, "module", Naming::kPrefix).value_or(name + ".so");
    if (name != kProvider && !module.ends_with(kModule)) continue;
    return Entry{section, CompletePath(module)};
  }
  return std::nullopt;
}

OpensslFault FindModuleFault(const std::string& module) {
  OpensslFault unreadable = FindUnreadable(module, kInstall);
  if (!unreadable.problem.empty()) return {"the module " + unreadable.problem, unreadable.fix};
  const LibraryHandle library(::dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!library) return {std::string("the module cannot be opened: ") + ::dlerror(), kReinstall};
  if (::dlsym(library.get(), "OSSL_provider_init")) return {};
  return {"the module " + module + " is not a provider: it has no function OSSL_provider_init",
          kReinstall};
}

bool ActivatesAnother(const OpensslSections& sections, const std::string& providers,
                      const std::string& ours) {
  const auto lines = sections.Lines(providers);
  return std::any_of(lines.begin(), lines.end(), [&](const OpensslSections::Line& line) {
    return line.value != ours && sections.Find(line.value, "activate", Naming::kPrefix);
  });
}

}  // namespace

std::string FindModule(const OpensslSections& sections, const std::string& start) {
  const auto entry = FindEntry(sections, start);
  return entry ? entry->module : "";
}

OpensslFault FindProviderFault(const OpensslSections& sections, const std::string& start,
                               const std::string& file) {
  const auto providers = sections.Find(start, "providers", Naming::kSuffix);
  if (!providers) {
    return {"the section [" + start + "] of " + file + " has no line \"providers\"",
            "Add \"providers = SECTION\", and that section with a line \"rngaggregator\"."};
  }
  const auto entry = FindEntry(sections, start);
  if (!entry) {
    return {"the section [" + *providers + "] of " + file + " does not name the provider",
            "Add \"rngaggregator = SECTION\", and that section with the path of the module."};
  }
  if (!sections.Has(entry->section)) {
    return {file + " has no section [" + entry->section + "], which [" + *providers + "] names",
            "Add that section, with the path of the module."};
  }
  OpensslFault module = FindModuleFault(entry->module);
  if (!module.problem.empty()) return module;
  if (sections.Find(entry->section, "activate", Naming::kPrefix)) return {};
  return {"the section [" + entry->section + "] of " + file + " does not activate the provider",
          "Add \"activate = 1\" to it."};
}

std::vector<std::string> FindProviderWarnings(const OpensslSections& sections,
                                              const std::string& start) {
  std::vector<std::string> warnings;
  const auto entry = FindEntry(sections, start);
  if (!entry) return warnings;
  for (const auto& [line, value] : sections.Lines(entry->section)) {
    const std::string name = OpensslSections::Bare(line, Naming::kPrefix);
    if (std::find(kKnownLines.begin(), kKnownLines.end(), name) != kKnownLines.end()) continue;
    warnings.push_back("The line \"" + line + "\" in [" + entry->section +
                       "] is ignored. The provider reads \"kind\", \"hardware-id\" and \"from\".");
  }
  const std::string providers = sections.Find(start, "providers", Naming::kSuffix).value_or("");
  if (!ActivatesAnother(sections, providers, entry->section)) {
    warnings.push_back("No section that [" + providers +
                       "] names activates another provider, so programs have random bytes, but "
                       "no ciphers and no keys. Add \"activate = 1\" to that of \"default\".");
  }
  return warnings;
}
