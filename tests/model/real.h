#ifndef TESTS_MODEL_REAL_H
#define TESTS_MODEL_REAL_H

#include "tests/model/model.h"
#include "tests/support/aggregator_library.h"

#include <list>
#include <memory>

/// The settings of a host. Its calls are logged under its name.
class HostSettings final : public IRngSettings {
 public:
  explicit HostSettings(const char* hostName) : name(hostName) {}

  std::optional<std::string> type, id;
  bool refusesType = false, refusesId = false;

  const char* GetType() override;
  bool SetType(const char* text) override;
  const char* GetHardwareId() override;
  bool SetHardwareId(const char* text) override;
  const char* GetDsdrFilePath() override;

 private:
  void Note(const char* what, const char* text);

  const char* const name;
};

/// The library itself, in the tree of this process, from a loading to an unloading. It does what
/// `Model` says it does; there is one at a time, since the fakes are one set for the process.
class Real {
 public:
  Real();
  Real(const Real&) = delete;
  Real& operator=(const Real&) = delete;
  ~Real();

  Outcome Load();
  Outcome Do(const Step& step);
  Outcome Unload();

 private:
  template <typename Function>
  Outcome Observe(Function function);
  bool Arrange(const Step& step);
  std::string Perform(const Step& step);
  std::string State() const;

  void SetHooks(const std::string& kind);
  void HookHost(const std::string& host);
  void MayThrow(const std::string& call) const;
  bool IsSecondNameCall(const std::string& kind);
  std::string NameOf(const IRngSettings* settings) const;
  std::string NameOf(const IRngProvider* provider) const;
  IRngSettings* SettingsNamed(const std::string& name);
  HostSettings& HostNamed(const std::string& name);
  void Open();
  std::string Close();
  void SetVariable(const std::string& name, const std::string& text);
  std::string List(std::uint32_t mask) const;

  std::unique_ptr<AggregatorLibrary> library;
  IRngSettings* builtin = nullptr;
  HostSettings a{"A"};
  HostSettings b{"B"};
  std::set<std::string> throwing;
  std::map<std::string, const IRngProvider*> providers;  // of the open plug-ins
  std::map<std::string, int> nameCalls;                  // in this step
  std::list<std::string> texts;                          // what name variables point at
  std::string record;
};

#endif
