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

SearchOrder FindSearchOrder();

/// The first file of that name, "" without one. It need not be one that the loader takes: it passes
/// over a file that cannot be read, and opens none that it cannot use.
std::string FindFirst(const std::string& file, const SearchOrder& order);

/// The directories as a value of LD_LIBRARY_PATH: with it another program, and what that opens,
/// finds the files that the aggregator finds.
std::string AsLibraryPath(const SearchOrder& order);

#endif
