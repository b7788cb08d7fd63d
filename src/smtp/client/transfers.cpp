#include "smtp/client/transfers.h"

#include <fmt/format.h>

#include <iterator>
#include <utility>

#include "smtp/client/envelope_commands.h"
#include "smtp/client/fit_envelope.h"

namespace quillcast::smtp {
namespace {

// A message of more octets is not sent before its recipient is accepted.
constexpr std::uint64_t kLarge = std::uint64_t{1024} * 1024;

constexpr const char* kMayBeTaken = "The message may have been taken all the same.";
constexpr const char* kEndedBefore = "The connection ended before the server answered.";

// Whether people would choose it first as a limit: 20, 50, 1,000. A server that says nothing where it hangs up makes
// those unknown that are behind; each wait costs a round trip.
bool IsRound(std::size_t number) {
  if (number < 10) return false;
  while (number % 10 == 0) number /= 10;
  return number == 1 || number == 2 || number == 5;
}

}  // namespace

void Transfers::Begin(const Capabilities& offered, bool pipeline) {
  offered_ = &offered;
  may_pipeline_ = pipeline && offered.pipelining && window_.pipelining();
  SetPipelined();
}

bool Transfers::WantsMessage() {
  if (offered_ == nullptr || UsedUp() || !held_.empty()) return false;
  if (transfers_.empty()) return true;
  if (!pipelined_ || window_.wary()) return false;
  const Transfer& last = transfers_.back();
  // The next envelope goes with the end of this message, which begins when DATA has been accepted.
  if (!last.chunked) return last.next == Next::kBody || last.next == Next::kLoneDot;
  return proven_ && last.next != Next::kImpossible && !HoldsUpOthers(last) &&
         window_.Wants(transfers_.size(), octets_, filling_);
}

void Transfers::Submit(const Envelope& envelope, MessageSource& message) {
  if (transfers_.empty()) SetPipelined();
  Transfer& transfer = transfers_.Push();
  transfer.envelope = envelope;
  transfer.message = &message;
  transfer.next = Next::kReset;
  transfer.open = transfer.ended = transfer.sender_refused = transfer.is_doubted = false;
  transfer.whereabouts = Whereabouts::kDecided;
  ++submitted_;
  transfer.awaited = 0;
  was_silent_ = false;
  transfer.verdict = FitEnvelope(transfer.envelope, message, *offered_);
  transfer.chunked = offered_->chunking && transfer.envelope.size != 0;
  octets_ += transfer.envelope.size;
  if (transfer.verdict) {
    transfer.next = Next::kNothing;
  } else {
    ++mails_wanted_;
  }
  FinishAnswered();
}

void Transfers::Withdraw() {
  for (std::size_t n = sending_; n < transfers_.size(); ++n) {
    if (transfers_[n].next != Next::kReset) continue;
    transfers_[n].verdict = Left();
    transfers_[n].whereabouts = Whereabouts::kNotOut;
    transfers_[n].next = Next::kNothing;
  }
  FinishAnswered();
}

// --- sending ---

bool Transfers::SendMore() {
  if (offered_ == nullptr || end_ || said_goodbye_) return false;
  if (transfers_.empty()) return AskAgain();
  if (sending_ == transfers_.size()) return false;
  return SendNext(transfers_[sending_]);
}

void Transfers::Send(Transfer& transfer, Awaited reply, const SmtpLine& line, Next next) {
  ++transfer.awaited;
  transfer.next = next;
  wire_.Send(reply, line, sending_);
}

bool Transfers::SendNext(Transfer& transfer) {
  const bool may_send = pipelined_ || !wire_.awaits();
  switch (transfer.next) {
    case Next::kReset:
      if (!may_send) return false;
      transfer.next = Next::kMail;
      if (!in_doubt_ && (!wire_.awaits() || !offered_->chunking)) return true;
      in_doubt_ = false;
      Send(transfer, Awaited::kReset, "RSET", Next::kMail);
      return true;
    case Next::kMail:
      if (may_send) SendMail(transfer);
      return may_send;
    case Next::kRcpt:
      if (may_send) SendRcpt(transfer);
      return may_send;
    case Next::kContent:
      return may_send && !MustBeSilent() && SendContent(transfer);
    case Next::kBody:
      SendBody(transfer);
      return true;
    case Next::kLoneDot:
      Send(transfer, Awaited::kLoneDot, ".", Next::kNothing);
      return true;
    case Next::kNothing:
      ++sending_;
      return true;
    case Next::kReplyToData:
    case Next::kImpossible:
      return false;
  }
  return false;
}

void Transfers::SendMail(Transfer& transfer) {
  if (const auto line = MailCommand(transfer.envelope, *offered_)) {
    ++mails_made_;
    return Send(transfer, Awaited::kMail, *line, Next::kRcpt);
  }
  end_ = SessionEnd{.why = {State::kFailed, ResultCode::kSenderRefused, {}, "The sender cannot be sent."}};
}

void Transfers::SendRcpt(Transfer& transfer) {
  if (const auto line = RcptCommand(transfer.envelope, *offered_)) {
    return Send(transfer, Awaited::kRcpt, *line, Next::kContent);
  }
  end_ = SessionEnd{.why = {State::kFailed, ResultCode::kRecipientRefused, {}, "The recipient cannot be sent."}};
}

// Before the content of a message goes to a server that answers too often: what it says then is the answer to nothing.
bool Transfers::MustBeSilent() const {
  if (!window_.wary() || was_silent_ || sending_ == transfers_.size()) return false;
  return transfers_[sending_].next == Next::kContent && !wire_.awaits();
}

bool Transfers::AskAgain() {
  if (held_.empty() || is_asked_again_) return false;
  is_asked_again_ = true;
  wire_.Send(Awaited::kReset, "RSET");
  return true;
}

void Transfers::OnSilence() {
  if (MustBeSilent()) {
    was_silent_ = true;
  } else {
    habits_.OnInStep();
    TellHeld(true);
  }
}

bool Transfers::SendContent(Transfer& transfer) {
  if (!transfer.chunked) {
    Send(transfer, Awaited::kData, "DATA", Next::kReplyToData);
    return true;
  }
  const std::uint64_t size = transfer.envelope.size;
  if (MustBeAccepted(size, mails_made_) && wire_.awaits()) return false;
  // The one chunk follows its command without a reply in between (RFC 3030 2).
  Send(transfer, Awaited::kEndOfData, SmtpLine("BDAT").Then(SmtpLine::Of(size)).Then("LAST"), Next::kBody);
  wire_.AwaitEndOfLast();
  body_.emplace(*transfer.message, BodyWriter::Form::kCounted, size);
  return true;
}

// Whether the envelope of a message of that many octets, with so many MAIL commands, has to be accepted before it goes.
bool Transfers::MustBeAccepted(std::uint64_t size, std::size_t mails) const {
  return !proven_ || window_.cautious() || size > kLarge || IsRound(mails - 1) || window_.IsSuspectedLimit(mails - 1);
}

// What is behind a message that waits for its envelope would be told of as out, and be unknown after a kill.
bool Transfers::HoldsUpOthers(const Transfer& last) const {
  const bool is_to_come = last.next == Next::kReset || last.next == Next::kMail || last.next == Next::kRcpt;
  const bool waits = last.next == Next::kContent && wire_.awaits();
  return (is_to_come || waits) && MustBeAccepted(last.envelope.size, mails_wanted_);
}

void Transfers::SendBody(Transfer& transfer) {
  if (!body_) {
    ++transfer.awaited;
    wire_.AwaitEnd();
    const bool dots = transfer.message->MayHaveLeadingDots();
    body_.emplace(*transfer.message, dots ? BodyWriter::Form::kDots : BodyWriter::Form::kBare, transfer.envelope.size);
  }
  const auto filled = wire_.Fill(*body_);
  octets_made_ = body_->taken();
  octets_in_all_ = transfer.envelope.size;
  if (!filled) {
    // The message cannot be ended, so the connection cannot go on; the messages before it wait for their replies.
    transfer.next = Next::kImpossible;
    if (!transfer.verdict) {
      transfer.verdict = {State::kFailed, CodeOfSource(filled.error()), {}, filled.error().what.InEnglish()};
    }
    return FinishAnswered();
  }
  if (!body_->ended()) return;
  fmt::format_to(std::back_inserter(events_.Client({}, sending_).text), "(message, {} bytes)", octets_made_);
  transfer.next = Next::kNothing;
  transfer.ended = true;
  transfer.end = wire_.EndMade();
  body_.reset();
}

// --- outcomes ---

void Transfers::FinishAnswered() {
  while (!end_ && !transfers_.empty()) {
    const Transfer& oldest = transfers_.front();
    if (oldest.next == Next::kImpossible) {
      end_ = {*oldest.verdict};
      return;
    }
    if (oldest.next != Next::kNothing || oldest.awaited != 0 || !oldest.verdict) return;
    (oldest.is_doubted ? Hold() : NextOutcome()) = WithVerdict(oldest);
    Pop();
  }
}

// Of the oldest message, behind those that are held.
Outcome& Transfers::NextOutcome() { return held_.empty() ? events_.Add(Event::Kind::kOutcome).outcome : Hold(); }

Outcome& Transfers::Hold() {
  held_.push_back({{}, IsOut(transfers_.front())});
  events_.SetHeld(held_.size());
  return held_.back().outcome;
}

// Where the server is not in step, whose answer each had is not known.
void Transfers::TellHeld(bool is_in_step) {
  is_asked_again_ = false;
  events_.SetHeld(0);
  for (auto& [outcome, is_out] : std::exchange(held_, {})) {
    if (!is_in_step && outcome.is_decided() && outcome.reply.code != 0) {
      outcome = NoSense(kTooOften);
      outcome.whereabouts = is_out ? Whereabouts::kDecided : NotOut();
      if (is_out) outcome.state = State::kUnknown;
      if (is_out) AddSentence(outcome.reason, kMayBeTaken);
    }
    events_.Add(Event::Kind::kOutcome).outcome = std::move(outcome);
  }
}

void Transfers::Pop() {
  const Transfer& oldest = transfers_.front();
  const bool next_has_begun = transfers_.size() > 1 && transfers_[1].next != Next::kReset;
  if (oldest.open && !next_has_begun) in_doubt_ = true;
  octets_ -= oldest.envelope.size;
  transfers_.Pop();
  if (sending_ > 0) --sending_;
}

// A connection that was lost, or is given up, while nothing else was asked has said all that the server had to say.
void Transfers::Close(const SessionEnd& end) {
  const bool is_lost = end.why.code == ResultCode::kConnectionLost && end.why.reply.code == 0;
  TellHeld((is_lost || end.why.code == ResultCode::kCancelled) && transfers_.empty());
  for (bool oldest = true; !transfers_.empty(); oldest = false) {
    const Transfer& transfer = transfers_.front();
    events_.Add(Event::Kind::kOutcome).outcome =
        transfer.verdict ? WithVerdict(transfer) : OutcomeAtEnd(transfer, end, oldest);
    Pop();
  }
}

Outcome Transfers::WithVerdict(const Transfer& transfer) const {
  Outcome outcome = *transfer.verdict;
  if (transfer.whereabouts != Whereabouts::kDecided) outcome.whereabouts = NotOut();
  return outcome;
}

// Of a message without a verdict. Which wait failed is told of the oldest, and of each that is out: it was the reply to
// its end.
Outcome Transfers::OutcomeAtEnd(const Transfer& transfer, const SessionEnd& end, bool oldest) const {
  const bool late = end.why.code == ResultCode::kReplyTimeout;
  const bool cancelled = end.why.code == ResultCode::kCancelled;
  Outcome outcome{State::kFailed, late ? end.why.code : ResultCode::kConnectionLost, {}, {}};
  if (oldest || cancelled) outcome = end.why;
  if (!oldest || cancelled || outcome.whereabouts == Whereabouts::kNotOut) outcome.whereabouts = NotOut();
  const bool is_out = IsOut(transfer) && !(said_goodbye_ && outcome.code == ResultCode::kConnectionLost);
  if (is_out || outcome.state != State::kFailed) outcome.whereabouts = Whereabouts::kDecided;
  outcome.has_sender = oldest && transfer.open;
  if (is_out && outcome.state == State::kFailed) {
    outcome.state = State::kUnknown;
    const bool waited = outcome.reason.empty() || !end.missing.empty();
    AddSentence(outcome.reason, waited ? MeaningOf(Awaited::kEndOfData).missing : kMayBeTaken);
  } else if (oldest) {
    AddSentence(outcome.reason, end.missing);
  } else if (!cancelled) {
    outcome.reason = kEndedBefore;
  }
  return outcome;
}

}  // namespace quillcast::smtp
