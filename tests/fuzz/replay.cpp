// Makes of a target a program that gives it every file of a folder. It fails when there is none and
// when one differs.

#include "tests/fuzz/fuzz_target.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::cerr << "usage: " << arguments[0] << " FOLDER\n";
    return 2;
  }
  int inputs = 0;
  int differences = 0;
  for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string input(std::istreambuf_iterator<char>(file), {});
    if (!file) throw std::runtime_error("cannot read " + entry.path().string());
    ++inputs;
    try {
      CheckInput(input);
    } catch (const std::runtime_error& difference) {
      ++differences;
      std::cerr << entry.path().string() << ": " << difference.what() << "\n";
    }
  }
  std::cout << "replayed " << inputs << " inputs, " << differences << " differ\n";
  return inputs > 0 && differences == 0 ? 0 : 1;
}
