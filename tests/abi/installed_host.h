#ifndef TESTS_ABI_INSTALLED_HOST_H
#define TESTS_ABI_INSTALLED_HOST_H

#include <string>

/// Installs a host program in the tree's bin/ and the library under the name that hosts are linked
/// with in its lib/. Runs the host in a process of its own and returns what it prints; `searchPath`
/// is its LD_LIBRARY_PATH, "" for that of the test.
std::string RunInstalledHost(const std::string& host, const std::string& searchPath = "");

#endif
