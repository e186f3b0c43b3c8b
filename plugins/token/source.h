#ifndef RNG_TOKEN_SOURCE_H
#define RNG_TOKEN_SOURCE_H

#include "pkcs11/survey.h"
#include "turns.h"

#include <atomic>
#include <forward_list>
#include <mutex>
#include <string>

#include <rngaggregator/checked_rng.h>

/// Draws from tokens. Each process has one object: a forked copy makes its own, because a lock of the original's object
/// may be held by a thread that the copy does not have.
///
/// Threads: any. Draws run concurrently, each with its own session, unless a module is not thread-safe.
class Source {
 public:
  /// In a forked copy of the process, `original` is the object whose selection it inherits. Otherwise null.
  Source(Modules& all, const TokenUri& which, const Source* original);

  /// Fills the buffer from one token: the selected one, or the first that works.
  bool Draw(void* buffer, std::size_t size);

  /// Whether a token is there and returns bytes that look random. If so, an alarm ends.
  bool Test();

  /// Selects a token for later draws by its serial number; "" means any token. Returns false, and changes nothing, if
  /// there is no such token, if there are two, or if it does not pass the test.
  bool Select(const std::string& serial);
  const std::string& Selected() const { return *selected; }

  /// Ends waiting draws at once, and the others when the module returns.
  void Cancel() { turns.Cancel(); }

  /// The token of the last draw that succeeded.
  Token Used();

  /// A token, and the result of a small draw from it.
  struct Finding {
    Token token;
    CK_RV drawn = CKR_CANCEL;  ///< CKR_CANCEL if no draw was tried
    bool isRandom = false;     ///< whether the bytes look random
  };
  struct Findings {
    std::vector<Finding> all;
    std::vector<std::string> problems;  ///< in sentences
    bool hasModules = false;            ///< whether any module is initialized
  };
  Findings Examine();

 private:
  struct Request;

  bool Test(const std::string& serial);
  bool UseGoodToken();
  Finding Examine(const Token& token, Turn& turn);
  CK_RV DrawUnchecked(unsigned char* bytes, std::size_t size, const std::string& serial,
                      Token& found);
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

  std::mutex lock;  // of what follows; never held during a call into a module
  Token used = {};
  // Every selection so far. None is removed, so `selected` can be read without the lock.
  std::forward_list<std::string> selections{""};
  std::atomic<const std::string*> selected;
};

#endif
