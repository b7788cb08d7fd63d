// Taking back the last change of many recipients, once: rows come back under their old keys, a deleted group too.
#pragma once

#include <cstdint>
#include <optional>

#include "recipients/edit/edit.h"

namespace quillcast::recipients {

// What can be taken back now; nothing when there is nothing.
Result<std::optional<EditStep>> FindUndo(const RecipientStore& store);

// "Do you want to take back the move from 'A' to 'B'? Recipients: 3"
Sentence UndoQuestion(const EditStep& step);

struct UndoOutcome {
  EditStep step;
  std::int64_t restored = 0;  // rows that are as they were before
  std::int64_t left = 0;      // rows that were changed since by somebody, or whose address or group is no longer free
};

// One transaction. Errors: kUsage when there is nothing to take back, and when a group by the name of a deleted one
// has been made since.
Result<UndoOutcome> Undo(const RecipientStore& store, const OnProgress& on_progress = {});

// Forgets what could be taken back, and with it the recipients who were deleted.
Result<void> ForgetUndo(const RecipientStore& store);

// For Edit: makes room for what a new change finds, and keeps what was done.
Result<void> MakeUndoTables(platform::Database& database);
Result<void> KeepUndoStep(platform::Database& database, const EditStep& step);
std::string UndoSortMark(std::string_view sort_sql);

}  // namespace quillcast::recipients
