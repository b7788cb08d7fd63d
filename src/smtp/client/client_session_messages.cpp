// The part of a session that sends messages: what goes out when, and what the replies to it mean. The order and its
// rules stand above ClientSession.
#include <fmt/format.h>

#include <iterator>

#include "smtp/client/client_session.h"
#include "smtp/client/envelope_commands.h"
#include "smtp/client/fit_envelope.h"
#include "smtp/client/reply_meaning.h"

namespace quillcast::smtp {
namespace {

// As much as is kept ready to be written. The server has to take each such block within the time of a step.
constexpr std::size_t kBlock = std::size_t{64} * 1024;
// A message of more octets is not sent before its recipient is accepted.
constexpr std::uint64_t kLarge = std::uint64_t{1024} * 1024;

// Whether people would choose it as a limit: 20, 150, 1,000.
bool IsRound(std::size_t number) {
  if (number < 10) return false;
  while (number % 10 == 0) number /= 10;
  return number < 10 || number == 15 || number == 25 || number == 75;
}

}  // namespace

// --- sending ---

bool ClientSession::WantsMessage() {
  if (!ready_ || closed_ || UsedUp()) return false;
  if (transfers_.empty()) return true;
  if (!pipelined_) return false;
  const Transfer& last = transfers_.back();
  // The next envelope goes with the end of this message, which begins when DATA has been accepted.
  if (!last.chunked) return last.next == Transfer::Next::kBody || last.next == Transfer::Next::kLoneDot;
  return proven_ && last.next != Transfer::Next::kImpossible && window_.Wants(transfers_.size(), octets_);
}

void ClientSession::Submit(const Envelope& envelope, MessageSource& message) {
  Transfer& transfer = transfers_.Push();
  transfer.envelope = envelope;
  transfer.message = &message;
  transfer.next = Transfer::Next::kReset;
  transfer.open = transfer.ended = transfer.sender_refused = transfer.again = false;
  ++submitted_;
  transfer.awaited = 0;
  transfer.verdict = FitEnvelope(transfer.envelope, message, capabilities_);
  transfer.chunked = capabilities_.chunking && transfer.envelope.size != 0;
  octets_ += transfer.envelope.size;
  if (transfer.verdict) transfer.next = Transfer::Next::kNothing;
  FinishAnswered();
}

void ClientSession::Withdraw(const Outcome& why) {
  for (std::size_t n = sending_; n < transfers_.size(); ++n) {
    if (transfers_[n].next != Transfer::Next::kReset) continue;
    transfers_[n].verdict = why;
    transfers_[n].next = Transfer::Next::kNothing;
  }
  FinishAnswered();
}

void ClientSession::Quit() { Send(Command::kQuit, "QUIT"); }

void ClientSession::Await(Command command, std::uint64_t end) { awaited_.Push() = {command, end}; }

void ClientSession::Send(Command command, const SmtpLine& line) {
  out_.append(line.text()).append("\r\n");
  Await(command, made());
  Log("C: ", line.text());
}

void ClientSession::SendSecret(const SecretLine& line) {
  out_.reserve(out_.size() + line.text().size() + 2);  // growing later would leave a copy behind
  out_.append(line.text()).append("\r\n");
  out_secret_ = true;
  Await(Command::kAuth, made());
  Log("C: ", line.shown());
}

void ClientSession::SendHello(Command command) {
  const auto name = SmtpLine::From(setup_.local_name);
  if (!name) return Fail(ResultCode::kException, "The name of this computer cannot be sent.");
  const SmtpLine word = command == Command::kEhlo ? SmtpLine("EHLO") : SmtpLine("HELO");
  Send(command, word.Then(*name));
}

std::string_view ClientSession::BytesToSend() {
  if (closed_) return {};
  if (out_at_ >= kBlock) {
    out_.erase(0, out_at_);
    base_ += out_at_;
    out_at_ = 0;
  }
  while (out_.size() - out_at_ < kBlock && SendMore()) {
  }
  return closed_ ? std::string_view() : std::string_view(out_).substr(out_at_);
}

void ClientSession::Sent(std::size_t count) {
  const std::uint64_t blocks = sent() / kBlock;
  out_at_ += count;
  steps_ += sent() / kBlock - blocks;
  if (out_at_ < out_.size()) return;
  base_ += out_.size();
  if (out_secret_) Wipe(out_);
  out_secret_ = false;
  out_.clear();
  out_at_ = 0;
}

// Makes the next thing that may go out; false where there is none, or one has to wait for a reply.
bool ClientSession::SendMore() {
  if (!ready_ || closed_ || sending_ == transfers_.size()) return false;
  return SendNext(transfers_[sending_]);
}

bool ClientSession::SendNext(Transfer& transfer) {
  using Next = Transfer::Next;
  const bool may_send = pipelined_ || awaited_.empty();
  switch (transfer.next) {
    case Next::kReset:
      if (!may_send) return false;
      transfer.next = Next::kMail;
      if (!in_doubt_ && (awaited_.empty() || !capabilities_.chunking)) return true;
      in_doubt_ = false;
      ++transfer.awaited;
      Send(Command::kReset, "RSET");
      return true;
    case Next::kMail:
      if (may_send) SendMail(transfer);
      return may_send;
    case Next::kRcpt:
      if (may_send) SendRcpt(transfer);
      return may_send;
    case Next::kContent:
      return may_send && SendContent(transfer);
    case Next::kBody:
      SendBody(transfer);
      return true;
    case Next::kLoneDot:
      ++transfer.awaited;
      transfer.next = Next::kNothing;
      Send(Command::kLoneDot, ".");
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

void ClientSession::SendMail(Transfer& transfer) {
  const auto line = MailCommand(transfer.envelope, capabilities_);
  if (!line) return Fail(ResultCode::kSenderRefused, "The sender cannot be sent.");
  ++transfer.awaited;
  ++mails_made_;
  transfer.next = Transfer::Next::kRcpt;
  Send(Command::kMail, *line);
}

void ClientSession::SendRcpt(Transfer& transfer) {
  const auto line = RcptCommand(transfer.envelope, capabilities_);
  if (!line) return Fail(ResultCode::kRecipientRefused, "The recipient cannot be sent.");
  ++transfer.awaited;
  transfer.next = Transfer::Next::kContent;
  Send(Command::kRcpt, *line);
}

bool ClientSession::SendContent(Transfer& transfer) {
  if (!transfer.chunked) {
    ++transfer.awaited;
    transfer.next = Transfer::Next::kReplyToData;
    Send(Command::kData, "DATA");
    return true;
  }
  const std::uint64_t size = transfer.envelope.size;
  const bool envelope_first = !proven_ || window_.cautious() || size > kLarge || IsRound(mails_made_ - 1);
  if (envelope_first && !awaited_.empty()) return false;
  // The one chunk follows its command without a reply in between (RFC 3030 2).
  ++transfer.awaited;
  transfer.next = Transfer::Next::kBody;
  Send(Command::kEndOfData, SmtpLine("BDAT").Then(SmtpLine::Of(size)).Then("LAST"));
  awaited_.back().end = kNotMade;
  body_.emplace(*transfer.message, BodyWriter::Form::kCounted, size);
  return true;
}

// Awaited from its first byte on: a server may refuse a message while it comes.
void ClientSession::SendBody(Transfer& transfer) {
  if (!body_) {
    ++transfer.awaited;
    Await(Command::kEndOfData, kNotMade);
    const bool dots = transfer.message->MayHaveLeadingDots();
    body_.emplace(*transfer.message, dots ? BodyWriter::Form::kDots : BodyWriter::Form::kBare, transfer.envelope.size);
  }
  const auto filled = body_->Fill(out_, out_at_ + kBlock);
  octets_made_ = body_->taken();
  octets_in_all_ = transfer.envelope.size;
  if (!filled) {
    // The message cannot be ended, so the connection cannot go on; the messages before it wait for their replies.
    transfer.next = Transfer::Next::kImpossible;
    if (!transfer.verdict)
      transfer.verdict = {State::kFailed, CodeOfSource(filled.error()), {}, filled.error().what.InEnglish()};
    return FinishAnswered();
  }
  if (!body_->ended()) return;
  fmt::format_to(std::back_inserter(Log("C: ", {}).text), "(message, {} bytes)", octets_made_);
  transfer.next = Transfer::Next::kNothing;
  transfer.ended = true;
  transfer.end = awaited_.back().end = made();
  body_.reset();
}

// --- receiving ---

void ClientSession::OnMessageAccepted(Command command, const ServerReply& reply) {
  Transfer& transfer = transfers_.front();
  --transfer.awaited;
  switch (command) {
    case Command::kMail:
      transfer.open = true;
      ++mails_taken_;
      break;
    case Command::kRcpt:
      if (transfer.sender_refused) {
        transfer.verdict.reset();  // nobody knows what it does with the message
        return Senseless("it took the recipient after it had refused the sender");
      }
      proven_ = proven_ || transfer.chunked;
      break;
    case Command::kData:
      proven_ = true;
      transfer.next = transfer.verdict ? Transfer::Next::kLoneDot : Transfer::Next::kBody;
      break;
    case Command::kLoneDot:
      transfer.open = false;
      break;
    case Command::kEndOfData: {
      transfer.open = false;
      window_.Taken();
      took_ = true;
      if (transfer.verdict) break;
      Outcome& outcome = NewEvent(Event::Kind::kOutcome).outcome;
      outcome.state = State::kSent;
      outcome.code = ResultCode::kSuccess;
      outcome.reply = reply;
      outcome.reason.clear();
      PopTransfer();
      break;
    }
    default:  // kReset
      break;
  }
  FinishAnswered();
}

void ClientSession::OnMessageRefused(Command command, const ServerReply& reply) {
  Transfer& transfer = transfers_.front();
  --transfer.awaited;
  if (BreaksPipelining(command, reply.code)) {
    window_.GiveUpPipelining();
    return Close(
        {State::kFailed, ResultCode::kBadResponse, reply, "The server does not keep the pipelining that it offers."},
        true);
  }
  const bool limit = IsLimit(command) && reply.code / 100 == 4;
  if (!limit && (reply.code / 100 == 4 || command == Command::kMail)) window_.BeCautious();
  if (command == Command::kReset) {
    return Close({State::kFailed, ResultCode::kBadResponse, reply, "The server did not take RSET."}, true);
  }
  if (!transfer.verdict) transfer.verdict = VerdictOf(MeaningOf(command).refused, reply);
  transfer.again = transfer.again || limit;
  if (limit) UseUp(*transfer.verdict);
  using Next = Transfer::Next;
  const bool not_begun = transfer.next == Next::kRcpt || transfer.next == Next::kContent;
  if (not_begun || command == Command::kData) transfer.next = Next::kNothing;
  if (command == Command::kMail) transfer.sender_refused = true;
  if (command == Command::kData || (transfer.chunked && command == Command::kRcpt)) proven_ = true;
  if (command == Command::kEndOfData) transfer.open = transfer.chunked;
  if (command == Command::kLoneDot) transfer.open = false;
  FinishAnswered();
}

// Whether a refusal says "out of order" or "not known" of a command that was neither: of the first that came together
// with others, while nothing of the message is out.
bool ClientSession::BreaksPipelining(Command command, int code) const {
  const bool about_order = code == 500 || code == 502 || code == 503;
  return pipelined_ && !proven_ && about_order && command != Command::kEndOfData && !transfers_.front().verdict;
}

// No further message goes over this connection; those behind that have not begun need not be refused as well.
void ClientSession::UseUp(const Outcome& why) {
  used_up_ = true;
  window_.LimitConnection(mails_taken_);
  for (std::size_t n = 1; n < transfers_.size(); ++n) {
    Transfer& transfer = transfers_[n];
    if (transfer.next != Transfer::Next::kReset) continue;
    transfer.verdict = why;
    transfer.again = true;
    transfer.next = Transfer::Next::kNothing;
  }
}

// --- ends ---

void ClientSession::FinishAnswered() {
  while (!closed_ && !transfers_.empty()) {
    const Transfer& oldest = transfers_.front();
    if (oldest.next == Transfer::Next::kImpossible) return Close(*oldest.verdict);
    if (oldest.next != Transfer::Next::kNothing || oldest.awaited != 0 || !oldest.verdict) return;
    Event& event = NewEvent(Event::Kind::kOutcome);
    event.outcome = *oldest.verdict;
    event.again = oldest.again;
    PopTransfer();
  }
}

void ClientSession::PopTransfer() {
  const Transfer& oldest = transfers_.front();
  const bool next_has_begun = transfers_.size() > 1 && transfers_[1].next != Transfer::Next::kReset;
  if (oldest.open && !next_has_begun) in_doubt_ = true;
  octets_ -= oldest.envelope.size;
  transfers_.Pop();
  if (sending_ > 0) --sending_;
}

}  // namespace quillcast::smtp
