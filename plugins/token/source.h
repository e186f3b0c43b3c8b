#ifndef RNG_TOKEN_SOURCE_H
#define RNG_TOKEN_SOURCE_H

#include "pkcs11/survey.h"
#include "turns.h"

#include <atomic>
#include <forward_list>
#include <mutex>
#include <string>

#include <rngaggregator/checked_rng.h>

/// Draws from tokens. One object for each process: a forked copy makes its own, because a thread that it does not
/// have may hold a lock of the original's.
///
/// Threads: any. Draws run at once, each with a session of its own, unless a module does not bear threads.
class Source {
 public:
  /// `original`: what a forked copy of the process takes over the selection from, or null.
  Source(Modules& all, const TokenUri& which, const Source* original);

  /// Fills the buffer from one token: the selected one, or the first that works.
  bool Draw(void* buffer, std::size_t size);

  /// Whether a token is there and gives bytes that differ. If so, draws go on after an alarm.
  bool Test();

  /// Selects a token for later draws by its serial number, with "" any. Returns false, and changes nothing, if there is
  /// no such token, or two, or if it does not pass the test.
  bool Select(const std::string& serial);
  const std::string& Selected() const { return *selected; }

  /// Ends the draws that wait for their turn at once, and the others when the module returns.
  void Cancel() { turns.Cancel(); }

  /// The token of the last draw that succeeded.
  Token Used();

  /// A token, and what a small draw from it returned.
  struct Finding {
    Token token;
    CK_RV drawn = CKR_CANCEL;  ///< as it is where none was made
    bool isRandom = false;     ///< whether the bytes were not evidently wrong
  };
  struct Findings {
    std::vector<Finding> all;
    std::vector<std::string> problems;  ///< in sentences
    bool hasModules = false;            ///< whether any module could be asked
  };
  Findings Examine();

 private:
  struct Request;

  bool Test(const std::string& serial);
  Finding Examine(const Token& token, Turn& turn);
  CK_RV DrawUnchecked(unsigned char* bytes, std::size_t size, const std::string& serial);
  CK_RV DrawFromUsed(Request& request);
  CK_RV DrawFromFirst(Request& request);
  CK_RV DrawFrom(const Token& token, Request& request);
  static bool IsEnd(CK_RV result, const Request& request);
  void Remember(const Token& token);
  bool OpenAgain(Request& request);

  Modules& modules;
  const TokenUri& uri;
  Turns turns;
  RngDrawCheck check;
  std::atomic<std::uint64_t> openings;  // how many times this process has initialized the modules

  std::mutex lock;  // of what follows; never held while a module is called
  Token used = {};
  std::forward_list<std::string> selections{
      ""};  // all there were, so that `selected` can be read without the lock
  std::atomic<const std::string*> selected;
};

#endif
