#ifndef OPENSSL_CHILD_CONVERSATION_H
#define OPENSSL_CHILD_CONVERSATION_H

#include "openssl/request.h"

#include <optional>
#include <string>

/// The conversation with the program that has started this one, over descriptor 3. When that program ends or closes its
/// socket, this process ends within two seconds, whatever a plug-in is doing. At most one object exists.
class Conversation {
 public:
  /// Throws a `std::runtime_error` if nobody has started a conversation.
  Conversation();
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;
  ~Conversation();

  /// Waits for the next request. Nothing if the conversation has ended.
  std::optional<DrawRequest> Receive() const;

  void AnswerBytes(const DrawRequest& request, const std::string& generator,
                   const void* bytes) const;

  /// `result` says whether the conversation goes on.
  void AnswerFailure(const DrawRequest& request, DrawAnswer::Result result,
                     const std::string& reason) const;
};

#endif
