// What a server says to a recipient and to a message, so that an answer too many before is noticed.
#pragma once

#include <optional>

#include "smtp/server_reply.h"

namespace quillcast::smtp {

// A server that answers twice, once, is a command ahead from then on: what it says to the recipient reads as the answer
// to the message behind, which it may never take. Where several messages are in flight nothing but its words tells;
// most have a code (RFC 3463) or a sentence of their own for each. The first message over a connection waits for its
// envelope, so that the two are known in step.
class ReplyHabits {
 public:
  void OnRecipient(const ServerReply& reply) { recipient_ = reply; }

  // To be asked of each answer that takes a message: whether it is the one to the recipient.
  bool IsOutOfStep(const ServerReply& to_message) {
    if (!usual_) {
      usual_ = {recipient_, to_message};
      return false;
    }
    const auto& [recipient, message] = *usual_;
    if (!recipient.enhanced.empty() && !message.enhanced.empty() && recipient.enhanced != message.enhanced) {
      return to_message.enhanced == recipient.enhanced;
    }
    return recipient.text != message.text && to_message.text == recipient.text;
  }

 private:
  struct Pair {
    ServerReply recipient;
    ServerReply message;
  };
  ServerReply recipient_;  // of the message that comes
  std::optional<Pair> usual_;
};

}  // namespace quillcast::smtp
