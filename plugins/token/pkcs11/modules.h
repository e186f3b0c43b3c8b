#ifndef RNG_TOKEN_MODULES_H
#define RNG_TOKEN_MODULES_H

#include "uri.h"

#include <memory>
#include <p11-kit/p11-kit.h>
#include <string>
#include <sys/types.h>
#include <vector>

/// A PKCS#11 module, shared with all code in the process that uses it through p11-kit. A module that other code has
/// initialized stays initialized.
class Module {
 public:
  /// Takes over a module that p11-kit has loaded.
  explicit Module(CK_FUNCTION_LIST* loaded);
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;
  ~Module();

  /// Initializes the module. Call it again in a forked copy of the process, and after other code has finalized the
  /// module.
  CK_RV Open();

  /// Whether the last `Open` succeeded. If not, do not call the module: p11-kit crashes if a session is opened in a
  /// module that other code has initialized but p11-kit has not.
  bool IsOpen() const { return isOpen; }

  CK_FUNCTION_LIST& Functions() const { return *functions; }
  const std::string& File() const { return file; }

  /// Whether several threads may call it at once.
  bool IsThreadSafe() const { return isManaged; }

 private:
  CK_RV OpenManaged();
  CK_RV OpenWithoutLocks();
  void Close();

  CK_FUNCTION_LIST* functions;
  std::string file;
  bool isOpen = false;
  bool isManaged = true;  // p11-kit counts its users; not possible for a module without locks
  pid_t openedBy = 0;     // the process in which this object must finalize it, or 0
};

/// The modules that the URI allows, initialized.
class Modules {
 public:
  explicit Modules(const TokenUri& uri);

  /// Initializes all of them again.
  void Reopen();

  bool AreThreadSafe() const;
  const std::vector<std::unique_ptr<Module>>& All() const { return all; }

  /// Why modules could not be loaded or initialized, in sentences.
  const std::vector<std::string>& Problems() const { return problems; }

 private:
  void LoadFile(const std::string& path);
  void LoadRegistered(const std::string& name);
  void Add(CK_FUNCTION_LIST* loaded);

  std::vector<std::unique_ptr<Module>> all;
  std::vector<std::string> problems;
};

/// For display: p11-kit's message for the result, and its number.
std::string Explain(CK_RV result);

#endif
