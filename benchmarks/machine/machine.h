#ifndef BENCHMARKS_MACHINE_MACHINE_H
#define BENCHMARKS_MACHINE_MACHINE_H

#include "benchmarks/machine/folder.h"

#include <string>

#include <rngaggregator/aggregator.h>

/// Folders laid out as an installation, gone at the end of their life: a library under measurement
/// with trivial plug-ins and an X library beside it, and the settings on a file system in memory.
///
/// The library has the same file name whichever it is, and every path the same length, so that the
/// dynamic loader has the same work with it.
class Machine {
 public:
  enum class Library { kOurs, kBare };

  Machine(Library library, int plugins);
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  /// Keeps the first `count` plug-ins, in catalogue order, and removes the others.
  void SetPlugins(int count) const;

  /// A profile of that many lines; what is looked for stands in the last three.
  void WriteProfile(long lines) const;

  std::string LibraryPath() const;
  std::string ProfilePath() const;
  std::string PluginPath(int number) const;

  void UseSettings() const;  ///< the known-path service names this machine's settings directory

 private:
  const Folder tree;
  const Folder settings;
};

constexpr int kAllPlugins = 12;

/// The exported functions of the library at a path, open as long as this lives.
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
