#include "benchmarks/machine/folder.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

std::filesystem::path MakeFolder(const std::filesystem::path& parent) {
  std::string name = parent / "rng-machine-XXXXXX";
  if (!::mkdtemp(name.data())) throw std::runtime_error("no folder in " + parent.string());
  return name;
}

}  // namespace

Folder::Folder(const std::filesystem::path& parent) : path(MakeFolder(parent)) {}

Folder::~Folder() {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}
