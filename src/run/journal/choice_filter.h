// Tells of a recipient's record in the journal whether it is one of a choice.
#pragma once

#include <optional>

#include "run/journal/recipient_choice.h"
#include "run/journal/words_table.h"

namespace quillcast::run {

class ChoiceFilter {
 public:
  static Result<ChoiceFilter> Of(platform::Database& database, const std::filesystem::path& file, MailingId mailing,
                                 const RecipientChoice& choice);

  // `state` is as what it counts, whatever its record says. Best asked in the order of the list.
  Result<bool> Takes(ResultState state, const char* record);

 private:
  ChoiceFilter(RecipientChoice choice, std::optional<WordsReader> words)
      : choice_(std::move(choice)), words_(std::move(words)) {}

  RecipientChoice choice_;
  std::optional<WordsReader> words_;  // where replies are asked for
};

}  // namespace quillcast::run
