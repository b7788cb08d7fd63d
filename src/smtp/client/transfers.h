// The messages of a session from Submit to their outcomes: MAIL, RCPT, DATA or BDAT, and how far they run ahead of the
// server's replies. The order and its rules stand above ClientSession.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "smtp/capabilities.h"
#include "smtp/client/body_writer.h"
#include "smtp/client/reply_habits.h"
#include "smtp/client/reused_queue.h"
#include "smtp/client/send_window.h"
#include "smtp/client/session_events.h"
#include "smtp/client/wire.h"
#include "smtp/envelope.h"
#include "smtp/message_source.h"

namespace quillcast::smtp {

class Transfers {
 public:
  // All must outlive it.
  Transfers(SendWindow& window, Wire& wire, SessionEvents& events)
      : window_(window), wire_(wire), events_(events), habits_(window) {}

  // The server is ready, and offers this, which must outlive it as well. `pipeline`: the account asks for pipelining.
  void Begin(const Capabilities& offered, bool pipeline);

  // As those of ClientSession.
  bool WantsMessage();
  void Submit(const Envelope& envelope, MessageSource& message);
  void Withdraw();
  bool UsedUp() const { return used_up_ || submitted_ >= window_.per_connection(); }
  bool empty() const { return transfers_.empty() && held_.empty(); }
  std::size_t size() const { return transfers_.size() + held_.size(); }
  bool crowded() const { return crowded_; }
  bool accepted() const { return mails_taken_ > 0; }
  void SetQuick(bool quick) { quick_ = quick; }
  std::uint64_t octets_made() const { return octets_made_; }
  std::uint64_t octets_in_all() const { return octets_in_all_; }

  // Whether the server has to be silent for a while (SendWindow::kSilence) before anything goes on; and it was.
  bool Listens() const { return !wire_.awaits() && !end_ && (IsAskedAgain() || MustBeSilent()); }
  void OnSilence();
  // An answer to nothing. True where it is passed over: nothing has gone yet that it could belong to.
  bool PassesOver(const ServerReply& reply) const { return reply.code / 100 == 2 && MustBeSilent(); }

  // Makes the next thing that may go out; false where there is none, or one has to wait for a reply.
  bool SendMore();

  // The reply to a command of the oldest message, no longer awaited.
  void OnAccepted(Awaited command, const ServerReply& reply);
  void OnRefused(Awaited command, const ServerReply& reply);

  // Why the session has to end, once it has to; to be looked at after each call that may send or settle something.
  const std::optional<SessionEnd>& end() const { return end_; }

  // A 421 before a message, where that and others are out: the server says that it does nothing more, and closes.
  // Whether it keeps to that is seen: where it does, none of them was taken, and where it answers on, its answers tell
  // (RFC 5321 3.8, 4.2.1).
  bool AwaitsEnd(Awaited command) const;
  void OnLastRefusal(Awaited command, const ServerReply& reply);
  bool said_goodbye() const { return said_goodbye_; }
  // Some of an answer came behind it.
  void AnswersOn() { said_goodbye_ = false; }
  static constexpr std::chrono::milliseconds kEndsSoon{5000};

  // What ends it from without: a 421, an answer that makes no sense, and a connection that is lost or silent.
  SessionEnd OnGoodbye(Awaited command, const ServerReply& reply);
  SessionEnd OnNoSense(std::string_view what);
  SessionEnd OnOneTooMany(std::string_view what);
  SessionEnd OnGivenUp(Outcome why);

  // Each message that is left has its outcome; the oldest one the session's.
  void Close(const SessionEnd& end);

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
    bool is_doubted = false;         // its verdict: that of the message before may have been said twice
    std::optional<Outcome> verdict;  // the first refusal
    Whereabouts whereabouts = Whereabouts::kDecided;  // with it
  };
  using Next = Transfer::Next;

  static constexpr const char* kTooOften = "it answered more often than it was asked";

  // transfers.cpp
  void Send(Transfer& transfer, Awaited reply, const SmtpLine& line, Next next);
  bool SendNext(Transfer& transfer);
  void SendMail(Transfer& transfer);
  void SendRcpt(Transfer& transfer);
  bool SendContent(Transfer& transfer);
  bool MustBeAccepted(std::uint64_t size, std::size_t mails) const;
  bool HoldsUpOthers(const Transfer& last) const;
  void SendBody(Transfer& transfer);
  void FinishAnswered();
  void Pop();
  bool IsOut(const Transfer& transfer) const { return transfer.ended && transfer.end <= wire_.sent(); }
  Whereabouts NotOut() const { return crowded_ || used_up_ ? Whereabouts::kNoRoom : Whereabouts::kNotOut; }
  Outcome WithVerdict(const Transfer& transfer) const;
  Outcome OutcomeAtEnd(const Transfer& transfer, const SessionEnd& end, bool oldest) const;

  void SetPipelined() { pipelined_ = may_pipeline_ && !window_.wary(); }
  bool AskAgain();
  bool IsAskedAgain() const { return is_asked_again_ && transfers_.empty(); }
  bool MustBeSilent() const;
  Outcome& NextOutcome();
  Outcome& Hold();
  void TellHeld(bool is_in_step);

  // transfer_replies.cpp
  ReplyHabits::Neighbours NeighboursOf(const Transfer& transfer) const;
  void OnMessageTaken(const ServerReply& reply);
  void Deliver(const ServerReply& reply, bool holds);
  void Refuse(Awaited command, const ServerReply& reply);
  void OnAskedAgainRefused(const ServerReply& reply);
  void SetNextAfterRefusal(Transfer& transfer, Awaited command);
  bool BreaksPipelining(Awaited command, int code) const;
  // Whether it goes between a message that was taken and the next.
  bool IsBetween(Awaited command) const { return took_ && (command == Awaited::kMail || command == Awaited::kReset); }
  bool IsCrowd(Awaited command, const ServerReply& reply) const;
  void UseUp(const Outcome& why);
  // Several things were asked at once of a server that has not shown yet that it can take that.
  bool AsksMuch() const { return pipelined_ && !proven_ && !transfers_.empty(); }

  SendWindow& window_;
  Wire& wire_;
  SessionEvents& events_;
  const Capabilities* offered_ = nullptr;  // nothing before Begin
  bool may_pipeline_ = false;
  bool pipelined_ = false;     // now
  bool proven_ = false;        // the server has answered commands that came together
  bool in_doubt_ = false;      // a transaction may be open: RSET goes before the next message
  bool took_ = false;          // a message
  bool used_up_ = false;       // it said that it takes no more over this connection
  bool crowded_ = false;       // and that there are too many of those
  bool said_goodbye_ = false;  // and nothing since
  bool filling_ = true;        // the window
  bool quick_ = true;          // the server's last reply was

  ReusedQueue<Transfer> transfers_;  // those without outcome, oldest first
  std::size_t sending_ = 0;          // those before it are wholly made
  std::uint64_t octets_ = 0;         // of all of them
  std::size_t submitted_ = 0;        // over this connection
  std::size_t mails_wanted_ = 0;     // MAIL commands
  std::size_t mails_made_ = 0;
  std::size_t mails_taken_ = 0;
  ReplyHabits habits_;
  std::optional<BodyWriter> body_;  // of transfers_[sending_]
  std::uint64_t octets_made_ = 0;
  std::uint64_t octets_in_all_ = 0;
  // Of messages that were answered, the first of them in words that may be the answer to something else, and all
  // behind it. Nothing new is begun then. Once nothing is in flight, RSET is asked for: a server that has answered too
  // often has an answer left over behind the one to that, or a refusal in its place.
  struct Held {
    Outcome outcome;
    bool is_out = false;
  };
  std::vector<Held> held_;
  bool is_asked_again_ = false;
  bool was_silent_ = false;  // since the recipient of the message that is next was taken
  std::optional<SessionEnd> end_;
};

}  // namespace quillcast::smtp
