#ifndef TESTS_FAULTS_PROMISED_LIBRARY_H
#define TESTS_FAULTS_PROMISED_LIBRARY_H

#include "tests/faults/fault_plan.h"
#include "tests/support/kinds.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <rngaggregator/aggregator.h>

/// What a case finds on its machine.
struct Arrangement {
  std::vector<std::string> plugins = {};   ///< kinds
  std::set<std::string> givesNull = {};    ///< whose factory returns null
  std::set<std::string> unavailable = {};  ///< which report themselves unusable
  bool hasDisplay = false;
  std::optional<std::string> profile = {};  ///< of rng.ini; without it its folder is missing, too
  bool isUnwritable = false;                ///< the temporary file cannot be created
};

/// The folders of `path`, outermost first, without the path itself.
std::vector<std::string> FoldersOf(const std::string& path);

/// What the library promises of every exported function, with a fault at any of the calls that it
/// makes: results, exceptions, calls into plug-ins, libraries that are open, files. It is written
/// from the promises alone and touches nothing outside itself.
class PromisedLibrary {
 public:
  explicit PromisedLibrary(const Arrangement& world);
  PromisedLibrary(const PromisedLibrary&) = delete;
  PromisedLibrary& operator=(const PromisedLibrary&) = delete;

  void Initialize(IRngSettings* newSettings);
  void ShutDown();
  bool IsInitialized() const { return count > 0; }
  std::string Available(std::uint32_t mask);  ///< the kinds that GetAvailableRng writes
  std::string Find(const char* name);         ///< the kind that GetRng finds; "" for null
  std::int32_t IsInteractiveRng(const char* name) const;
  std::int32_t GetDefaultRng(DefaultRngInfo* info, std::uint32_t mask);
  bool SetDefaultRng(const char* type, const char* hardwareId);
  IRngSettings* GetDefaultSettings() { return &builtIn; }
  IRngSettings* HostSettings() { return &host; }
  void Close();  ///< unloads it

  FaultPlan faults;
  /// For operations whose number of allocations is their own affair: memory is out when the log has
  /// this length and so many calls to the outside were made.
  struct Moment {
    std::size_t logged;
    std::size_t calls;
  };
  std::optional<Moment> outOfMemoryAt;

  bool isLoaded = true;
  std::string log;
  std::map<std::string, int> holders;        ///< of the library files that are open
  std::map<std::string, std::string> files;  ///< content by path
  std::set<std::string> directories;

 private:
  class BuiltIn final : public IRngSettings {
   public:
    explicit BuiltIn(PromisedLibrary& owner) : library(owner) {}
    const char* GetType() override;
    bool SetType(const char* type) override;
    const char* GetHardwareId() override;
    bool SetHardwareId(const char* hardwareId) override;
    const char* GetDsdrFilePath() override;

   private:
    PromisedLibrary& library;
    std::string lastType;
    std::string lastHardwareId;
    std::string dataFile;
  };
  class Host final : public IRngSettings {
   public:
    explicit Host(PromisedLibrary& owner) : library(owner) {}
    const char* GetType() override;
    bool SetType(const char* type) override;
    const char* GetHardwareId() override;
    bool SetHardwareId(const char* hardwareId) override;
    const char* GetDsdrFilePath() override { return "/nowhere/dsdr.bin"; }

   private:
    PromisedLibrary& library;
    std::optional<std::string> type;
    std::optional<std::string> id;
  };

  void Log(const std::string& who, const std::string& what);
  bool Strikes(const char* function) { return faults.Strikes(function); }
  void Lock();
  void Allocate();
  void OpenLibrary(const std::string& who, const std::string& file);
  void CloseLibrary(const std::string& who, const std::string& file);
  bool FindInX11();
  bool Probe();
  void Load(const Kind& row);

  std::optional<std::string> LookUp(int id);
  std::string SettingsFile();
  bool Exists(const std::string& path);
  bool CreateDirectoriesOf(const std::string& path);
  std::string ReadValue(const std::string& key);
  bool WriteValue(const std::string& key, const std::string& value);
  bool OpenForWriting(const std::string& path);
  void Put(std::string& to, const std::string& text);
  std::optional<std::string> TakeLine(const std::string& from, std::size_t& position);
  std::string Rewritten(const std::string& from, const std::string& key, const std::string& entry);

  const Arrangement arrangement;
  std::int64_t count = 0;
  IRngSettings* settings = nullptr;
  std::vector<std::string> listed;  // grows and keeps its capacity as the product's list does
  BuiltIn builtIn{*this};
  Host host{*this};
};

#endif
