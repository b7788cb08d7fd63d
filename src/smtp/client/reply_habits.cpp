#include "smtp/client/reply_habits.h"

namespace quillcast::smtp {
namespace {

// So many in words of their own make a habit, where there are no codes.
constexpr int kHabit = 2;

// Of the originator and of the destination (RFC 3463 3.2), which say nothing of a message.
constexpr std::string_view kOfSender = "2.1.0";
constexpr std::string_view kOfRecipient = "2.1.5";

ServerReply Without(std::string_view address, const ServerReply& reply) {
  ServerReply rest = reply;
  const std::size_t at = address.empty() ? std::string::npos : rest.text.find(address);
  if (at != std::string::npos) rest.text.erase(at, address.size());
  return rest;
}

bool SaysTheSame(const ServerReply& one, const ServerReply& other) {
  return one.enhanced == other.enhanced && one.text == other.text;
}

bool HaveCodesOfTheirOwn(const ServerReply& one, const ServerReply& other) {
  return !one.enhanced.empty() && !other.enhanced.empty() && one.enhanced != other.enhanced;
}

}  // namespace

void ReplyHabits::OnRecipient(const ServerReply& reply, std::string_view address) {
  recipient_ = Without(address, reply);
  address_ = address;
}

ReplyHabits::Slip ReplyHabits::OnMessage(const ServerReply& reply, const Neighbours& neighbours) {
  const ServerReply message = Without(address_, reply);
  const Slip slip = SlipOf(message, neighbours);
  if (slip != Slip::kNone) {
    window_.words().Doubt(message);
    return slip;
  }
  if (!neighbours.recipient && !neighbours.next) window_.words().Taken(message);
  if (!usual_) usual_ = {sender_, recipient_, message};
  if (SaysTheSame(message, recipient_)) {
    window_.AnswersAlike();
  } else {
    ++unlike_recipient_;
  }
  if (reset_ && SaysTheSame(message, *reset_)) {
    like_reset_ = true;
  } else {
    ++unlike_reset_;
  }
  return Slip::kNone;
}

ReplyHabits::Slip ReplyHabits::SlipOf(const ServerReply& message, const Neighbours& neighbours) const {
  if (window_.words().AreHabit(message)) return Slip::kNone;
  if (neighbours.recipient && IsToRecipient(message)) return Slip::kOneTooMany;
  if (neighbours.next == Awaited::kReset && IsToReset(message)) return Slip::kOneTooFew;
  if (neighbours.next == Awaited::kMail && IsToNextSender(message)) return Slip::kOneTooFew;
  return Slip::kNone;
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

}  // namespace quillcast::smtp
