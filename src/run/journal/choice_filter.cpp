#include "run/journal/choice_filter.h"

#include "run/journal/state_record.h"

namespace quillcast::run {

Result<ChoiceFilter> ChoiceFilter::Of(platform::Database& database, const std::filesystem::path& file,
                                      MailingId mailing, const RecipientChoice& choice) {
  if (choice.replies.empty()) return ChoiceFilter(choice, {});
  auto words = WordsReader::Of(database, file, mailing);
  if (!words) return words.error();
  return ChoiceFilter(choice, *std::move(words));
}

Result<bool> ChoiceFilter::Takes(ResultState state, const char* octets) {
  const bool is_tried_again = choice_.tried_again && IsTriedAgain(state, octets);
  if (!Holds(choice_.states, state) && !is_tried_again) return false;
  if (!words_) return true;
  const StateRecord record = ReadRecord(octets);
  if (record.state != state) return false;  // what became of it is in doubt, and so is what was said
  if (IsAmong(choice_.replies, record.reply, {})) return true;
  if (record.words == 0) return false;
  const auto words = words_->Read(record.words);
  if (!words) return words.error();
  return IsAmong(choice_.replies, record.reply, (*words)->texts[0]);
}

}  // namespace quillcast::run
