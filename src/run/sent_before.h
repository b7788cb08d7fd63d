// Whether a group has had a message already, by what is kept of earlier runs.
#pragma once

#include <optional>

#include "document/message_document.h"
#include "platform/clock.h"
#include "platform/sentence.h"
#include "recipients/recipient.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

// A sentence on when, how often, and what became of it the last time; nothing for a message that this group never had
// from a run that is kept. It is the same message where subject and body are the same, octet for octet; the
// group may have had another name. Of earlier mailings with this subject the newest hundred are looked at. Fails as the
// journal does.
Result<std::optional<Sentence>> SentBefore(RunJournal& journal, const document::MessageDocument& document,
                                           const recipients::RecipientGroup& group, const platform::Clock& clock);

}  // namespace quillcast::run
