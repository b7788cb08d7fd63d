// The number of recipients of a group, as totals show it.
#pragma once

#include <cstdint>
#include <string_view>

#include "recipients/recipient_store.h"

namespace quillcast::recipients {

// A store that cannot be read counts as empty, and so does a group that does not exist. Where the reason matters, ask
// RecipientStore::CountRecipients.
inline std::int64_t GroupCount(const RecipientStore& store, std::string_view group_name) {
  return IgnoreErrors(store.CountRecipients(group_name), 0);
}

}  // namespace quillcast::recipients
