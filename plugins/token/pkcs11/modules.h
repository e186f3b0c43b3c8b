#ifndef RNG_TOKEN_MODULES_H
#define RNG_TOKEN_MODULES_H

#include "uri.h"

#include <memory>
#include <p11-kit/p11-kit.h>
#include <string>
#include <sys/types.h>
#include <vector>

/// One PKCS#11 module, shared with everyone in the process who uses it through p11-kit. What somebody else has
/// initialized is left initialized.
class Module {
 public:
  /// Takes over a module that p11-kit has loaded.
  explicit Module(CK_FUNCTION_LIST* loaded);
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;
  ~Module();

  /// Initializes the module. May follow an earlier `Open`, and then renews it: in a forked copy of the process, or
  /// after somebody else has finalized the module.
  CK_RV Open();

  /// Whether the last `Open` succeeded. Otherwise nothing may be called: p11-kit crashes if a session is opened in a
  /// module that it has not initialized, but somebody else has.
  bool IsOpen() const { return isOpen; }

  CK_FUNCTION_LIST& Functions() const { return *functions; }
  const std::string& File() const { return file; }

  /// Whether several threads may use it at once.
  bool BearsThreads() const { return isManaged; }

 private:
  CK_RV OpenManaged();
  CK_RV OpenWithoutLocks();
  void Close();

  CK_FUNCTION_LIST* functions;
  std::string file;
  bool isOpen = false;
  bool isManaged = true;  // p11-kit counts who has initialized it, which it cannot without locks
  pid_t openedBy = 0;     // the process in which it is ours to finalize, or 0
};

/// The modules that the URI allows, initialized.
class Modules {
 public:
  explicit Modules(const TokenUri& uri);

  /// Initializes each of them again.
  void Reopen();

  bool BearThreads() const;
  const std::vector<std::unique_ptr<Module>>& All() const { return all; }

  /// Why modules are missing, in sentences.
  const std::vector<std::string>& Problems() const { return problems; }

 private:
  void LoadFile(const std::string& path);
  void LoadRegistered(const std::string& name);
  void Add(CK_FUNCTION_LIST* loaded);

  std::vector<std::unique_ptr<Module>> all;
  std::vector<std::string> problems;
};

/// For people: the standard's name of the result, and its number.
std::string Explain(CK_RV result);

#endif
