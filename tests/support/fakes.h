#ifndef TESTS_SUPPORT_FAKES_H
#define TESTS_SUPPORT_FAKES_H

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include <rngaggregator/provider.h>

/// The script of the scripted plug-in of a kind. A case sets it before `Initialize`; the plug-in
/// reads it at every call.
struct FakeRng {
  std::string name;                       ///< the text that GetName writes; initially the kind
  std::optional<std::int32_t> nameSize;   ///< GetName's result for null; by default what name needs
  bool isTerminated = true;               ///< whether GetName writes the terminator, too
  std::optional<std::int32_t> nameAgain;  ///< GetName's result for a buffer; by default the same
  bool factoryGivesNull = false;
  bool isAvailable = true;
  std::uint32_t flags = 1;
  IRngSettings* settings = nullptr;  ///< what SetSettings received last
  IRngProvider* provider = nullptr;  ///< what the factory returned last
  std::map<std::string, std::function<void()>>
      hooks;  ///< run after the call of that name is logged
};
FakeRng& Fake(const std::string& kind);

/// The script of the fake known-path service, which returns 1 for an id without a directory.
struct FakeKnownPath {
  std::map<int, std::string> directories;  ///< by id; initially share/ (0) and etc/ (2) of the tree
  bool fillsBuffer = false;                ///< writes 256 times 'x' and no terminator
};
FakeKnownPath& KnownPath();

/// The log of all calls into fakes: `who` is a kind, "x11", "known_path" or "settings".
/// A plug-in logs "opened", "factory", the operations by their names, and "closed".
void RecordCall(const std::string& who, const std::string& what);
std::string CallLog(const std::string& who);  ///< "opened factory SetSettings ..."
std::string CallLog();                        ///< "dsdr.opened dsdr.factory ..."
/// `RecordCall` for fakes without std::string.
extern "C" void RecordCallFromC(const char* who, const char* what);
std::size_t CountCalls(const std::string& who, const std::string& what);
void ClearCallLog();

#endif
