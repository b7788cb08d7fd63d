// What must hold before a group or a recipient is written, and the writing. Each gives the first complaint, in the
// given order.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/complaint.h"
#include "recipients/recipient_store.h"

namespace quillcast::recipients {

// The controls of the dialogs that a complaint sends the focus to.
enum class GroupControl { kName, kAddress, kGroup, kSearchTerm, kFoundRecipient };
using GroupComplaint = Complaint<GroupControl>;

// Characters; the box of a dialog takes no more.
inline constexpr std::size_t kLongestGroupName = 255;
// What can be typed into a group's name: ASCII letters, digits, blank and "-".
bool IsGroupNameKey(char32_t key);
bool IsGroupName(std::string_view name);
// What is left of a text that is pasted into a group's name, or comes from an input method.
std::string OnlyGroupNameKeys(std::string_view text);

// These write when nothing is to be complained of. The error is the store's.
Result<std::optional<GroupComplaint>> MakeGroup(RecipientStore& store, std::string_view name);
Result<std::optional<GroupComplaint>> GiveGroupName(RecipientStore& store, std::string_view old_name,
                                                    std::string_view name);

// What an entry dialog gives back: either it complains and stays open, or it wrote this row, which the grid shows
// without reading the group again.
struct Entered {
  std::optional<GroupComplaint> complaint;
  GridRow row = {};
};

// The address rule, which an entry dialog asks before it looks into the store.
std::optional<GroupComplaint> CheckAddress(const Recipient& recipient);

// The same, then that the address is not in the group; a recipient that is changed may keep its own.
Result<Entered> AddNewRecipient(RecipientStore& store, std::int64_t group_id, const Recipient& recipient);
Result<Entered> ChangeRecipient(RecipientStore& store, std::int64_t group_id, std::int64_t recipient_id,
                                const Recipient& recipient);

std::optional<GroupComplaint> CheckGroupChosen(std::string_view group);
std::optional<GroupComplaint> CheckGroupNotEmpty(std::int64_t recipients);
// That there is a group to take recipients into, or out of, before the dialog opens.
std::optional<GroupComplaint> CheckGroupsToImportTo(bool has_groups);
std::optional<GroupComplaint> CheckGroupsToExportFrom(bool has_groups);
// That what is moved, copied or merged goes into another group, which is chosen.
std::optional<GroupComplaint> CheckOtherGroup(std::string_view from, std::string_view to);

// What is asked before something is deleted, a group's name or an address.
Sentence DeleteQuestion(std::string_view what);

}  // namespace quillcast::recipients
