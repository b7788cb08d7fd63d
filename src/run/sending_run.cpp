#include "run/sending_run.h"

#include <utility>

#include "run/letter_run.h"

namespace quillcast::run {

RunSummary SendLetters(const RunParts& parts, HistoryEntry entry, RunListener& listener) {
  listener.Began(entry.report.path());
  return LetterRun(parts, std::move(entry), listener).Execute();
}

RunSummary LetterRun::Execute() {
  telling_.report().Started();
  if (!Begin()) OpenThoseLeft();  // not frozen, no run; but who is in the group can still be told
  telling_.report().SendingTo(InRange(), parts_.range && InRange() > 0 ? std::optional(range_) : parts_.range);
  telling_.Progress(InRange(), 0, 0);
  TellAboutPictures();
  telling_.Flush();  // what cannot be recorded is not begun
  if (run_) parts_.carrier.Carry(*this);
  if (!summary_.stopped) summary_.stopped = parts_.carrier.trouble();
  NameThoseNotTried();
  if (run_) SettleThoseLost();
  End();
  summary_.history = history_;
  summary_.delivery = parts_.carrier.delivery();
  summary_.cancelled = IsCancelled() && summary_.not_tried + summary_.retries_left > 0;
  telling_.report().Completed(summary_);
  telling_.Flush();
  return summary_;
}

bool LetterRun::Begin() {
  auto run = parts_.begin(history_);
  if (!run) {
    if (MayGoOn()) summary_.stopped = run.error();
    return false;
  }
  run_ = std::move(*run);
  summary_.run = run_->id();
  telling_.Began(*run_);
  in_turn_.emplace(*run_, parts_.turns, order_, retries_);
  lost_.emplace(*run_);
  TakeSize();
  return true;
}

void LetterRun::OpenThoseLeft() {
  auto rows = parts_.rows();
  if (!rows) return;  // they are counted by what was known before
  rows_ = std::move(*rows);
  walk_.emplace(*rows_, parts_.range);
}

// The group may have changed while whoever sends was asked, and goes on changing: what was frozen is who gets it.
void LetterRun::TakeSize() {
  const std::int64_t size = run_->list_size();
  range_ = parts_.range ? UpTo(size, *parts_.range) : PartialRange{1, size};
  summary_.last = range_.last;
  if (parts_.range) summary_.skipped = size - SizeOf(range_);
  if (size != parts_.recipients) {
    listener_.Note(SayOf(size, "The group has changed meanwhile: it has {} recipient now, not {}.",
                         "The group has changed meanwhile: it has {} recipients now, not {}.",
                         NumberValue(parts_.recipients)));
  }
  if (InRange() == 0) {
    summary_.stopped = Error{Failure::kUsage, "Nobody is left in the list to send to.", "Choose the recipients anew."};
  } else if (parts_.range && range_.last < parts_.range->last) {
    listener_.Note(Say("The list ends with #{}, so #{} to #{} of the part are nobody.", range_.last, range_.last + 1,
                       parts_.range->last));
  }
}

bool LetterRun::NextOf(Result<bool> next) {
  unreadable_ = unreadable_ || !next;
  if (!next && !summary_.stopped) summary_.stopped = next.error();
  return next && *next;
}

// The next of those who were not come to, or false at the end of the list.
bool LetterRun::NextLeft() {
  if (run_) return NextOf(in_turn_->NextOfList(row_, position_));
  if (!walk_ || !NextOf(walk_->Next(row_))) return false;
  position_ = walk_->position();
  return true;
}

// A journal that cannot be ended says of the run, later, that its program was lost; it still knows everybody.
void LetterRun::End() {
  if (!run_) return;
  const auto ended = run_->End();
  if (!ended && !summary_.stopped) summary_.stopped = ended.error();
}

// Of the last in a row nobody knows what came behind them, where the run ended before its list, reached nobody at all,
// or lost too many for it to be something of each. But at whom a server that was there hung up again, when all of them
// were asked a second time, that is theirs.
void LetterRun::SettleThoseLost() {
  const bool reached_nobody = summary_.sent == 0 && summary_.failed == NotTheirDoing() + lost_->in_a_row();
  const bool is_cut_short = summary_.stopped || IsCancelled() || does_not_go_on_;
  if (!is_cut_short && !reached_nobody && lost_->MayBeTheirDoing()) lost_->Fail(lost_->count());
  if (!is_cut_short) lost_->FailThoseLostTwice();
  lost_->Leave();
  summary_.not_their_doing = NotTheirDoing();
}

// Whatever ended the run: a cancel, a full disk, a refusal that nobody wanted to go on after. Those who cannot be named
// are counted by what is known of the list.
void LetterRun::NameThoseNotTried() {
  order_.LeaveTheWaiting();
  TellThoseReady();
  telling_.TellThoseLeft();
  while (NextLeft()) telling_.NotTried({position_, row_.email(), run_ ? run_->before().state : ResultState::kNotTried});
  if ((run_ || walk_) && !unreadable_) return;
  summary_.not_tried = InRange() - summary_.sent - summary_.failed;
  summary_.last = range_.last;
  summary_.first_left = range_.last - summary_.not_tried + 1;
}

void LetterRun::TellAboutPictures() {
  const auto& troubles = parts_.message.picture_troubles();
  if (troubles.empty()) return;
  telling_.report().BodyNotLoaded(troubles.front().code);  // the body is loaded once and has one result
  for (const auto& trouble : troubles) {
    listener_.Note(message::GoesWithout(trouble));
  }
}

}  // namespace quillcast::run
