#ifndef TESTS_TOKEN_MOCK_TOKENS_H
#define TESTS_TOKEN_MOCK_TOKENS_H

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// A call that the mock module has logged. For "hangs" and "overlaps", see `remark`.
struct MockCall {
  pid_t process = 0;
  std::string remark;
  std::string function;
  std::optional<unsigned long> slot;
  std::optional<unsigned long> session;
  std::optional<unsigned long> size;
  unsigned long result = 0;
};

/// The tokens of the mock module, and its log, in the tree of the case. Programs that the case starts
/// see the same.
class MockTokens {
 public:
  MockTokens();

  /// Replaces what the module reads, all at once; modules/mock_script.h has the format.
  void Set(const std::string& lines) const;
  void Set(std::initializer_list<std::string> lines) const;

  std::vector<MockCall> Log() const;
  void ClearLog() const;

  std::size_t Count(const std::string& function) const;
  std::size_t CountRemarks(const std::string& remark) const;

  /// The slots in which a session was opened, each once, ascending.
  std::vector<unsigned long> OpenedSlots() const;

  /// The sessions that were opened and neither closed nor ended by C_Finalize.
  std::size_t OpenSessions() const;

  /// The sizes of the pieces that were drawn, with success, in order.
  std::vector<unsigned long> Pieces() const;

  /// Waits until a call of that function hangs.
  bool Hangs(const std::string& function) const;
};

/// "%XX" for every byte that a value must not contain as it is.
std::string Encoded(const std::string& text);

#endif
