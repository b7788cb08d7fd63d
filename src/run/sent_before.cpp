#include "run/sent_before.h"

#include "run/frozen/frozen_text.h"
#include "run/kept_runs.h"
#include "run/run_words.h"

namespace quillcast::run {
namespace {

constexpr int kMostLookedAt = 100;  // each is read as a whole

bool MayHaveGoneOut(const MailingEntry& mailing) {
  return mailing.counts[static_cast<std::size_t>(ResultState::kSent)] > 0 ||
         mailing.counts[static_cast<std::size_t>(ResultState::kUnknown)] > 0;
}

bool IsSame(const document::MessageDocument& one, const document::MessageDocument& other) {
  return one.subject == other.subject && one.html == other.html && one.text == other.text && one.format == other.format;
}

}  // namespace

Result<std::optional<Sentence>> SentBefore(RunJournal& journal, const document::MessageDocument& document,
                                           const recipients::RecipientGroup& group, const platform::Clock& clock) {
  const auto kept = journal.List();
  if (!kept) return kept.error();
  const MailingEntry* last = nullptr;
  std::int64_t times = 0;
  int looked_at = 0;
  for (const MailingEntry& mailing : kept->mailings) {
    if (mailing.subject != document.subject || mailing.runs.empty() || !MayHaveGoneOut(mailing)) continue;
    if (++looked_at > kMostLookedAt) break;
    const auto frozen = ReadFrozen(journal, mailing.id);
    if (!frozen) continue;  // of a newer version, or damaged
    if (!frozen->inputs.IsTo(group) || !IsSame(frozen->inputs.document, document)) continue;
    if (last == nullptr) last = &mailing;
    ++times;
  }
  if (last == nullptr) return std::optional<Sentence>();
  const std::string when = MomentText(last->runs.front().began, clock);
  const std::string counts = CountsText(last->counts);
  if (times == 1) return std::optional(Say("This group had this message before, on {}: {}.", when, counts));
  return std::optional(
      Say("This group had this message {} times before, the last time on {}: {}.", times, when, counts));
}

}  // namespace quillcast::run
