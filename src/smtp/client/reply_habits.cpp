#include "smtp/client/reply_habits.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace quillcast::smtp {
namespace {

// So many in words of their own make a habit, where there are no codes.
constexpr int kHabit = 2;

// Of the originator and of the destination (RFC 3463 3.2), which say nothing of a message.
constexpr std::string_view kOfSender = "2.1.0";
constexpr std::string_view kOfRecipient = "2.1.5";

constexpr std::string_view kRoundAddress = " \n<>()[],;:\"'";

// Which one it names tells nothing, and another answer may name another.
ServerReply WithoutAddresses(const ServerReply& reply) {
  if (reply.text.find('@') == std::string::npos) return reply;
  ServerReply rest{reply.code, reply.enhanced, {}};
  const std::string_view text = reply.text;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find_first_of(kRoundAddress, begin), text.size());
    const std::string_view word = text.substr(begin, end - begin);
    if (word.find('@') == std::string_view::npos) rest.text += word;
    if (end < text.size()) rest.text += text[end];
    begin = end + 1;
  }
  return rest;
}

bool SaysTheSame(const ServerReply& one, const ServerReply& other) {
  return one.enhanced == other.enhanced && one.text == other.text;
}

bool HaveCodesOfTheirOwn(const ServerReply& one, const ServerReply& other) {
  return !one.enhanced.empty() && !other.enhanced.empty() && one.enhanced != other.enhanced;
}

}  // namespace

void ReplyHabits::OnSender(const ServerReply& reply) { sender_ = WithoutAddresses(reply); }

void ReplyHabits::OnRecipient(const ServerReply& reply) { recipient_ = WithoutAddresses(reply); }

ReplyHabits::Slip ReplyHabits::OnMessage(const ServerReply& reply, const Neighbours& neighbours) {
  const ServerReply message = WithoutAddresses(reply);
  const Slip slip = SlipOf(message, neighbours);
  if (slip == Slip::kOneTooMany || slip == Slip::kOneTooFew) {
    window_.words().Doubt(message);
    return slip;
  }
  if (neighbours.is_sure) window_.words().Taken(message);
  if (slip == Slip::kPerhaps) held_.push_back(message);
  if (!usual_) usual_ = {sender_, recipient_, message};
  if (!SaysTheSame(message, recipient_)) {
    ++unlike_recipient_;
  } else if (slip == Slip::kNone) {
    window_.AnswersAlike();
  }
  if (reset_ && SaysTheSame(message, *reset_)) {
    like_reset_ = true;
  } else {
    ++unlike_reset_;
  }
  return slip;
}

// A refusal that is said once more, late, is read as that of the message behind.
ReplyHabits::Slip ReplyHabits::OnMessageRefused(const ServerReply& reply, bool is_sure) {
  const ServerReply refusal = WithoutAddresses(reply);
  const bool is_once_more = refusal_ && SaysTheSame(refusal, *refusal_);
  refusal_ = refusal;
  if (is_sure || !is_once_more || window_.words().AreHabit(refusal)) return Slip::kNone;
  held_.push_back(refusal);
  return Slip::kPerhaps;
}

void ReplyHabits::OnInStep() {
  for (const ServerReply& message : held_) window_.words().Learn(message);
  held_.clear();
}

ReplyHabits::Slip ReplyHabits::SlipOf(const ServerReply& message, const Neighbours& neighbours) const {
  if (window_.words().AreHabit(message)) return Slip::kNone;
  if (neighbours.recipient && IsToRecipient(message)) return Slip::kOneTooMany;
  if (neighbours.next == Awaited::kReset && IsToReset(message)) return Slip::kOneTooFew;
  if (neighbours.next == Awaited::kMail && IsToNextSender(message)) return Slip::kOneTooFew;
  return !neighbours.is_sure && MayBeToAnother(message) ? Slip::kPerhaps : Slip::kNone;
}

// With one answer too many before RCPT its own is the sender's; with one behind it, it is this one once more, which a
// server may say to a message as well.
bool ReplyHabits::IsToRecipient(const ServerReply& message) const {
  const bool is_ahead = recipient_.enhanced == kOfSender && message.enhanced == kOfRecipient;
  if (!usual_) return is_ahead;
  const auto& [sender, recipient, usual] = *usual_;
  if (is_ahead && recipient.enhanced != kOfSender) return true;
  const bool is_once_more = SaysTheSame(message, recipient_) && !window_.answers_alike();
  if (HaveCodesOfTheirOwn(recipient, usual)) {
    return message.enhanced == recipient.enhanced && (recipient_.enhanced != recipient.enhanced || is_once_more);
  }
  if (SaysTheSame(recipient, usual) || !SaysTheSame(message, recipient)) return false;
  const bool is_behind_sender = SaysTheSame(recipient_, sender) && !SaysTheSame(sender, recipient);
  return is_behind_sender || (is_once_more && unlike_recipient_ >= kHabit);
}

bool ReplyHabits::IsToReset(const ServerReply& message) const {
  return reset_ && unlike_reset_ >= kHabit && !like_reset_ && !SaysTheSame(usual_->message, *reset_) &&
         SaysTheSame(message, *reset_);
}

bool ReplyHabits::IsToNextSender(const ServerReply& message) const {
  return message.enhanced == kOfSender && sender_.enhanced == kOfSender && recipient_.enhanced != kOfSender &&
         (!usual_ || usual_->message.enhanced != kOfSender);
}

// What a late answer too many has moved into its place: that to a recipient, a sender or RSET, of this message or one
// before.
bool ReplyHabits::MayBeToAnother(const ServerReply& message) const {
  if (message.enhanced == kOfSender || message.enhanced == kOfRecipient) return true;
  const auto reads_like = [&message](const ServerReply& other) {
    if (message.enhanced.empty() || other.enhanced.empty()) return SaysTheSame(message, other);
    return message.enhanced == other.enhanced;
  };
  if (reads_like(recipient_) || SaysTheSame(message, sender_) || (reset_ && SaysTheSame(message, *reset_))) return true;
  return usual_ && (SaysTheSame(message, usual_->recipient) || SaysTheSame(message, usual_->sender));
}

}  // namespace quillcast::smtp
