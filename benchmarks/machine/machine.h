#ifndef BENCHMARKS_MACHINE_MACHINE_H
#define BENCHMARKS_MACHINE_MACHINE_H

#include "benchmarks/machine/folder.h"

#include <string>

#include <rngaggregator/aggregator.h>

/// Temporary folders laid out like an installation: a library to measure, with trivial plug-ins and
/// an X library beside it, and the settings on a file system in memory. The destructor removes all.
///
/// Both libraries get the same file name, and all paths have the same length, so that the dynamic
/// loader does the same work for either.
class Machine {
 public:
  enum class Library { kOurs, kBare };

  Machine(Library library, int plugins);
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  /// Keeps the first `count` plug-ins, in catalogue order, and removes the others.
  void SetPlugins(int count) const;

  /// Writes a profile of that many lines, with the section and keys in the last three.
  void WriteProfile(long lines) const;

  std::string LibraryPath() const;
  std::string ProfilePath() const;
  std::string PluginPath(int number) const;

  /// Makes the known-path service return this machine's settings directory.
  void UseSettings() const;

 private:
  const Folder tree;
  const Folder settings;
};

constexpr int kAllPlugins = 12;

/// The exported functions of the library at `path`, which stays open for the life of this object.
class OpenLibrary {
 public:
  explicit OpenLibrary(const std::string& path);
  OpenLibrary(const OpenLibrary&) = delete;
  OpenLibrary& operator=(const OpenLibrary&) = delete;
  ~OpenLibrary();

 private:
  void* Find(const char* name) const;

  void* handle;

 public:
  const decltype(&::Initialize) Initialize;
  const decltype(&::ShutDown) ShutDown;
  const decltype(&::GetAvailableRng) GetAvailableRng;
  const decltype(&::GetRng) GetRng;
  const decltype(&::GetDefaultSettings) GetDefaultSettings;
};

#endif
