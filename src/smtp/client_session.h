// The client's side of SMTP without socket, clock or thread: what came goes in, what to write and what became of it
// comes out.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "smtp/body_writer.h"
#include "smtp/capabilities.h"
#include "smtp/client.h"
#include "smtp/envelope.h"
#include "smtp/outcome.h"
#include "smtp/reply.h"
#include "smtp/sasl.h"
#include "smtp/smtp_line.h"

namespace quillcast::smtp {

// What is known of the connection before the first byte.
struct SessionSetup {
  std::string local_name;  // for EHLO: "[127.0.0.1]"
  bool loopback = false;   // the server is this computer
  bool encrypted = false;  // TLS stands already
};

struct Event {
  enum class Kind {
    kLogLine,   // `text`: "C: ..." or "S: ...", secrets masked, not yet safe to show
    kStartTls,  // make the handshake now, then call TlsStarted or GiveUp
    kReady,     // greeted and signed in, once
    kOutcome,   // of the message that was submitted
    kClosed,    // the session is over; `outcome` says why. Comes last
  };
  Kind kind = Kind::kLogLine;
  std::string text;
  Outcome outcome;
};

// Order: greeting, EHLO (HELO where it is refused), STARTTLS and EHLO again, AUTH; then for each message MAIL, RCPT,
// DATA and its bytes (or BDAT with them), with RSET after a refusal that leaves a transaction open; QUIT.
//
// Sending and receiving have a state each. Sending is `out_` and `body_`: what is to be written, ahead of everything.
// Receiving is `awaited_`: the commands that are out (or in `out_`) and have no reply yet, oldest first; each reply
// belongs to its front. Sending may be ahead of receiving by as many commands as `awaited_` holds. This version waits
// in lock-step: nothing is sent while anything is awaited, the bytes of a message excepted, which follow their 354 (or
// their BDAT) at once and are awaited as kEndOfData from their first byte on. Where one must wait in any version:
// after EHLO, STARTTLS, each line of AUTH, DATA, and the end of the data (RFC 2920 3.1).
class ClientSession {
 public:
  // `options` must outlive the session.
  ClientSession(const ClientOptions& options, SessionSetup setup);
  ~ClientSession();

  // Sends a message, which must live until its outcome has come. Only when Idle().
  void Submit(const Envelope& envelope, MessageSource& message);
  // Only when Idle().
  void Quit();

  void Receive(std::string_view bytes);
  void TlsStarted();
  // The connection is of no more use, for this reason: the server closed it, did not answer in time, or the person
  // cancelled. A message whose last byte is out becomes kUnknown.
  void GiveUp(Outcome why);

  // What to write next, empty when there is nothing; valid until the next call of another function.
  std::string_view BytesToSend();
  // The first `count` bytes of it are out.
  void Sent(std::size_t count);

  std::optional<Event> NextEvent();

  // Ready for a message: signed in, no reply awaited, nothing to send.
  bool Idle() const;
  bool closed() const { return closed_; }
  bool message_under_way() const { return envelope_ != nullptr; }
  // The last byte of the message is out: it may be taken, whatever happens from here.
  bool end_of_data_out() const { return end_of_data_out_; }
  std::uint64_t message_octets_taken() const { return body_ ? body_->taken() : 0; }
  const Capabilities& capabilities() const { return capabilities_; }

  // What a reply is to. The order is that of the table of meanings.
  enum class Command { kGreeting, kEhlo, kHelo, kStartTls, kAuth, kMail, kRcpt, kData, kEndOfData, kReset, kQuit };

 private:
  void Send(Command command, const SmtpLine& line);
  void SendWords(Command command, const char* words);
  void SendSecret(const std::string& line, std::string_view shown);
  void SendEhlo();
  void Log(std::string_view side, std::string_view line);

  void OnReply(const ServerReply& reply);
  void OnAccepted(Command command, const ServerReply& reply);
  void OnRefused(Command command, const ServerReply& reply);
  void OnGreeting(const ServerReply& reply);
  void OnCapabilities(const ServerReply& reply);
  void OnChallenge(const ServerReply& reply);
  bool MayUseStartTls() const;
  void SignIn();
  void SignInWith(std::unique_ptr<SaslMechanism> mechanism);
  void BecomeReady();
  void StartData();
  void StartBody(BodyWriter::Form form);
  void Fail(ResultCode code, std::string reason);
  void Senseless(std::string_view what);
  void FinishMessage(Outcome outcome);
  void Close(Outcome why);

  const ClientOptions& options_;
  SessionSetup setup_;
  Capabilities capabilities_;
  bool extended_ = false;  // the greeting, or the account, allows extensions
  bool ready_ = false;
  bool closed_ = false;
  bool handshake_ = false;  // between the 220 to STARTTLS and TlsStarted

  // Sending.
  std::string out_;
  std::size_t out_at_ = 0;  // what lies before is out
  bool out_secret_ = false;
  std::optional<BodyWriter> body_;
  bool end_of_data_out_ = false;

  // Receiving.
  ReplyReader reader_;
  std::deque<Command> awaited_;
  std::unique_ptr<SaslMechanism> mechanism_;

  Envelope fitted_;                     // to what the server can do
  const Envelope* envelope_ = nullptr;  // `fitted_` while a message is under way
  MessageSource* message_ = nullptr;
  std::deque<Event> events_;
};

}  // namespace quillcast::smtp
