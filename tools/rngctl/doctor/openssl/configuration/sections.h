#ifndef TOOLS_RNGCTL_DOCTOR_OPENSSL_CONFIGURATION_SECTIONS_H
#define TOOLS_RNGCTL_DOCTOR_OPENSSL_CONFIGURATION_SECTIONS_H

#include <memory>
#include <openssl/conf.h>
#include <optional>
#include <string>
#include <vector>

/// What is wrong, and what to do about it. Both are "" if nothing is.
struct OpensslFault {
  std::string problem = {};
  std::string fix = {};
};

/// A configuration file of OpenSSL, with the files that it includes.
class OpensslSections {
 public:
  struct Line {
    std::string name;
    std::string value;
  };

  /// Which part of a line's name OpenSSL ignores. This depends on the section.
  enum class Naming {
    kWhole,   ///< none
    kSuffix,  ///< "random.1" counts as "random"
    kPrefix   ///< "1.module" counts as "module"
  };
  static std::string Bare(const std::string& name, Naming naming);

  /// Reads the file. Returns what keeps OpenSSL from reading it.
  OpensslFault Load(const std::string& file);

  bool Has(const std::string& section) const;

  /// In the order of the file; none if there is no such section.
  std::vector<Line> Lines(const std::string& section) const;

  /// The value, without looking elsewhere if the section has none.
  std::optional<std::string> Find(const std::string& section, const std::string& name,
                                  Naming naming = Naming::kWhole) const;

  /// Applies it as programs do, and returns the line that OpenSSL could not apply, with the reason as its value.
  /// Programs ignore the lines after that.
  std::optional<Line> Apply() const;

 private:
  std::unique_ptr<CONF, void (*)(CONF*)> configuration{NCONF_new(nullptr), NCONF_free};
};

/// The section of the lines that precede the first one in the file.
constexpr char kTopSection[] = "default";

/// Why this user cannot read a file, or nothing. `missing` is the advice if there is none.
OpensslFault FindUnreadable(const std::string& file, const std::string& missing);

#endif
