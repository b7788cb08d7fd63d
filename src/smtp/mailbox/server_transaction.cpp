// One transaction of a session: MAIL, RCPT, and the content by DATA or BDAT.
#include <fmt/format.h>

#include <algorithm>

#include "smtp/mailbox/server_session.h"

namespace quillcast::smtp {
namespace {

ServerReply AnswerTo(LineFault fault) {
  if (fault == LineFault::kTooLong) {
    return {500, "5.6.0", fmt::format("A line of the message is longer than {} octets", ContentScanner::kLongestLine)};
  }
  return {
      554, "5.6.0",
      fmt::format("The message has a lone {}; its lines must end in CRLF", fault == LineFault::kBareCr ? "CR" : "LF")};
}

}  // namespace

void ServerSession::Mail(std::string_view argument) {
  if (helo_.empty()) return Refuse({503, "5.5.1", "Say EHLO first"});
  if (has_sender_) return Refuse({503, "5.5.1", "One sender a message; RSET begins anew"});
  if (!options_.user.empty() && user_.empty()) return Refuse({530, "5.7.0", "Sign in first"});
  ReceivedEnvelope envelope;
  if (const auto refusal = ReadMail(argument, features_, options_.size_limit, envelope)) return Refuse(*refusal);
  if (const auto refusal = FindRefusal(options_.rules, RuleStage::kSender, envelope.sender)) return Say(*refusal);

  envelope_ = std::move(envelope);
  has_sender_ = true;
  Say(250, "2.1.0", "Ok");
}

void ServerSession::Rcpt(std::string_view argument) {
  if (!has_sender_) return Refuse({503, "5.5.1", "Say MAIL first"});
  if (in_chunks_) return Refuse({503, "5.5.1", "The message is under way"});
  ReceivedRecipient recipient;
  if (const auto refusal = ReadRecipient(argument, features_, envelope_.utf8, recipient)) return Refuse(*refusal);
  if (const auto refusal = FindRefusal(options_.rules, RuleStage::kRecipient, recipient.address)) return Say(*refusal);
  if (envelope_.recipients.size() >= options_.recipient_limit) return Say(452, "4.5.3", "Too many recipients");

  envelope_.recipients.push_back(std::move(recipient));
  Say(250, "2.1.5", "Ok");
}

std::optional<ServerReply> ServerSession::WhyNoContent() const {
  if (!has_sender_) return ServerReply{503, "5.5.1", "Say MAIL first"};
  if (envelope_.recipients.empty()) return ServerReply{554, "5.5.1", "No valid recipients"};
  return {};
}

void ServerSession::Data(std::string_view) {
  if (in_chunks_) return Refuse({503, "5.5.1", "DATA cannot follow BDAT"});
  if (has_sender_ && envelope_.body == "BINARYMIME") return Refuse({503, "5.5.1", "BINARYMIME needs BDAT"});
  // Not counted as a fault: a client that pipelines sends DATA before it knows that no recipient was taken.
  if (const auto refusal = WhyNoContent()) return Say(*refusal);
  BeginContent(Framing::kDot);
  phase_ = Phase::kData;
  Say(354, "", "End with <CRLF>.<CRLF>");
}

std::string_view ServerSession::ReceiveData(std::string_view bytes) {
  bytes.remove_prefix(scanner_.Scan(bytes, [this](std::string_view piece) { TakeContent(piece); }));
  if (scanner_.ended()) EndMessage();
  return bytes;
}

std::optional<ServerReply> ServerSession::WhyNoChunk() const {
  if ((features_ & kChunking) == 0) return ServerReply{502, "5.5.1", "BDAT is not offered"};
  return WhyNoContent();
}

// The octets of a chunk follow whatever the reply will be, so they are read even when it is refused (RFC 3030 2).
void ServerSession::Bdat(std::string_view argument) {
  const auto chunk = ReadChunk(argument);
  if (!chunk) {  // how much follows is not known, so that nothing after it could be told from commands
    Refuse({501, "5.5.4", "Write BDAT SIZE or BDAT SIZE LAST; closing"});
    return Close();
  }
  chunk_ = {chunk->size, chunk->last, WhyNoChunk()};
  if (!chunk_.refusal && !in_chunks_) {
    BeginContent(Framing::kCounted);
    in_chunks_ = true;
  }
  phase_ = Phase::kChunk;
  if (chunk_.left == 0) EndChunk();
}

std::string_view ServerSession::ReceiveChunk(std::string_view bytes) {
  const auto piece = bytes.substr(0, std::min<std::uint64_t>(bytes.size(), chunk_.left));
  chunk_.left -= piece.size();
  if (!chunk_.refusal) {
    if (binary_) {
      TakeContent(piece);
    } else {
      scanner_.Scan(piece, [this](std::string_view part) { TakeContent(part); });
    }
  }
  if (chunk_.left == 0) EndChunk();
  return bytes.substr(piece.size());
}

void ServerSession::EndChunk() {
  phase_ = Phase::kCommand;
  if (chunk_.refusal) return Say(*chunk_.refusal);  // no fault of a client that pipelines its chunks
  if (chunk_.last) return EndMessage();
  if (!dropped_) return Say(250, "2.0.0", fmt::format("{} octets so far", size_));
  if (const auto reply = WhyNotKept()) Say(*reply);
  ResetTransaction();
}

void ServerSession::BeginContent(Framing framing) {
  scanner_ = ContentScanner(framing);
  binary_ = envelope_.body == "BINARYMIME";
  dropped_ = false;
  too_large_ = false;
  size_ = 0;
  has_content_ = true;
  sink_.Begin();
}

void ServerSession::TakeContent(std::string_view piece) {
  if (dropped_) return;
  size_ += piece.size();
  too_large_ = size_ > options_.size_limit;
  if (too_large_ || !sink_.Write(piece)) DropContent();
}

void ServerSession::DropContent() {
  if (std::exchange(has_content_, false)) sink_.Drop();
  dropped_ = true;
}

std::optional<ServerReply> ServerSession::WhyNotKept() const {
  if (too_large_)
    return ServerReply{552, "5.3.4", fmt::format("The message is larger than {} octets", options_.size_limit)};
  if (dropped_) return ServerReply{452, "4.3.1", "The message cannot be stored now"};
  if (!binary_ && scanner_.Fault() != LineFault::kNone) return AnswerTo(scanner_.Fault());
  for (const auto& recipient : envelope_.recipients) {
    if (auto refusal = FindRefusal(options_.rules, RuleStage::kData, recipient.address)) return refusal;
  }
  return {};
}

// 250 is said only after the sink has the message for good: from then on it is ours.
void ServerSession::EndMessage() {
  phase_ = Phase::kCommand;
  if (const auto reply = WhyNotKept()) {
    Say(*reply);
    return ResetTransaction();
  }
  envelope_.helo = helo_;
  envelope_.peer = peer_.address;
  envelope_.tls = tls_;
  envelope_.user = user_;
  const auto kept = sink_.Keep(envelope_);
  if (kept) {
    has_content_ = false;
    faults_ = 0;
    Say(250, "2.0.0", *kept);
  } else {
    Say(452, "4.3.1", "The message cannot be stored now");
  }
  ResetTransaction();
}

void ServerSession::ResetTransaction() {
  DropContent();
  has_sender_ = false;
  in_chunks_ = false;
  envelope_ = {};
}

}  // namespace quillcast::smtp
