#include "mail_file/fact_collector.h"

#include <iterator>

#include "mail_file/gmime_border.h"
#include "mail_file/limits.h"
#include "mail_file/mailbox_list.h"
#include "mail_file/relay_stamp.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::size_t kLongestFact = std::size_t{64} * 1024;  // bytes

}  // namespace

bool FactCollector::HasRoomFor(std::size_t bytes) {
  if (bytes_ + bytes > kMostFactBytes) is_full_ = true;
  if (is_full_) return false;
  bytes_ += bytes;
  return true;
}

void FactCollector::TakeRecipients(std::string_view value, RecipientType type) {
  EachMailbox(value, [&](Mailbox mailbox) {
    if (!HasRoomFor(sizeof(Recipient) + mailbox.name.size() + mailbox.address.size())) return false;
    recipients_[static_cast<std::size_t>(type)].push_back({std::move(mailbox), type});
    return true;
  });
}

void FactCollector::Take(std::string_view name, std::string_view value) {
  const auto is = [name](std::string_view wanted) { return platform::EqualsIgnoringAsciiCase(name, wanted); };
  if (is("To")) return TakeRecipients(value, RecipientType::kNormal);
  if (is("Cc")) return TakeRecipients(value, RecipientType::kCarbonCopy);
  if (is("Bcc")) return TakeRecipients(value, RecipientType::kBlindCarbonCopy);
  value = value.substr(0, kLongestFact);
  if (is("Received") && HasRoomFor(sizeof(RelayStamp) + value.size())) {
    facts_.stamps.push_back(ReadRelayStamp(DecodeHeaderText(value)));
  } else if (is("Subject") && !has_subject_) {
    has_subject_ = true;
    facts_.subject = DecodeHeaderText(value);
  } else if (is("Date") && facts_.date.empty()) {
    facts_.date = DecodeHeaderText(value);
    facts_.time = ReadTime(value);
  } else if (is("From") && !has_from_) {
    EachMailbox(value, [this](Mailbox mailbox) {
      has_from_ = true;
      facts_.from = std::move(mailbox);
      return false;
    });
  }
}

MessageFacts FactCollector::Finish() {
  for (auto& list : recipients_)
    facts_.recipients.insert(facts_.recipients.end(), std::make_move_iterator(list.begin()),
                             std::make_move_iterator(list.end()));
  return std::move(facts_);
}

}  // namespace quillcast::mail_file
