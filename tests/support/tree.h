#ifndef TESTS_SUPPORT_TREE_H
#define TESTS_SUPPORT_TREE_H

#include <initializer_list>
#include <string>

constexpr char kTreeVariable[] = "RNG_TEST_TREE";

/// A path in the tree, the folder of this test process, which is removed when the process ends. lib/
/// holds the library under test and the fakes that the case installs; etc/ and share/ are the
/// directories that the fake known-path service names.
std::string TreePath(const std::string& relative);

/// Lays out the tree: the library, an X library that finds no display, a known-path service.
void LayOutTree();

/// The file name of a kind's plug-in, from kinds.def.
const std::string& LibraryFileOf(const std::string& kind);

/// The path of a fake plug-in of a kind where it was built.
std::string FakePlugin(const std::string& kind, const std::string& variant);

/// Puts a fake plug-in of a kind where the library finds it.
void InstallPlugin(const std::string& kind, const std::string& variant = "scripted");
void InstallPlugins(std::initializer_list<std::string> kinds);
void InstallAllPlugins(const std::string& variant = "scripted");

/// Replaces the X library: "whole", "refusing" (no display), "no_open", "no_close", "crashing", "slow",
/// or "absent".
void InstallX11(const std::string& variant);

/// Replaces the known-path service: "whole", "no_function", "crashing", "crashing_later" (in the third call),
/// "crashing_for_data" (in the fourth, where the doctor asks for the data file), "exiting" (with _Exit), "quitting"
/// (with exit), or "absent" (a file that is not a library, so that the tree has none).
void InstallKnownPath(const std::string& variant);

std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& content);

#endif
