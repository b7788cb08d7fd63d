// Who of a list was skipped: those outside the part of it that a mailing was for. The journal has no rows of them.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/result.h"
#include "platform/sentence.h"
#include "recipients/row_source.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

inline constexpr const char* kSkipped = "skipped";

struct SkippedOnes {
  std::int64_t list = 0;          // recipients in all
  recipients::PartialRange part;  // the places that the mailing was for

  std::int64_t count() const { return list - (part.last - part.first + 1); }
};

// Fails as the journal does. Nothing where its text of the mailing is damaged, so that nobody knows.
Result<std::optional<SkippedOnes>> SkippedOf(RunJournal& journal, const MailingEntry& mailing);
// Their places: "Skipped, for they are outside the part of the list that was asked for: #1 to #4 and #8 to #30."
Sentence WhoWasSkipped(const std::optional<SkippedOnes>& skipped);

}  // namespace quillcast::run
