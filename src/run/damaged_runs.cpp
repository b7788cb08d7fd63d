#include "run/damaged_runs.h"

#include <iterator>
#include <string>

#include "run/kept_runs.h"

namespace quillcast::run {

Sentence WhatIsDamaged(const std::vector<DamagedMailing>& damaged) {
  std::string numbers;
  std::int64_t lost = 0;
  for (const DamagedMailing& mailing : damaged) {
    if (mailing.run == 0) {
      ++lost;
    } else {
      numbers += (numbers.empty() ? "#" : ", #") + std::to_string(mailing.run);
    }
  }
  Sentence which = Say("{}", numbers);
  if (lost > 0) {
    const Sentence others = SayOf(lost, "{} whose number is lost", "{} whose numbers are lost");
    which = numbers.empty() ? others : Say("{}, and {}", numbers, others);
  }
  return SayOf(std::ssize(damaged), "What the journal has of {} run is damaged: {}.",
               "What the journal has of {} runs is damaged: {}.", which);
}

Result<void> CheckIsWhole(const JournalList& kept) {
  if (kept.damaged.empty()) return {};
  return Error{
      Failure::kBadData, WhatIsDamaged(kept.damaged),
      "Forget what is damaged, in the window of the runs or with quillcast runs forget --damaged; the reports in the "
      "history stay."};
}

Result<std::vector<DamagedMailing>> FindDamaged(RunJournal& journal) {
  auto kept = journal.List();
  if (!kept) return kept.error();
  for (const MailingEntry& mailing : kept->mailings) {
    if (StandingOf(mailing) == MailingStanding::kGoesOn) continue;
    const auto read =
        journal.Visit(mailing.id, StateSet().set(), 0, [](const JournalRow&) -> Result<bool> { return true; });
    if (!read && read.error().failure != Failure::kBadData) return read.error();
    if (!read) kept->damaged.push_back({mailing.id, mailing.runs.front().id, mailing.subject, mailing.group});
  }
  return std::move(kept->damaged);
}

ForgottenDamaged ForgetDamaged(RunJournal& journal, const std::vector<DamagedMailing>& damaged) {
  ForgottenDamaged all;
  for (const DamagedMailing& mailing : damaged) {
    const auto gone = journal.Forget(mailing.id);
    if (gone) {
      ++all.forgotten;
      continue;
    }
    all.stays = gone.error();
    if (gone.error().failure != Failure::kTryAgain) break;
  }
  return all;
}

Sentence ForgetQuestion(const DamagedMailing& damaged) {
  const Sentence which = damaged.run == 0 ? Sentence("This run") : Say("Run #{}", damaged.run);
  const std::string subject = ShownSubject(damaged.subject);
  const Sentence named = subject.empty() ? which : Say("{} (\"{}\")", which, subject);
  return Say(
      "{} is damaged, so that nobody can read what became of its recipients. Are you sure you want to forget it?",
      named);
}

Sentence ForgetQuestion(const std::vector<DamagedMailing>& damaged) {
  return Say(
      "{} What became of their recipients can be read no more, or only of some. Are you sure you want to forget "
      "what is damaged?",
      WhatIsDamaged(damaged));
}

Sentence DamagedAreForgotten(std::int64_t count) {
  return SayOf(count, "{} damaged run was forgotten.", "{} damaged runs were forgotten.");
}

}  // namespace quillcast::run
