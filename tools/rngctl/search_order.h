#ifndef TOOLS_RNGCTL_SEARCH_ORDER_H
#define TOOLS_RNGCTL_SEARCH_ORDER_H

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

/// `systemDirectories` is how many of the last directories are the system's, which the loader does not
/// tell.
SearchOrder FindSearchOrder(std::size_t systemDirectories);

/// Those directories, in a process with one directory in its LD_LIBRARY_PATH.
std::vector<std::string> ListSystemDirectories();

/// The file of that name that the loader takes before it asks its cache, "" without one: it passes over
/// those that cannot be read or are made for another machine. The subfolders for single processors are
/// not looked into.
std::string FindTaken(const std::string& name, const SearchOrder& order);

/// The same, or else the first of that name in any of the directories, even if the loader passes it over.
std::string FindFirst(const std::string& name, const SearchOrder& order);

/// The same path without the ".." by which an installation finds its parts.
std::string Straight(const std::string& path);

/// The directories as a value of LD_LIBRARY_PATH: with it another program, and what that opens,
/// finds the files that the aggregator finds.
std::string AsLibraryPath(const SearchOrder& order);

#endif
