// What must hold before a group or a recipient is written, and the writing. Each gives the first complaint, in the
// given order.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/complaint.h"
#include "recipients/recipient_store.h"

namespace quillcast::recipients {

// The controls of the dialogs that a complaint sends the focus to.
enum class GroupControl { kName, kAddress, kGroup };
using GroupComplaint = Complaint<GroupControl>;

// What can be typed into a group's name: ASCII letters, digits, blank and "-".
bool IsGroupNameKey(char32_t key);
bool IsGroupName(std::string_view name);

// These write when nothing is to be complained of. The error is the store's.
Result<std::optional<GroupComplaint>> MakeGroup(RecipientStore& store, std::string_view name);
Result<std::optional<GroupComplaint>> GiveGroupName(RecipientStore& store, std::string_view old_name,
                                                    std::string_view name);
// The address rule, then that the address is not in the group; a recipient that is changed may keep its own.
Result<std::optional<GroupComplaint>> AddNewRecipient(RecipientStore& store, std::int64_t group_id,
                                                      const Recipient& recipient);
Result<std::optional<GroupComplaint>> ChangeRecipient(RecipientStore& store, std::int64_t group_id,
                                                      std::int64_t recipient_id, const Recipient& recipient);

std::optional<GroupComplaint> CheckGroupChosen(std::string_view group);
std::optional<GroupComplaint> CheckGroupNotEmpty(std::int64_t recipients);

}  // namespace quillcast::recipients
