// What a server says to a recipient and to a message, so that an answer too many before is noticed.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "smtp/server_reply.h"

namespace quillcast::smtp {

// A server that answers twice, once, is a command ahead from then on: what it says to the recipient reads as the answer
// to the message behind, which it may never take; and where it says nothing to one, what it says to the next sender
// does. Where the message has gone without waiting for its envelope, nothing but the server's words tells; most have a
// code (RFC 3463) or a sentence of their own for each.
class ReplyHabits {
 public:
  // What it answered to MAIL and to RCPT, as they were taken.
  void OnSender(const ServerReply& reply);
  void OnRecipient(const ServerReply& reply, std::string_view address);

  // How a message went: in one piece behind DATA, for which the server gave its word; in a chunk once its envelope was
  // answered, or ahead of that.
  enum class Sent { kInvited, kChunk, kChunkAhead };
  // To be asked of each answer that takes a message: whether it is the one to the recipient.
  bool IsOutOfStep(const ServerReply& to_message, Sent how);

 private:
  struct Pair {
    ServerReply recipient;
    ServerReply message;
  };
  bool IsOddAtOnce(const ServerReply& to_message) const;

  // Of the message that comes.
  ServerReply sender_;
  ServerReply recipient_;  // without the address, where it names it
  std::string address_;
  std::optional<Pair> usual_;
};

}  // namespace quillcast::smtp
