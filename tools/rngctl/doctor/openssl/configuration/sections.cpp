#include "tools/rngctl/doctor/openssl/configuration/sections.h"

#include "tools/rngctl/files/path_facts.h"

#include <cerrno>
#include <cstring>
#include <openssl/err.h>

namespace {

std::string OrEmpty(const char* text) { return text ? text : ""; }

struct Error {
  std::string reason;
  std::string data;
};

// Oldest first.
std::vector<Error> TakeErrors() {
  std::vector<Error> errors;
  const char* data = nullptr;
  int flags = 0;
  while (const unsigned long error = ERR_get_error_all(nullptr, nullptr, nullptr, &data, &flags)) {
    errors.push_back({OrEmpty(ERR_reason_error_string(error)),
                      (flags & ERR_TXT_STRING) != 0 ? OrEmpty(data) : ""});
  }
  return errors;
}

std::string Describe(const Error& error) {
  return error.reason + (error.data.empty() ? "" : " (" + error.data + ")");
}

// Of "module=providers, value=...".
std::string ModuleIn(const std::string& data) {
  constexpr char kKey[] = "module=";
  if (!data.starts_with(kKey)) return "";
  const std::size_t begin = sizeof kKey - 1;
  return data.substr(begin, data.find(',') - begin);
}

}  // namespace

OpensslFault OpensslSections::Load(const std::string& file) {
  long line = 0;
  ERR_clear_error();
  if (NCONF_load(configuration.get(), file.c_str(), &line) > 0) return {};
  const std::vector<Error> errors = TakeErrors();
  // The last error is the one that stopped OpenSSL: it continues after others, such as a missing included file.
  const std::string reason = errors.empty() ? "unknown error" : Describe(errors.back());
  const std::string place = line > 0 ? "line " + std::to_string(line) + " of " + file : file;
  return {"OpenSSL cannot read " + place + ": " + reason, "Correct " + place + '.'};
}

bool OpensslSections::Has(const std::string& section) const {
  return NCONF_get_section(configuration.get(), section.c_str()) != nullptr;
}

std::vector<OpensslSections::Line> OpensslSections::Lines(const std::string& section) const {
  std::vector<Line> lines;
  const STACK_OF(CONF_VALUE)* const values =
      NCONF_get_section(configuration.get(), section.c_str());
  for (int i = 0; values && i < sk_CONF_VALUE_num(values); ++i) {
    const CONF_VALUE* const value = sk_CONF_VALUE_value(values, i);
    lines.push_back({OrEmpty(value->name), OrEmpty(value->value)});
  }
  return lines;
}

std::string OpensslSections::Bare(const std::string& name, Naming naming) {
  if (naming == Naming::kSuffix) return name.substr(0, name.rfind('.'));
  return naming == Naming::kPrefix ? name.substr(name.find('.') + 1) : name;
}

std::optional<std::string> OpensslSections::Find(const std::string& section,
                                                 const std::string& name, Naming naming) const {
  for (const Line& line : Lines(section)) {
    if (Bare(line.name, naming) == name) return line.value;
  }
  return std::nullopt;
}

std::optional<OpensslSections::Line> OpensslSections::Apply() const {
  OPENSSL_load_builtin_modules();
  ERR_clear_error();
  if (CONF_modules_load(configuration.get(), nullptr, 0) > 0) return std::nullopt;
  const std::vector<Error> errors = TakeErrors();
  if (errors.empty()) return Line{"", "unknown error"};
  return Line{ModuleIn(errors.back().data), Describe(errors.front())};
}

OpensslFault FindUnreadable(const std::string& file, const std::string& missing) {
  if (MayAccess(file, R_OK)) {
    if (!LookThrough(file).IsDirectory()) return {};
    return {file + " is a directory", "Replace it with a file."};
  }
  if (errno == ENOENT || errno == ENOTDIR) return {file + " does not exist", missing};
  const std::string reason = std::strerror(errno);
  const std::string folder = FindUnsearchable(file);
  if (!folder.empty()) {
    return {file + " cannot be read by this user: " + folder + " cannot be searched",
            "Let the user search it: chmod o+x " + folder};
  }
  return {file + " cannot be read by this user: " + reason,
          "Let the user read it: chmod o+r " + file};
}
