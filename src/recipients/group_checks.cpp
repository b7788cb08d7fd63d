#include "recipients/group_checks.h"

#include <algorithm>
#include <iterator>

#include "platform/text.h"
#include "recipients/check_email.h"
#include "recipients/text_order.h"

namespace quillcast::recipients {
namespace {

const GroupComplaint kAddressExists{"A recipient with the email you specified already exists.", GroupControl::kAddress};

GridRow RowOf(std::int64_t id, const Recipient& recipient) {
  return {.id = id,
          .first_name = recipient.values[kFirstName],
          .last_name = recipient.values[kLastName],
          .email = recipient.email()};
}

std::optional<GroupComplaint> CheckBlanks(std::string_view name) {
  if (name.front() == ' ') return GroupComplaint{"Group name cannot begin with space.", GroupControl::kName};
  if (name.back() == ' ') return GroupComplaint{"Group name cannot end with space.", GroupControl::kName};
  return {};
}

constexpr const char* kNameTaken = "A Group with the name you specified already exists. Specify a different name.";

// What cannot be typed into the box of a dialog is refused in words of our own.
std::optional<GroupComplaint> CheckKeys(std::string_view name) {
  if (name.size() > kLongestGroupName) {
    return GroupComplaint{"", GroupControl::kName, "A group name has at most 255 characters."};
  }
  if (IsGroupName(name)) return {};
  return GroupComplaint{"", GroupControl::kName, "A group name holds only letters A to Z, digits, blanks and \"-\"."};
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

std::string OnlyGroupNameKeys(std::string_view text) {
  std::string kept;
  std::copy_if(text.begin(), text.end(), std::back_inserter(kept),
               [](char c) { return IsGroupNameKey(static_cast<unsigned char>(c)); });
  return kept;
}

Result<std::optional<GroupComplaint>> MakeGroup(RecipientStore& store, std::string_view name) {
  if (name.empty()) return std::optional(GroupComplaint{"Please enter a name.", GroupControl::kName});
  if (auto complaint = CheckBlanks(name)) return complaint;
  if (auto complaint = CheckKeys(name)) return complaint;
  return TakenUnless(store.CreateGroupIfFree(name), {kNameTaken, GroupControl::kName});
}

Result<std::optional<GroupComplaint>> GiveGroupName(RecipientStore& store, std::string_view old_name,
                                                    std::string_view name) {
  if (name.empty()) return std::optional(GroupComplaint{"Please enter a name.", GroupControl::kName});
  if (name == old_name) return std::optional(GroupComplaint{"You didn't modify the group name.", GroupControl::kName});
  if (auto complaint = CheckBlanks(name)) return complaint;
  if (auto complaint = CheckKeys(name)) return complaint;
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

std::optional<GroupComplaint> CheckGroupsToImportTo(bool has_groups) {
  if (has_groups) return {};
  return GroupComplaint{"There is no group to import the data to."};
}

std::optional<GroupComplaint> CheckGroupsToExportFrom(bool has_groups) {
  if (has_groups) return {};
  return GroupComplaint{"There is no group to export the data from."};
}

std::optional<GroupComplaint> CheckOtherGroup(std::string_view from, std::string_view to) {
  if (auto complaint = CheckGroupChosen(to)) return complaint;
  if (CompareText(from, to) != 0) return {};
  return GroupComplaint{"The recipients are in that group already. Choose another group.", GroupControl::kGroup};
}

Sentence DeleteQuestion(std::string_view what) { return Say("Are you sure you want to delete '{}'?", what); }

std::optional<GroupComplaint> CheckAddress(const Recipient& recipient) {
  if (CheckEmail(recipient.email())) return {};
  return GroupComplaint{"Invalid email address.", GroupControl::kAddress};
}

Result<Entered> AddNewRecipient(RecipientStore& store, std::int64_t group_id, const Recipient& recipient) {
  if (const auto complaint = CheckAddress(recipient)) return Entered{complaint};
  const auto added = store.AddRecipientIfNew(group_id, recipient);
  if (!added) return added.error();
  return *added ? Entered{{}, RowOf(**added, recipient)} : Entered{kAddressExists};
}

Result<Entered> ChangeRecipient(RecipientStore& store, std::int64_t group_id, std::int64_t recipient_id,
                                const Recipient& recipient) {
  if (const auto complaint = CheckAddress(recipient)) return Entered{complaint};
  const auto changed = store.UpdateRecipientIfNew(group_id, recipient_id, recipient);
  if (!changed) return changed.error();
  return *changed ? Entered{{}, RowOf(recipient_id, recipient)} : Entered{kAddressExists};
}

}  // namespace quillcast::recipients
