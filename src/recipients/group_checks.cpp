#include "recipients/group_checks.h"

#include <algorithm>

#include "platform/text.h"
#include "recipients/check_email.h"

namespace quillcast::recipients {
namespace {

constexpr const char* kNameControl = "NameTextBox";
constexpr const char* kEmailControl = "EmailTextBox";
constexpr const char* kNoAddress = "Invalid email address.";
constexpr const char* kAddressExists = "A recipient with the email you specified already exists.";

std::optional<Complaint> CheckBlanks(std::string_view name) {
  if (name.front() == ' ') return Complaint{"Group name cannot begin with space.", kNameControl};
  if (name.back() == ' ') return Complaint{"Group name cannot end with space.", kNameControl};
  return {};
}

constexpr const char* kNameTaken = "A Group with the name you specified already exists. Specify a different name.";

// What cannot be typed into the box of a dialog has words of our own.
std::optional<Complaint> CheckKeys(std::string_view name) {
  if (IsGroupName(name)) return {};
  return Complaint{"A group name holds only letters A to Z, digits, blanks and \"-\".", kNameControl};
}

Result<std::optional<Complaint>> TakenUnless(const Result<bool>& written, const Complaint& complaint) {
  if (!written) return written.error();
  return *written ? std::optional<Complaint>() : complaint;
}

}  // namespace

bool IsGroupNameKey(char32_t key) {
  return key == U' ' || key == U'-' || (key < 0x80 && platform::AsciiIsAlnum(static_cast<char>(key)));
}

bool IsGroupName(std::string_view name) {
  return std::all_of(name.begin(), name.end(), [](char c) { return IsGroupNameKey(static_cast<unsigned char>(c)); });
}

Result<std::optional<Complaint>> MakeGroup(RecipientStore& store, std::string_view name) {
  if (name.empty()) return std::optional(Complaint{"Please enter a name.", kNameControl});
  if (auto complaint = CheckKeys(name)) return complaint;
  if (auto complaint = CheckBlanks(name)) return complaint;
  return TakenUnless(store.CreateGroupIfFree(name), {kNameTaken, kNameControl});
}

Result<std::optional<Complaint>> GiveGroupName(RecipientStore& store, std::string_view old_name,
                                               std::string_view name) {
  if (name.empty()) return std::optional(Complaint{"Please enter a name.", kNameControl});
  if (auto complaint = CheckKeys(name)) return complaint;
  if (name == old_name) return std::optional(Complaint{"You didn't modify the group name.", kNameControl});
  if (auto complaint = CheckBlanks(name)) return complaint;
  return TakenUnless(store.RenameGroupIfFree(old_name, name), {kNameTaken, kNameControl});
}

std::optional<Complaint> CheckGroupChosen(std::string_view group) {
  if (!group.empty()) return {};
  return Complaint{"Please specify a group.", "GroupComboBox"};
}

std::optional<Complaint> CheckGroupNotEmpty(std::int64_t recipients) {
  if (recipients > 0) return {};
  return Complaint{"The selected group does not contain any recipients.", ""};
}

Result<std::optional<Complaint>> AddNewRecipient(RecipientStore& store, std::int64_t group_id,
                                                 const Recipient& recipient) {
  if (!CheckEmail(recipient.email())) return std::optional(Complaint{kNoAddress, kEmailControl});
  return TakenUnless(store.AddRecipientIfNew(group_id, recipient), {kAddressExists, kEmailControl});
}

Result<std::optional<Complaint>> ChangeRecipient(RecipientStore& store, std::int64_t group_id,
                                                 std::int64_t recipient_id, const Recipient& recipient) {
  if (!CheckEmail(recipient.email())) return std::optional(Complaint{kNoAddress, kEmailControl});
  return TakenUnless(store.UpdateRecipientIfNew(group_id, recipient_id, recipient), {kAddressExists, kEmailControl});
}

}  // namespace quillcast::recipients
