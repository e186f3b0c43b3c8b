#include "tests/quality/peers/peer.h"

#include <cstdio>
#include <stdexcept>
#include <unistd.h>

namespace {

class File {
 public:
  explicit File(const Bytes& bytes) {
    const int file = ::mkstemp(path);
    if (file < 0 ||
        ::write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
      throw std::runtime_error("cannot write a file");
    }
    ::close(file);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { ::unlink(path); }
  const char* Path() const { return path; }

 private:
  char path[32] = "/tmp/rng-test-XXXXXX";
};

}  // namespace

std::vector<std::string> RunPeer(const std::string& command, const Bytes& input) {
  const File file(input);
  std::FILE* const output = ::popen((command + " 2>&1 <" + file.Path()).c_str(), "r");
  std::vector<std::string> lines;
  for (char line[512]; std::fgets(line, sizeof line, output);) lines.push_back(line);
  ::pclose(output);
  return lines;
}
