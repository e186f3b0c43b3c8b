#ifndef RNG_TOKEN_SESSION_H
#define RNG_TOKEN_SESSION_H

#include "modules.h"

#include <cstddef>
#include <cstring>

/// A session with the token in a slot. The destructor closes it.
class Session {
 public:
  Session(CK_FUNCTION_LIST& functions, CK_SLOT_ID slot);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  CK_RV Result() const { return opened; }

  /// Draws in one piece after another. A piece that the token refuses is halved, because tokens do not report how much
  /// they accept. Calls `goesOn()` after each piece, and returns CKR_CANCEL if that returns false.
  ///
  /// Bytes that the token does not write are zero, so that the check of the draw finds them: what a refused piece or
  /// another token has left there must not pass for this token's bytes.
  template <typename GoesOn>
  CK_RV Draw(unsigned char* bytes, std::size_t size, const GoesOn& goesOn) {
    if (size != 0) std::memset(bytes, 0, size);
    std::size_t piece = kLargestPiece;
    for (std::size_t done = 0; done < size;) {
      if (piece > size - done) piece = size - done;
      const CK_RV result = module.C_GenerateRandom(handle, bytes + done, piece);
      if (!goesOn()) return CKR_CANCEL;
      if (result == CKR_OK) {
        done += piece;
      } else if (piece > 1 && MayAcceptLess(result)) {
        std::memset(bytes + done, 0, piece);
        piece /= 2;
      } else {
        return result;
      }
    }
    return CKR_OK;
  }

 private:
  static constexpr std::size_t kLargestPiece = 256;

  static bool MayAcceptLess(CK_RV result);

  CK_FUNCTION_LIST& module;
  CK_SESSION_HANDLE handle = 0;
  const CK_RV opened;
};

#endif
