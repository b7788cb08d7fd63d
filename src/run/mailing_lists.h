// The recipients of a mailing whom something became of, taken out of it to be written to again.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "platform/cancel.h"
#include "platform/result.h"
#include "recipients/recipient_store.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

// Writes them, as they were when the mailing began, as a list that an import takes back: every field, a line of
// headings first, in UTF-8. Gives how many. Fails as the journal and `write` do, and with kTryAgain after a cancel.
Result<std::int64_t> WriteList(RunJournal& journal, MailingId mailing, const RecipientChoice& choice,
                               const platform::CancelToken& cancel,
                               const std::function<Result<void>(std::string_view text)>& write);

struct GroupMade {
  std::int64_t added = 0;
  std::int64_t twice = 0;  // whose address stood in the list before
};

// Makes a new group of them, which undo takes back. Fails with kUsage where a group has this name, or where it is no
// name for one, as the store does, and with kTryAgain once the store's patience was cancelled; then there is no group.
Result<GroupMade> MakeGroup(RunJournal& journal, const MailingEntry& mailing, const RecipientChoice& choice,
                            std::string_view name, recipients::RecipientStore& store);

}  // namespace quillcast::run
