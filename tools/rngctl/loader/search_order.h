#ifndef TOOLS_RNGCTL_LOADER_SEARCH_ORDER_H
#define TOOLS_RNGCTL_LOADER_SEARCH_ORDER_H

#include <string>
#include <vector>

/// Where the dynamic loader looks for what the aggregator opens by bare file name.
struct SearchOrder {
  std::string library;                   ///< the file of the aggregator in this process
  std::vector<std::string> directories;  ///< its run path, then LD_LIBRARY_PATH
  std::vector<std::string> defaults;     ///< the system's, after the loader's cache
};

/// The file of the aggregator in this process, as the loader names it.
std::string FindLibrary();

/// The loader does not say which directories are the system's, so the caller passes them.
SearchOrder FindSearchOrder(const std::vector<std::string>& systemDirectories);

/// The system's directories. LD_LIBRARY_PATH of this process must be the one directory `given`.
std::vector<std::string> ListSystemDirectories(const std::string& given);

/// The file of that name that the loader opens before it asks its cache, "" without one: it skips
/// files that it cannot read or that are built for another machine. The subdirectories for particular
/// processors are searched only if they are in the order.
std::string FindAsLoaderDoes(const std::string& name, const SearchOrder& order);

/// The same, or else the first of that name in any of the directories, even if the loader skips it.
std::string FindFirst(const std::string& name, const SearchOrder& order);

/// The order with the subdirectories that the loader searches on this processor before each directory.
SearchOrder WithProcessorDirectories(const SearchOrder& order);

/// The same path without "..", which comes from run paths such as "$ORIGIN/../lib".
std::string WithoutDotDot(const std::string& path);

/// The run path in the file of a library that is in the process, "" without one.
std::string RunPathOf(const std::string& library);

/// The directories in LD_LIBRARY_PATH as the user wrote them, links and all.
std::vector<std::string> ListLibraryPath();

/// The directories before the system's, as a value of LD_LIBRARY_PATH.
std::string AsLibraryPath(const SearchOrder& order);

#endif
