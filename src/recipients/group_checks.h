// What must hold before a group or a recipient is written. Each check gives the first complaint, in the given order.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/complaint.h"
#include "recipients/recipient_store.h"

namespace quillcast::recipients {

// What can be typed into a group's name: ASCII letters, digits, blank and "-".
bool IsGroupNameKey(char32_t key);
bool IsGroupName(std::string_view name);

std::optional<Complaint> CheckNewGroupName(std::string_view name, std::span<const std::string> existing);
std::optional<Complaint> CheckRenamedGroup(std::string_view name, std::string_view old_name,
                                           std::span<const std::string> existing);

std::optional<Complaint> CheckGroupChosen(std::string_view group);
std::optional<Complaint> CheckGroupNotEmpty(std::int64_t recipients);

// The address rule, then that the address is not in the group. The error is the store's.
Result<std::optional<Complaint>> CheckNewRecipient(const RecipientStore& store, std::int64_t group_id,
                                                   const Recipient& recipient);
// The same for a recipient that is changed: its own row is no conflict.
Result<std::optional<Complaint>> CheckChangedRecipient(const RecipientStore& store, std::int64_t group_id,
                                                       std::int64_t recipient_id, const Recipient& recipient);

}  // namespace quillcast::recipients
