// What the replies to the commands of a message mean for it and for those behind it.
#include <utility>

#include "platform/text.h"
#include "smtp/client/transfers.h"

namespace quillcast::smtp {

using Slip = ReplyHabits::Slip;

void Transfers::OnAccepted(Awaited command, const ServerReply& reply) {
  if (transfers_.empty()) return;  // to AskAgain
  Transfer& transfer = transfers_.front();
  --transfer.awaited;
  said_goodbye_ = false;
  switch (command) {
    case Awaited::kMail:
      transfer.open = true;
      window_.Took(++mails_taken_);
      habits_.OnSender(reply);
      break;
    case Awaited::kRcpt:
      if (transfer.sender_refused) {
        transfer.verdict.reset();  // nobody knows what it does with the message
        constexpr const char* kWhat = "it took the recipient after it had refused the sender";
        end_ = held_.empty() ? OnNoSense(kWhat) : OnOneTooMany(kWhat);
        return;
      }
      proven_ = proven_ || transfer.chunked;
      habits_.OnRecipient(reply);
      break;
    case Awaited::kData:
      proven_ = true;
      transfer.next = transfer.verdict ? Next::kLoneDot : Next::kBody;
      break;
    case Awaited::kLoneDot:
      transfer.open = false;
      break;
    case Awaited::kEndOfData:
      OnMessageTaken(reply);
      break;
    default:  // kReset
      habits_.OnReset(reply);
      break;
  }
  FinishAnswered();
}

void Transfers::OnMessageTaken(const ServerReply& reply) {
  Transfer& transfer = transfers_.front();
  const Slip slip = transfer.verdict ? Slip::kNone : habits_.OnMessage(reply, NeighboursOf(transfer));
  if (slip == Slip::kOneTooMany || slip == Slip::kOneTooFew) {
    end_ = OnNoSense(slip == Slip::kOneTooMany ? kTooOften : "it left something unanswered that it was asked");
    return;
  }
  transfer.open = false;
  window_.Taken(quick_);
  took_ = true;
  if (!transfer.verdict) Deliver(reply, slip == Slip::kPerhaps);
}

// In lock-step an answer comes when it is due, or late. A message behind DATA is asked for, so that nothing before it
// is left, or late.
ReplyHabits::Neighbours Transfers::NeighboursOf(const Transfer& transfer) const {
  if (!pipelined_) return {false, std::nullopt, was_silent_};
  return {transfer.chunked, wire_.ReplyIsDue() ? std::optional(wire_.awaited()) : std::nullopt};
}

// The server has taken the oldest message, as it seems.
void Transfers::Deliver(const ServerReply& reply, bool holds) {
  Outcome& outcome = holds ? Hold() : NextOutcome();
  outcome.state = State::kSent;
  outcome.code = ResultCode::kSuccess;
  outcome.reply = reply;
  outcome.reason.clear();
  Pop();
}

bool Transfers::AwaitsEnd(Awaited command) const {
  if (transfers_.empty() || !held_.empty()) return false;
  return said_goodbye_ || (IsBetween(command) && IsOut(transfers_.front()));
}

void Transfers::OnLastRefusal(Awaited command, const ServerReply& reply) {
  said_goodbye_ = true;
  if (command != Awaited::kReset) return Refuse(command, reply);
  // That is no verdict on the message behind it: where the server answers on, it may take that.
  --transfers_.front().awaited;
  UseUp(VerdictOf(MeaningOf(command).refused, reply));
}

void Transfers::OnRefused(Awaited command, const ServerReply& reply) {
  if (transfers_.empty()) return OnAskedAgainRefused(reply);
  said_goodbye_ = false;
  Refuse(command, reply);
}

void Transfers::Refuse(Awaited command, const ServerReply& reply) {
  Transfer& transfer = transfers_.front();
  --transfer.awaited;
  if (BreaksPipelining(command, reply.code)) {
    window_.GiveUpPipelining();
    end_ = SessionEnd{.why = {State::kFailed, ResultCode::kBadResponse, reply,
                              "The server does not keep the pipelining that it offers.", Whereabouts::kNotOut}};
    return;
  }
  const bool deferred = reply.code / 100 == 4;
  crowded_ = crowded_ || IsCrowd(command, reply);
  const bool takes_no_more = said_goodbye_ || (used_up_ && command == Awaited::kMail);
  const bool limit = (command == Awaited::kMail && took_ && deferred) || crowded_ || takes_no_more;
  if (!limit && (deferred || command == Awaited::kMail)) window_.BeCautious();
  if (command == Awaited::kReset) {
    end_ = {Refusal(command, reply)};
    end_->why.state = State::kFailed;
    end_->why.whereabouts = Whereabouts::kNotOut;
    return;
  }
  if (!transfer.verdict && command == Awaited::kEndOfData) {
    transfer.is_doubted = habits_.OnMessageRefused(reply, NeighboursOf(transfer).is_sure) == Slip::kPerhaps;
  }
  if (!transfer.verdict) transfer.verdict = VerdictOf(MeaningOf(command).refused, reply);
  if (limit) transfer.whereabouts = Whereabouts::kNotOut;
  if (limit) UseUp(*transfer.verdict);
  SetNextAfterRefusal(transfer, command);
  FinishAnswered();
}

// A server that does not know RSET; or a late answer, to a message that it had seemed to take.
void Transfers::OnAskedAgainRefused(const ServerReply& reply) {
  if (reply.code < 500 || reply.code > 504) end_ = OnOneTooMany(kTooOften);
}

void Transfers::SetNextAfterRefusal(Transfer& transfer, Awaited command) {
  const bool not_begun = transfer.next == Next::kRcpt || transfer.next == Next::kContent;
  if (not_begun || command == Awaited::kData) transfer.next = Next::kNothing;
  if (command == Awaited::kMail) transfer.sender_refused = true;
  if (command == Awaited::kData || (transfer.chunked && command == Awaited::kRcpt)) proven_ = true;
  if (command == Awaited::kEndOfData) transfer.open = transfer.chunked;
  if (command == Awaited::kLoneDot) transfer.open = false;
}

// Whether a refusal says "out of order" or "not known" of a command that was neither: of the first that came together
// with others, while nothing of the message is out.
bool Transfers::BreaksPipelining(Awaited command, int code) const {
  const bool about_order = code == 500 || code == 502 || code == 503;
  return AsksMuch() && about_order && command != Awaited::kEndOfData && !transfers_.front().verdict;
}

// Whether the server takes fewer connections than there are: it says so at the first MAIL of one that came to others.
bool Transfers::IsCrowd(Awaited command, const ServerReply& reply) const {
  if (command != Awaited::kMail || mails_taken_ > 0 || window_.connections() < 2 || reply.code / 100 != 4) return false;
  return reply.code == 421 || platform::AsciiLower(reply.text).find("connection") != std::string::npos;
}

// No further message goes over this connection; those behind that have not begun need not be refused as well.
void Transfers::UseUp(const Outcome& why) {
  used_up_ = true;
  if (!crowded_) window_.SuspectLimit(mails_taken_);
  for (std::size_t n = 1; n < transfers_.size(); ++n) {
    Transfer& transfer = transfers_[n];
    if (transfer.next != Next::kReset) continue;
    transfer.verdict = why;
    transfer.whereabouts = Whereabouts::kNotOut;
    transfer.next = Next::kNothing;
  }
}

// --- ends ---

// The 421 is the verdict of the message whose end it answers. Those behind it are in doubt once their end is out: not
// every server stops where it says so.
SessionEnd Transfers::OnGoodbye(Awaited command, const ServerReply& reply) {
  if (transfers_.empty()) {  // to AskAgain: it takes no more
    TellHeld(true);
    window_.SuspectLimit(mails_taken_);
    return {VerdictOf(ResultCode::kConnectionLost, reply)};
  }
  crowded_ = IsCrowd(command, reply);
  if (IsBetween(command) && !IsOut(transfers_.front())) {
    used_up_ = true;
    window_.SuspectLimit(mails_taken_);
  } else if (crowded_) {
    // It may do well with the others.
  } else {
    window_.BeCautious();
  }
  if (command == Awaited::kEndOfData && wire_.ReplyIsDue()) return {VerdictOf(ResultCode::kMessageRefused, reply)};
  const bool is_out = !transfers_.empty() && IsOut(transfers_.front());
  return {{State::kFailed, ResultCode::kConnectionLost, reply,
           is_out ? "The server ended the connection before it answered for the message."
                  : "The server ended the connection before the message.",
           Whereabouts::kNotOut}};
}

// A server that makes no sense while it is first asked for several things at once may do well with one at a time.
SessionEnd Transfers::OnNoSense(std::string_view what) {
  said_goodbye_ = false;
  const bool overtaxed = AsksMuch();
  if (overtaxed) window_.GiveUpPipelining();
  SessionEnd end{NoSense(what)};
  if (overtaxed) end.why.whereabouts = Whereabouts::kNotOut;
  return end;
}

// What has not gone yet goes once more, to a server that is then asked one thing at a time.
SessionEnd Transfers::OnOneTooMany(std::string_view what) {
  const bool was_wary = window_.wary();
  window_.BeWary();
  SessionEnd end = OnNoSense(what);
  if (!was_wary) end.why.whereabouts = Whereabouts::kNotOut;
  return end;
}

SessionEnd Transfers::OnGivenUp(Outcome why) {
  const bool lost = why.code == ResultCode::kConnectionLost;
  const bool late = why.code == ResultCode::kReplyTimeout;
  const bool overtaxed = (lost || late) && AsksMuch() && wire_.awaits();
  if (overtaxed) window_.GiveUpPipelining();
  const bool closed_as_said = lost && said_goodbye_;
  if ((lost || late) && !transfers_.empty() && !closed_as_said) window_.BeCautious();
  if (late) why.whereabouts = Whereabouts::kSilent;
  if (lost || overtaxed) why.whereabouts = Whereabouts::kNotOut;
  return {std::move(why)};
}

}  // namespace quillcast::smtp
