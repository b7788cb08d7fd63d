// The client's side of SMTP without socket, clock or thread: what came goes in, what to write and what became of it
// comes out.
#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

#include "smtp/capabilities.h"
#include "smtp/client/client_options.h"
#include "smtp/client/opening.h"
#include "smtp/client/send_window.h"
#include "smtp/client/session_events.h"
#include "smtp/client/transfers.h"
#include "smtp/client/wire.h"
#include "smtp/envelope.h"
#include "smtp/message_source.h"
#include "smtp/outcome.h"

namespace quillcast::smtp {

// Order: greeting, EHLO (HELO where it is refused), STARTTLS and EHLO again, AUTH; then for each message MAIL, RCPT,
// DATA and its bytes (or BDAT with them); QUIT.
//
// Three parts, each with its own fields: the Opening up to AUTH, the Transfers from MAIL to the outcome, and under both
// the Wire. The session owns them, gives each reply to the part whose command it answers, and ends all three together.
//
// Sending and receiving have a state each. Sending is the message that the transfers are at with its next step, and
// what the wire has not written yet, ahead of everything. A command is made when the wire has room for it, so that the
// log has the order of the wire. Receiving is what the wire awaits: the commands that are made and have no reply yet,
// oldest first. Each reply belongs to its front, and a front that is a command of a message belongs to the oldest
// message; a reply to a command whose last byte is not out, or to nothing, is senseless. A message has its outcome when
// the last of its commands is answered, so outcomes come in the order of the messages.
//
// How far sending may be ahead of receiving:
//   lock-step  By one command; the bytes of a message follow their 354, or their BDAT, at once. So it is where the
//              account does not ask for pipelining, the server does not offer it, or did not keep it.
//   DATA       MAIL, RCPT and DATA go together; then their replies are waited for. The end of a message and the next
//              one's MAIL, RCPT and DATA go together (RFC 2920 3.1), so that at most one message is in doubt.
//   BDAT       Whole messages go one behind the other, as many as the window takes.
// In BDAT two rules keep one message's failure from the next:
//   1. RSET goes before each message that follows another one without its reply. After a BDAT that failed, or a
//      recipient that was refused, the transaction is in doubt until RSET (RFC 3030 4.2): MAIL would be refused as
//      nested, or the next message would go to the recipient of the last one as well.
//   2. The first message of a connection, a large one, and each once the server has shown trouble waits with its BDAT
//      for the replies to MAIL and RCPT: a server that does not keep pipelining, or that closes after so many messages,
//      is found out before any message is in doubt.
//
// A server may take only so many messages over one connection, and says so at a MAIL: with a 4xx, or with a 421. Where
// it has taken some before, that is no trouble: the messages refused go over a new connection, and so do those behind a
// 421, where the server closes then. For one that closes without a word a message at which a limit is likely waits like
// the first one: behind 10, 20, 50 and so on, or as many as were taken when a limit was seen last. No connection is
// ended before the server says so again. Where it has taken none, but there are other connections, it may take fewer of
// those than there are: so it is where it says so at the first MAIL. The messages then go over the others, as if they
// had not been here.
//
// A message that was taken in words that the server has for another command as well may owe that to an answer too many.
// It is held, and told as sent once the server is found in step: that costs an honest one a RSET and a moment of
// silence, once in a run. To one that is not nothing goes ahead any more, and no message before it was silent.
//
// When the connection ends, a message whose last byte is not out has not been taken, and may go over another one. One
// whose last byte is out without a reply is kUnknown, but for those behind a 421 that the server closes after.
// Whichever wait failed, its end says what was waited for (Meaning::missing).
class ClientSession {
 public:
  // `options` and `window` must outlive the session.
  ClientSession(const ClientOptions& options, SessionSetup setup, SendWindow& window);
  ClientSession(const ClientSession&) = delete;
  ClientSession& operator=(const ClientSession&) = delete;

  // Whether a message should be submitted now, if there is one.
  bool WantsMessage() { return !closed_ && transfers_.WantsMessage(); }
  // Sends a message, which must live until its outcome has come. Only when WantsMessage().
  void Submit(const Envelope& envelope, MessageSource& message);
  // Messages of which no byte is made yet are left.
  void Withdraw();
  // Whether the server takes no further message over this connection, but may over another one; and whether it took
  // none, because there are too many connections.
  bool UsedUp() const { return transfers_.UsedUp(); }
  bool crowded() const { return transfers_.crowded(); }
  // Whether the server let a message begin over it.
  bool accepted() const { return transfers_.accepted(); }
  // Messages without outcome.
  std::size_t in_flight() const { return transfers_.size(); }
  // Whether the server's last reply came without delay.
  void SetQuick(bool quick) { transfers_.SetQuick(quick); }
  // Whether it is the server's silence that is waited for, as long as Patience(); and there it was.
  bool Listens() const { return !closed_ && wire_.Unsent().empty() && transfers_.Listens(); }
  void OnSilence();
  // Only when Idle().
  void Quit() { wire_.Send(Awaited::kQuit, "QUIT"); }

  void Receive(std::string_view bytes);
  void TlsStarted();
  // The connection is of no more use, for this reason: the server closed it, did not answer in time, or the person
  // cancelled. What was waited for is put behind the reason.
  void GiveUp(Outcome why);

  // What to write next, empty when there is nothing; valid until the next call of another function.
  std::string_view BytesToSend();
  // The first `count` bytes of it are out.
  void Sent(std::size_t count) { wire_.Sent(count); }

  // Valid until the next call of another function; nullptr when there is none.
  const Event* NextEvent() { return events_.Next(); }

  // Ready for a message: signed in, no reply awaited, nothing to send.
  bool Idle() const;
  bool closed() const { return closed_; }
  // What the server offers, of what is used; once it is greeted.
  const Capabilities& capabilities() const { return opening_.capabilities(); }

  // A number that changes when the server has done what it was waited for: answered a command, or taken a block.
  std::uint64_t Step() const { return wire_.Step(); }
  // How long that step may take at most (RFC 5321 4.5.3.2).
  std::chrono::milliseconds Patience() const {
    if (Listens()) return SendWindow::kSilence;
    const std::chrono::milliseconds patience = MeaningOf(wire_.Due()).patience;
    return transfers_.said_goodbye() ? std::min(patience, Transfers::kEndsSoon) : patience;
  }

  // Of the message whose bytes are going out: how many are made, and of how many.
  std::uint64_t octets_made() const { return transfers_.octets_made(); }
  std::uint64_t octets_in_all() const { return transfers_.octets_in_all(); }

 private:
  void TakeReply();
  void OnReply(const ServerReply& reply);
  void OnEarlyReply(const ServerReply& reply);
  void OnGoodbye(const ServerReply& reply);
  void OnAnswer(Awaited command, const ServerReply& reply, bool accepted);
  void Follow(Opening::Step step);
  std::string_view Missing() const;
  void EndWhereDue();
  void Close(SessionEnd end);

  const ClientOptions& options_;
  SessionEvents events_;
  Wire wire_;
  Opening opening_;
  Transfers transfers_;
  bool ready_ = false;
  bool closed_ = false;
};

}  // namespace quillcast::smtp
