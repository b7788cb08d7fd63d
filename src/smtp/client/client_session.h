// The client's side of SMTP without socket, clock or thread: what came goes in, what to write and what became of it
// comes out.
#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "smtp/capabilities.h"
#include "smtp/client/body_writer.h"
#include "smtp/client/client_options.h"
#include "smtp/client/reply_reader.h"
#include "smtp/client/reused_queue.h"
#include "smtp/client/send_window.h"
#include "smtp/envelope.h"
#include "smtp/outcome.h"
#include "smtp/sasl/sasl_exchange.h"
#include "smtp/smtp_line.h"

namespace quillcast::smtp {

// What is known of the connection before the first byte.
struct SessionSetup {
  std::string local_name;  // for EHLO: "[127.0.0.1]"
  bool loopback = false;   // the server is this computer by its name: what a name leads to is no proof
  bool encrypted = false;  // TLS stands already
  std::string nonce = {};  // for signing in, see Credentials
  std::chrono::system_clock::time_point now = {};
};

struct Event {
  enum class Kind {
    kLogLine,   // `text`: "C: ..." or "S: ...", secrets masked, not yet safe to show
    kStartTls,  // make the handshake now, then call TlsStarted or GiveUp
    kReady,     // greeted and signed in, once
    kOutcome,   // of the oldest message that has none yet
    kClosed,    // the session is over; `outcome` says why. Comes last
  };
  Kind kind = Kind::kLogLine;
  std::string text;
  std::size_t place = 0;  // of a log line: how many messages without outcome come before the one that it belongs to
  Outcome outcome;
  bool again = false;  // of a message: the server has not taken it for certain, and another connection may serve it
};

// Order: greeting, EHLO (HELO where it is refused), STARTTLS and EHLO again, AUTH; then for each message MAIL, RCPT,
// DATA and its bytes (or BDAT with them); QUIT.
//
// Sending and receiving have a state each. Sending is `transfers_[sending_]` with its next step, and `out_`: what is to
// be written, ahead of everything. A command is made when there is room for it in `out_`, so that the log has the order
// of the wire. Receiving is `awaited_`: the commands that are out (or in `out_`) and have no reply yet, oldest first.
// Each reply belongs to its front, and a front that is a command of a message belongs to the oldest message; a reply to
// a command whose last byte is not out, or to nothing, is senseless. A message has its outcome when the last of its
// commands is answered, so outcomes come in the order of the messages.
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
// it has taken some before, that is no trouble: the messages refused go over a new connection, which is ended at that
// number. So that no message is in doubt then, one at which a limit is likely waits like the first one.
//
// When the connection ends, a message whose last byte is not out has not been taken, and may go over another one. One
// whose last byte is out without a reply is kUnknown, also behind a 421: not every server stops where it says so.
class ClientSession {
 public:
  // `options` and `window` must outlive the session.
  ClientSession(const ClientOptions& options, SessionSetup setup, SendWindow& window);
  ~ClientSession();

  // Whether a message should be submitted now, if there is one.
  bool WantsMessage();
  // Sends a message, which must live until its outcome has come. Only when WantsMessage().
  void Submit(const Envelope& envelope, MessageSource& message);
  // Messages of which no byte is made yet get this outcome.
  void Withdraw(const Outcome& why);
  // Whether the server takes no further message over this connection, but may over another one.
  bool UsedUp() const { return used_up_ || submitted_ >= window_.per_connection(); }
  // Only when Idle().
  void Quit();

  void Receive(std::string_view bytes);
  void TlsStarted();
  // The connection is of no more use, for this reason: the server closed it, did not answer in time, or the person
  // cancelled.
  void GiveUp(Outcome why);

  // What to write next, empty when there is nothing; valid until the next call of another function.
  std::string_view BytesToSend();
  // The first `count` bytes of it are out.
  void Sent(std::size_t count);

  // Valid until the next call of another function; nullptr when there is none.
  const Event* NextEvent();

  // Ready for a message: signed in, no reply awaited, nothing to send.
  bool Idle() const;
  bool closed() const { return closed_; }
  // What the server offers, of what is used; once it is greeted.
  const Capabilities& capabilities() const { return capabilities_; }

  // A number that changes when the server has done what it was waited for: answered a command, or taken a block.
  std::uint64_t Step() const { return steps_ * 2 + (ReplyIsDue() ? 1 : 0); }
  // How long that step may take at most (RFC 5321 4.5.3.2).
  std::chrono::minutes Patience() const;

  // Of the message whose bytes are going out: how many are made, and of how many.
  std::uint64_t octets_made() const { return octets_made_; }
  std::uint64_t octets_in_all() const { return octets_in_all_; }

  // What a reply is to. The order is that of the table of meanings.
  enum class Command {
    kGreeting,
    kEhlo,
    kHelo,
    kStartTls,
    kAuth,
    kMail,
    kRcpt,
    kData,
    kEndOfData,
    kLoneDot,  // the end of data where DATA was accepted in vain
    kReset,
    kQuit
  };

 private:
  // One message between Submit and its outcome.
  struct Transfer {
    enum class Next { kReset, kMail, kRcpt, kContent, kReplyToData, kBody, kLoneDot, kNothing, kImpossible };
    Envelope envelope;  // fitted to what the server can do
    MessageSource* message = nullptr;
    Next next = Next::kReset;
    bool chunked = false;     // BDAT
    bool open = false;        // the server may hold a transaction for it
    bool ended = false;       // its last byte is made; `end` tells where
    std::uint64_t end = 0;    // of the bytes of this connection
    std::size_t awaited = 0;  // its commands without a reply
    bool sender_refused = false;
    bool again = false;              // with the verdict: another connection may serve it
    std::optional<Outcome> verdict;  // the first refusal
  };
  struct Awaited {
    Command command = Command::kGreeting;
    std::uint64_t end = 0;  // where its last byte is among the bytes of this connection
  };
  static constexpr std::uint64_t kNotMade = std::numeric_limits<std::uint64_t>::max();

  // Sending.
  void Send(Command command, const SmtpLine& line);
  void SendSecret(const SecretLine& line);
  void SendHello(Command command);
  void Await(Command command, std::uint64_t end);
  bool SendMore();
  bool MaySend(const Transfer& transfer) const;
  bool SendNext(Transfer& transfer);
  void SendMail(Transfer& transfer);
  void SendRcpt(Transfer& transfer);
  bool SendContent(Transfer& transfer);
  void SendBody(Transfer& transfer);
  std::uint64_t made() const { return base_ + out_.size(); }
  std::uint64_t sent() const { return base_ + out_at_; }
  Event& Log(std::string_view side, std::string_view line);

  // Receiving.
  bool ReplyIsDue() const { return !awaited_.empty() && awaited_.front().end <= sent(); }
  bool SigningIn() const { return !awaited_.empty() && awaited_.front().command == Command::kAuth; }
  void LogLines(std::string_view lines);
  void TakeReply();
  void OnReply(const ServerReply& reply);
  void OnGoodbye(Command command, const ServerReply& reply);
  void OnAccepted(Command command, const ServerReply& reply);
  void OnRefused(Command command, const ServerReply& reply);
  bool OfMessage(Command command) const { return command >= Command::kMail && command <= Command::kReset; }
  void OnMessageAccepted(Command command, const ServerReply& reply);
  void OnMessageRefused(Command command, const ServerReply& reply);
  bool BreaksPipelining(Command command, int code) const;
  bool IsLimit(Command command) const { return command == Command::kMail && took_; }
  void UseUp(const Outcome& why);
  void OnGreeting(const ServerReply& reply);
  void OnCapabilities(const ServerReply& reply);
  void OnChallenge(const ServerReply& reply);
  bool MayUseStartTls() const;
  void HidePassword();
  void SignIn();
  void BecomeReady();

  // Ends.
  void FinishAnswered();
  void PopTransfer();
  bool IsOut(const Transfer& transfer) const { return transfer.ended && transfer.end <= sent(); }
  Event& NewEvent(Event::Kind kind);
  void Fail(ResultCode code, std::string reason);
  void Senseless(std::string_view what);
  // `why` is told of the oldest message; `again`: where it is not out, it may go over another connection, as those
  // behind it may. `goodbye`: the server said that it takes nothing more.
  void Close(Outcome why, bool again = false);

  const ClientOptions& options_;
  SessionSetup setup_;
  SendWindow& window_;
  Capabilities capabilities_;
  bool extended_ = false;  // the greeting, or the account, allows extensions
  bool ready_ = false;
  bool pipelined_ = false;
  bool proven_ = false;    // the server has answered commands that came together
  bool in_doubt_ = false;  // a transaction may be open: RSET goes before the next message
  bool took_ = false;      // a message
  bool used_up_ = false;   // it said that it takes no more over this connection
  bool closed_ = false;
  bool handshake_ = false;  // between the 220 to STARTTLS and TlsStarted

  // Sending.
  ReusedQueue<Transfer> transfers_;  // those without outcome, oldest first
  std::size_t sending_ = 0;          // those before it are wholly made
  std::uint64_t octets_ = 0;         // of all of them
  std::size_t submitted_ = 0;        // over this connection
  std::size_t mails_made_ = 0;       // MAIL commands
  std::size_t mails_taken_ = 0;
  std::optional<BodyWriter> body_;  // of transfers_[sending_]
  std::uint64_t octets_made_ = 0;
  std::uint64_t octets_in_all_ = 0;
  std::string out_;
  std::size_t out_at_ = 0;  // what lies before is out
  std::uint64_t base_ = 0;  // how many bytes of this connection were before out_
  bool out_secret_ = false;

  // Receiving.
  ReplyReader reader_;
  ReusedQueue<Awaited> awaited_;
  SecretTraces traces_;  // of signing in, to the end of the session
  std::optional<SaslExchange> exchange_;
  std::string cancelled_;  // why the exchange was cancelled; the reply to that ends the session

  std::uint64_t steps_ = 0;
  ReusedQueue<Event> events_;
};

}  // namespace quillcast::smtp
