#ifndef TOOLS_RNGCTL_LOADER_SEARCH_ORDER_H
#define TOOLS_RNGCTL_LOADER_SEARCH_ORDER_H

#include <string>
#include <vector>

/// Where the dynamic loader looks for what the aggregator opens by bare file name.
struct SearchOrder {
  std::string library;                   ///< the file of the aggregator in this process
  std::vector<std::string> directories;  ///< its run path, then what the environment names
  std::vector<std::string> defaults;     ///< the system's, after the loader's cache
};

/// The file of the aggregator in this process, as the loader names it.
std::string FindLibrary();

/// The loader does not tell which directories are the system's: `systemDirectories` are those.
SearchOrder FindSearchOrder(const std::vector<std::string>& systemDirectories);

/// The system's directories, in a process whose LD_LIBRARY_PATH is the one directory `given`.
std::vector<std::string> ListSystemDirectories(const std::string& given);

/// The file of that name that the loader opens before it asks its cache, "" without one: it passes over
/// files that it cannot read or that are made for another machine. The subdirectories for particular
/// processors are not searched.
std::string FindAsLoaderDoes(const std::string& name, const SearchOrder& order);

/// The same, or else the first of that name in any of the directories, even if the loader passes it over.
std::string FindFirst(const std::string& name, const SearchOrder& order);

/// The same path without the ".." by which an installation finds its parts.
std::string WithoutDotDot(const std::string& path);

/// The run path in the file of a library that is in the process, "" without one.
std::string RunPathOf(const std::string& library);

/// The directories before the system's, as a value of LD_LIBRARY_PATH.
std::string AsLibraryPath(const SearchOrder& order);

#endif
