// What a server says to a recipient and to a message, so that an answer too many or too few before is noticed.
#pragma once

#include <optional>
#include <vector>

#include "smtp/client/reply_meaning.h"
#include "smtp/client/send_window.h"
#include "smtp/server_reply.h"

namespace quillcast::smtp {

// A server that answers twice, once, is a command ahead from then on: what it says to the recipient reads as the answer
// to the message behind, which it may never take; and where it says nothing to one, what it says to the next command
// does. Where commands go without waiting for their answers, nothing but the server's words tells; most have a code
// (RFC 3463) or a sentence of their own for each. One that has not is in step whatever it says: a doubt costs people
// their message, and such slips are rare. One that has them, and mixes them up, is learnt to.
class ReplyHabits {
 public:
  // Of a connection. `window` remembers for all of them what one showed, and must outlive it.
  explicit ReplyHabits(SendWindow& window) : window_(window) {}

  // What the server answered to MAIL, RCPT and RSET, as they were taken.
  void OnSender(const ServerReply& reply);
  void OnRecipient(const ServerReply& reply);
  void OnReset(const ServerReply& reply) { reset_ = reply; }

  // Whose answer could stand in the place of the one to a message: the recipient's, and that to the command behind it;
  // or none but its own, as the server was silent before the message went.
  struct Neighbours {
    bool recipient = false;
    std::optional<Awaited> next;
    bool is_sure = false;
  };
  // kPerhaps: it reads like the answer to a command before. It is taken where the server says no more than it is asked
  // (OnInStep), which whoever asks has to find out.
  enum class Slip { kNone, kOneTooMany, kOneTooFew, kPerhaps };
  // Of an answer that takes a message, each once, for later ones are compared to it. The words of a slip are in doubt
  // from then on, until they are seen to be this server's habit.
  Slip OnMessage(const ServerReply& reply, const Neighbours& neighbours);
  // Of an answer that refuses a message, each once: kPerhaps where it says what the one before did.
  Slip OnMessageRefused(const ServerReply& reply, bool is_sure);
  // It does not: the words of those that were kPerhaps are this server's habit.
  void OnInStep();

 private:
  struct Answers {
    ServerReply sender;
    ServerReply recipient;
    ServerReply message;
  };
  Slip SlipOf(const ServerReply& message, const Neighbours& neighbours) const;
  bool IsToRecipient(const ServerReply& message) const;
  bool IsToReset(const ServerReply& message) const;
  bool IsToNextSender(const ServerReply& message) const;
  bool MayBeToAnother(const ServerReply& message) const;

  SendWindow& window_;
  // Of the message that comes; all without addresses, where they name some.
  ServerReply sender_;
  ServerReply recipient_;
  std::optional<ServerReply> reset_;
  std::optional<Answers> usual_;        // of the first
  std::optional<ServerReply> refusal_;  // of a message, the last
  // How many were answered in other words than their own recipient, or RSET.
  int unlike_recipient_ = 0;
  int unlike_reset_ = 0;
  bool like_reset_ = false;        // one was not
  std::vector<ServerReply> held_;  // those that were kPerhaps
};

}  // namespace quillcast::smtp
