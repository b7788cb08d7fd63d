// The mailbox's side of one SMTP connection (RFC 5321), without sockets: bytes in, bytes out, message content to a
// sink.
//
// Order: a greeting, EHLO or HELO, then any number of transactions MAIL, RCPT..., DATA or BDAT... Commands may come
// many at a time (RFC 2920); the replies to all that one Receive brought wait together in BytesToSend.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"
#include "smtp/mailbox/client_command.h"
#include "smtp/mailbox/content_scanner.h"
#include "smtp/mailbox/received_envelope.h"
#include "smtp/mailbox/server_features.h"
#include "smtp/mailbox/server_mechanism.h"
#include "smtp/mailbox/server_rule.h"
#include "smtp/server_reply.h"

namespace quillcast::smtp {

// The same for all sessions of one mailbox.
struct ServerOptions {
  std::string host_name = "mailbox.localhost";  // what the mailbox calls itself
  Features offer = kAllFeatures;
  std::uint64_t size_limit = 64ULL * 1024 * 1024;  // octets of one message
  std::size_t recipient_limit = 1000;              // of one message
  std::string user;                                // not empty: clients must sign in
  std::string password;
  bool has_certificate = false;  // STARTTLS can be offered
  std::vector<ServerRule> rules;
};

// What whoever has the socket knows of the client.
struct ServerPeer {
  std::string address;     // "127.0.0.1:54321"
  bool loopback = false;   // it may sign in without TLS
  std::string nonce = {};  // for signing in, see ServerAccount
};

// Where the content of a session's messages goes; one message at a time.
class MessageSink {
 public:
  virtual ~MessageSink() = default;
  // Before the first Write of each message, also of one that turns out to be empty.
  virtual void Begin() = 0;
  // After a failure the session calls Drop and hands on no more of that message.
  virtual Result<void> Write(std::string_view content) = 0;
  // The message is complete. Returns what the client is told to call it by, one line of ASCII; a failure is told as
  // 452.
  virtual Result<std::string> Keep(const ReceivedEnvelope& envelope) = 0;
  virtual void Drop() = 0;
};

// Known limits: 2,048 octets a command and 12,288 a line of signing in, the line end included; after 20 faults the
// client hears 421.
class ServerSession {
 public:
  // What to do once BytesToSend is empty. kStartTls: make the handshake, then call TlsStarted.
  enum class Next { kContinue, kStartTls, kClose };

  // All three must outlive the session.
  ServerSession(const ServerOptions& options, const ServerPeer& peer, MessageSink& sink);

  // Any bytes, cut anywhere; what follows the session's end is thrown away.
  void Receive(std::string_view bytes);
  // Until the next call of anything else; Sent tells how many of them went.
  std::string_view BytesToSend() const { return std::string_view(out_).substr(sent_); }
  void Sent(std::size_t octets);
  Next WhatNext() const;
  // The greeting and the transaction begin anew: what was said in clear, anybody may have said (RFC 3207 4.2).
  void TlsStarted();
  // Says 421 and closes; what was not kept by now is dropped.
  void Shutdown(std::string_view why);

  // A number that grows with each step of the client's: a whole line, 64 KiB of content, the end of one. Bytes that
  // drip make none.
  std::uint64_t Step() const { return ends_ + content_octets_ / kContentStep; }

  // The client ended the session in good order and nothing it sent is left unread.
  bool ended_by_quit() const { return quit_; }

 private:
  enum class Phase { kCommand, kAuth, kData, kChunk, kTls, kClosed };
  // What is known of the chunk that is being received.
  struct ChunkUnderWay {
    std::uint64_t left = 0;
    bool last = false;
    std::optional<ServerReply> refusal;  // set: its octets are skipped and this is the reply
  };
  struct CommandRow {
    std::string_view verb;
    bool takes_argument;
    void (ServerSession::*run)(std::string_view argument);
  };
  static const CommandRow kCommands[];
  static constexpr std::uint64_t kContentStep = 64ULL * 1024;

  // Each takes what it can of the bytes and returns the rest.
  std::string_view ReceiveLine(std::string_view bytes);
  std::string_view ReceiveContent(std::string_view bytes);
  std::string_view ReceiveData(std::string_view bytes);
  std::string_view ReceiveChunk(std::string_view bytes);
  void TakeLine(std::string_view line);
  void RunCommand(std::string_view line);

  // The commands. Each looks whether it may come now, and replies.
  void Helo(std::string_view argument);
  void Ehlo(std::string_view argument);
  void Mail(std::string_view argument);
  void Rcpt(std::string_view argument);
  void Data(std::string_view argument);
  void Bdat(std::string_view argument);
  void Rset(std::string_view argument);
  void Noop(std::string_view argument);
  void Help(std::string_view argument);
  void Vrfy(std::string_view argument);
  void Quit(std::string_view argument);
  void StartTls(std::string_view argument);
  void Auth(std::string_view argument);
  void NotImplemented(std::string_view argument);

  // Parts of the greeting and of signing in; RFC 5321 4.1.1.1 and RFC 4954.
  bool Greet(std::string_view argument);
  Features Offered() const;
  bool AuthNeedsTls() const { return options_.has_certificate && !tls_ && !peer_.loopback; }
  void TakeAuthLine(std::string_view line);
  void Challenge(std::string_view text);
  void EndAuth(const ServerReply& reply);

  // A message's content, from DATA or the first BDAT to its end; the Why functions give the refusal, or nothing.
  std::optional<ServerReply> WhyNoContent() const;
  std::optional<ServerReply> WhyNoChunk() const;
  std::optional<ServerReply> WhyNotKept() const;
  void BeginContent(Framing framing);
  void TakeContent(std::string_view piece);
  void DropContent();
  void EndChunk();
  void EndMessage();
  void ResetTransaction();

  void Say(int code, std::string_view enhanced, std::string_view text);
  void Say(const ServerReply& reply) { Say(reply.code, reply.enhanced, reply.text); }
  // Says it, and counts it as a fault of the client; too many end the session.
  void Refuse(const ServerReply& reply);
  void Close();

  const ServerOptions& options_;
  const ServerPeer& peer_;
  MessageSink& sink_;

  std::string out_;
  std::size_t sent_ = 0;
  Phase phase_ = Phase::kCommand;
  std::string line_;            // the beginning of a line whose end has not come
  bool line_too_long_ = false;  // that line is longer than a line may be: the rest of it is skipped

  std::string helo_;
  Features features_ = 0;  // what EHLO offered; nothing before it and after HELO
  bool tls_ = false;
  std::string user_;
  std::unique_ptr<ServerMechanism> mechanism_;  // while the client signs in
  int faults_ = 0;
  std::uint64_t ends_ = 0;            // of lines and contents
  std::uint64_t content_octets_ = 0;  // taken, of all messages
  bool quit_ = false;

  bool has_sender_ = false;  // MAIL was taken; the two below belong to its transaction
  ReceivedEnvelope envelope_;
  bool in_chunks_ = false;  // BDAT has begun: only BDAT may go on (RFC 3030 2)

  ContentScanner scanner_;
  bool binary_ = false;
  bool has_content_ = false;  // the sink holds a message that is not finished
  bool dropped_ = false;      // the rest of the content is read and thrown away
  bool too_large_ = false;
  std::uint64_t size_ = 0;
  ChunkUnderWay chunk_;
};

}  // namespace quillcast::smtp
