#ifndef TESTS_MODEL_MODEL_H
#define TESTS_MODEL_MODEL_H

#include "tests/model/steps.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>

/// What a step led to. The library and the model put it in the same words.
struct Outcome {
  std::string result;  ///< of a call; or "threw ..."
  std::string trace;   ///< the calls of plug-ins, X, the known-path service and settings
  std::string state;   ///< all that a host can see of settings, files and records afterwards

  bool operator==(const Outcome&) const = default;
};

/// What the library does, told plainly: no loader, no files, no lock. `mistake` names one thing that
/// the model gets wrong, to show that the comparison notices; empty for none. kMistakes lists them.
class Model {
 public:
  explicit Model(std::string mistake = "");

  Outcome Load();
  Outcome Do(const Step& step);
  Outcome Unload();

 private:
  struct Plugin {
    std::string file = "missing";
    bool givesNull = false;
    bool isAvailable = true;
    std::uint32_t flags = 1;
    std::string name;
    std::string size = "same";
    std::string again = "same";
    int holders = 0;         // how often it is open
    std::string openedFile;  // what it was then
  };
  struct Host {
    std::optional<std::string> type, id;
    bool refusesType = false, refusesId = false;
  };
  struct Listed {
    std::string kind;
    bool isEnded = false;  // by a ShutDown that a later Release cut short
  };
  struct Folder {
    bool exists = false;
    std::optional<std::string> file;
  };
  using Value = std::optional<std::string>;
  struct Thrown {
    std::string what;
  };

  template <typename Function>
  Outcome Observe(Function function);
  void Call(const std::string& who, const std::string& what);  // noted; it may throw
  void MayThrow(const std::string& who, const std::string& what) const;

  bool Arrange(const Step& step);
  std::string Perform(const Step& step);
  std::string State() const;
  void Forget();

  void Initialize(const std::string& settings);
  void LoadRow(const std::string& kind, const std::string& settings);
  bool ProbeDisplay();
  bool Open(const std::string& kind);
  void Close(const std::string& kind);
  void ShutDown();
  std::string CloseAll();
  std::string List(std::uint32_t mask, bool isFilled);
  std::string ReportedName(const std::string& kind);
  std::string Find(const std::string& name);
  bool IsInteractive(const std::string& name) const;
  std::string Default(std::uint32_t mask);
  Value Fallback(std::uint32_t mask);
  bool SetDefault(const std::optional<std::string>& type, const std::optional<std::string>& id);

  Value GetSetting(const std::string& settings, bool isType);
  bool SetSetting(const std::string& settings, bool isType, const Value& value);
  Value ReadFolder(const std::string& key);
  bool WriteFolder(const std::string& key, const Value& value, bool makesFolders);
  Folder* AskFolder();
  std::string DataFile();

  const std::string mistake;
  std::string trace;
  std::string record;

  std::map<std::string, Plugin> plugins;
  std::map<std::string, Host> hosts;
  std::set<std::string> throwing;  // "dsdr.Release"
  std::string x11 = "refusing";
  std::string service = "here";
  bool hasData = true;
  std::map<std::string, Folder> folders;

  // Of one loading of the library.
  std::int64_t count = 0;
  std::string current = "null";
  std::vector<Listed> list;
  std::map<std::string, std::string> variables;
  std::string dataFile;
  bool isProbed = false, hadDisplay = false;  // for a mistake
};

extern const std::vector<std::string> kMistakes;

std::string ToHex(const std::string& bytes);

// Of the record that GetDefaultRng fills, and of each of its two texts.
constexpr std::size_t kFieldSize = 18;
constexpr std::size_t kRecordSize = 2 * kFieldSize;

/// Stands in outcomes for the tree in which the library works.
constexpr char kTree[] = "TREE";

#endif
