#ifndef TESTS_SUPPORT_AGGREGATOR_LIBRARY_H
#define TESTS_SUPPORT_AGGREGATOR_LIBRARY_H

#include <string>
#include <vector>

#include <rngaggregator/aggregator.h>

/// The built library, opened from the tree as a host's plug-in system would open it.
class AggregatorLibrary {
 public:
  AggregatorLibrary();  ///< throws std::runtime_error with the loader's message
  AggregatorLibrary(const AggregatorLibrary&) = delete;
  AggregatorLibrary& operator=(const AggregatorLibrary&) = delete;
  ~AggregatorLibrary();

  void Close();  ///< unloads it; nothing may be called afterwards

  const char*& NameVariable(const std::string& variable) const;

  /// Starts it and checks that exactly `count` providers are listed. A fake without flags
  /// is not listed.
  void Start(IRngSettings* settings, std::size_t count) const;

  /// The names of the listed providers, in order.
  std::vector<std::string> LoadedNames() const;

 private:
  void* Find(const char* name) const;

  void* handle;

 public:
  const decltype(&::Initialize) Initialize;
  const decltype(&::ShutDown) ShutDown;
  const decltype(&::IsInitialized) IsInitialized;
  const decltype(&::GetAvailableRng) GetAvailableRng;
  const decltype(&::GetRng) GetRng;
  const decltype(&::IsInteractiveRng) IsInteractiveRng;
  const decltype(&::GetDefaultRng) GetDefaultRng;
  const decltype(&::SetDefaultRng) SetDefaultRng;
  const decltype(&::GetDefaultSettings) GetDefaultSettings;
};

/// The name of a provider, read with the protocol of two calls.
std::string ReportedName(IRngProvider& provider);

/// Whether a file of that name, at any path, is mapped into this process.
bool IsMapped(const std::string& fileName);

#endif
