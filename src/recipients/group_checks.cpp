#include "recipients/group_checks.h"

#include <algorithm>

#include "platform/text.h"
#include "recipients/check_email.h"

namespace quillcast::recipients {
namespace {

constexpr const char* kNoAddress = "Invalid email address.";
constexpr const char* kAddressExists = "A recipient with the email you specified already exists.";

std::optional<GroupComplaint> CheckBlanks(std::string_view name) {
  if (name.front() == ' ') return GroupComplaint{"Group name cannot begin with space.", GroupControl::kName};
  if (name.back() == ' ') return GroupComplaint{"Group name cannot end with space.", GroupControl::kName};
  return {};
}

constexpr const char* kNameTaken = "A Group with the name you specified already exists. Specify a different name.";

// What cannot be typed into the box of a dialog has words of our own.
std::optional<GroupComplaint> CheckKeys(std::string_view name) {
  if (IsGroupName(name)) return {};
  return GroupComplaint{"A group name holds only letters A to Z, digits, blanks and \"-\".", GroupControl::kName};
}

Result<std::optional<GroupComplaint>> TakenUnless(const Result<bool>& written, const GroupComplaint& complaint) {
  if (!written) return written.error();
  return *written ? std::optional<GroupComplaint>() : complaint;
}

}  // namespace

bool IsGroupNameKey(char32_t key) {
  return key == U' ' || key == U'-' || (key < 0x80 && platform::AsciiIsAlnum(static_cast<char>(key)));
}

bool IsGroupName(std::string_view name) {
  return std::all_of(name.begin(), name.end(), [](char c) { return IsGroupNameKey(static_cast<unsigned char>(c)); });
}

Result<std::optional<GroupComplaint>> MakeGroup(RecipientStore& store, std::string_view name) {
  if (name.empty()) return std::optional(GroupComplaint{"Please enter a name.", GroupControl::kName});
  if (auto complaint = CheckKeys(name)) return complaint;
  if (auto complaint = CheckBlanks(name)) return complaint;
  return TakenUnless(store.CreateGroupIfFree(name), {kNameTaken, GroupControl::kName});
}

Result<std::optional<GroupComplaint>> GiveGroupName(RecipientStore& store, std::string_view old_name,
                                                    std::string_view name) {
  if (name.empty()) return std::optional(GroupComplaint{"Please enter a name.", GroupControl::kName});
  if (auto complaint = CheckKeys(name)) return complaint;
  if (name == old_name) return std::optional(GroupComplaint{"You didn't modify the group name.", GroupControl::kName});
  if (auto complaint = CheckBlanks(name)) return complaint;
  return TakenUnless(store.RenameGroupIfFree(old_name, name), {kNameTaken, GroupControl::kName});
}

std::optional<GroupComplaint> CheckGroupChosen(std::string_view group) {
  if (!group.empty()) return {};
  return GroupComplaint{"Please specify a group.", GroupControl::kGroup};
}

std::optional<GroupComplaint> CheckGroupNotEmpty(std::int64_t recipients) {
  if (recipients > 0) return {};
  return GroupComplaint{"The selected group does not contain any recipients."};
}

Result<std::optional<GroupComplaint>> AddNewRecipient(RecipientStore& store, std::int64_t group_id,
                                                      const Recipient& recipient) {
  if (!CheckEmail(recipient.email())) return std::optional(GroupComplaint{kNoAddress, GroupControl::kAddress});
  return TakenUnless(store.AddRecipientIfNew(group_id, recipient), {kAddressExists, GroupControl::kAddress});
}

Result<std::optional<GroupComplaint>> ChangeRecipient(RecipientStore& store, std::int64_t group_id,
                                                      std::int64_t recipient_id, const Recipient& recipient) {
  if (!CheckEmail(recipient.email())) return std::optional(GroupComplaint{kNoAddress, GroupControl::kAddress});
  return TakenUnless(store.UpdateRecipientIfNew(group_id, recipient_id, recipient),
                     {kAddressExists, GroupControl::kAddress});
}

}  // namespace quillcast::recipients
