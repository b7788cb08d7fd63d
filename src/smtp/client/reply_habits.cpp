#include "smtp/client/reply_habits.h"

namespace quillcast::smtp {
namespace {

std::string Without(std::string_view address, std::string text) {
  const std::size_t at = address.empty() ? std::string::npos : text.find(address);
  if (at != std::string::npos) text.erase(at, address.size());
  return text;
}

bool SaysTheSame(const ServerReply& one, const ServerReply& other) {
  return one.enhanced == other.enhanced && one.text == other.text;
}

// Of the originator or the destination (RFC 3463 3.2), which says nothing of a message.
bool IsOfAddress(const ServerReply& reply) { return reply.enhanced.starts_with("2.1."); }

}  // namespace

void ReplyHabits::OnSender(const ServerReply& reply) { sender_ = reply; }

void ReplyHabits::OnRecipient(const ServerReply& reply, std::string_view address) {
  recipient_ = {reply.code, reply.enhanced, Without(address, reply.text)};
  address_ = address;
}

// The first answer to a message over a connection, with none to compare it to: one of an address's kind, where the
// envelope has one answer twice, or it is itself the one to the recipient.
bool ReplyHabits::IsOddAtOnce(const ServerReply& to_message) const {
  if (!IsOfAddress(to_message)) return false;
  return SaysTheSame(sender_, recipient_) || Without(address_, to_message.text) == recipient_.text;
}

bool ReplyHabits::IsOutOfStep(const ServerReply& to_message, Sent how) {
  if (!usual_) {
    usual_ = {recipient_, to_message};
    return how != Sent::kInvited && IsOddAtOnce(to_message);
  }
  if (IsOfAddress(to_message) && !IsOfAddress(usual_->message) && !usual_->message.enhanced.empty()) return true;
  if (how != Sent::kChunkAhead) return false;
  const auto& [recipient, message] = *usual_;
  if (!recipient.enhanced.empty() && !message.enhanced.empty() && recipient.enhanced != message.enhanced) {
    return to_message.enhanced == recipient.enhanced;
  }
  return recipient.text != message.text && Without(address_, to_message.text) == recipient.text;
}

}  // namespace quillcast::smtp
