#include "recipients/group_checks.h"

#include <algorithm>

#include "platform/text.h"
#include "recipients/check_email.h"
#include "recipients/text_order.h"

namespace quillcast::recipients {
namespace {

constexpr const char* kNameControl = "NameTextBox";
constexpr const char* kEmailControl = "EmailTextBox";
constexpr const char* kAddressExists = "A recipient with the email you specified already exists.";

std::optional<Complaint> CheckBlanks(std::string_view name) {
  if (name.front() == ' ') return Complaint{"Group name cannot begin with space.", kNameControl};
  if (name.back() == ' ') return Complaint{"Group name cannot end with space.", kNameControl};
  return {};
}

std::optional<Complaint> CheckNotTaken(std::string_view name, std::span<const std::string> existing) {
  const bool taken = std::any_of(existing.begin(), existing.end(),
                                 [name](const std::string& other) { return CompareText(name, other) == 0; });
  if (!taken) return {};
  return Complaint{"A Group with the name you specified already exists. Specify a different name.", kNameControl};
}

}  // namespace

bool IsGroupNameKey(char32_t key) {
  return key == U' ' || key == U'-' || (key < 0x80 && platform::AsciiIsAlnum(static_cast<char>(key)));
}

bool IsGroupName(std::string_view name) {
  return std::all_of(name.begin(), name.end(), [](char c) { return IsGroupNameKey(static_cast<unsigned char>(c)); });
}

std::optional<Complaint> CheckNewGroupName(std::string_view name, std::span<const std::string> existing) {
  if (name.empty()) return Complaint{"Please enter a name.", kNameControl};
  if (auto complaint = CheckBlanks(name)) return complaint;
  return CheckNotTaken(name, existing);
}

std::optional<Complaint> CheckRenamedGroup(std::string_view name, std::string_view old_name,
                                           std::span<const std::string> existing) {
  if (name.empty()) return Complaint{"Please enter a name.", kNameControl};
  if (name == old_name) return Complaint{"You didn't modify the group name.", kNameControl};
  if (auto complaint = CheckBlanks(name)) return complaint;
  return CheckNotTaken(name, existing);
}

std::optional<Complaint> CheckGroupChosen(std::string_view group) {
  if (!group.empty()) return {};
  return Complaint{"Please specify a group.", "GroupComboBox"};
}

std::optional<Complaint> CheckGroupNotEmpty(std::int64_t recipients) {
  if (recipients > 0) return {};
  return Complaint{"The selected group does not contain any recipients.", ""};
}

Result<std::optional<Complaint>> CheckNewRecipient(const RecipientStore& store, std::int64_t group_id,
                                                   const Recipient& recipient) {
  using Found = std::optional<Complaint>;
  if (!CheckEmail(recipient.email())) return Found({"Invalid email address.", kEmailControl});
  const auto exists = store.RecipientExists(group_id, recipient.email());
  if (!exists) return exists.error();
  return *exists ? Found({kAddressExists, kEmailControl}) : Found();
}

Result<std::optional<Complaint>> CheckChangedRecipient(const RecipientStore& store, std::int64_t group_id,
                                                       std::int64_t recipient_id, const Recipient& recipient) {
  using Found = std::optional<Complaint>;
  if (!CheckEmail(recipient.email())) return Found({"Invalid email address.", kEmailControl});
  const auto other = store.FindRecipient(group_id, recipient.email());
  if (!other) return other.error();
  const bool conflict = *other && (*other)->id != recipient_id;
  return conflict ? Found({kAddressExists, kEmailControl}) : Found();
}

}  // namespace quillcast::recipients
