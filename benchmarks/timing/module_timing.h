#ifndef BENCHMARKS_TIMING_MODULE_TIMING_H
#define BENCHMARKS_TIMING_MODULE_TIMING_H

#include <functional>
#include <string>
#include <vector>

/// Loads the modules at the given paths, asks each for its one object, and closes them all.
using StartModules = std::function<void(const std::vector<std::string>& paths)>;

/// Registers another way of starting twelve modules, which are copies of the built file `module`.
/// It is compared with a loop of dlopen, dlsym and dlclose over twelve trivial ones.
void RegisterModulePeer(const std::string& name, const std::string& module, StartModules start);

/// Registers the library's own start and stop with twelve plug-ins, display probes included.
void RegisterOwnModules();

#endif
