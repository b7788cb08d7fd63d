#include "run/kept_runs.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>
#include <span>
#include <system_error>
#include <utility>

#include "platform/text.h"
#include "run/damaged_runs.h"
#include "run/history.h"
#include "run/journal/sqlite_run_journal.h"
#include "run/run_words.h"

namespace quillcast::run {
namespace {

constexpr std::size_t kLongestShownSubject = 60;

std::int64_t CountOf(const MailingEntry& mailing, ResultState state) {
  return mailing.counts[static_cast<std::size_t>(state)];
}

RunStanding LastStanding(const MailingEntry& mailing) {
  return mailing.runs.empty() ? RunStanding::kEnded : mailing.runs.back().standing;
}

void Count(Forgotten& forgotten, const MailingEntry& mailing) {
  const auto unknown = CountOf(mailing, ResultState::kUnknown);
  ++forgotten.mailings;
  forgotten.in_doubt += unknown > 0 ? 1 : 0;
  forgotten.unknown += unknown;
}

Sentence ThoseInDoubt(const Forgotten& forgotten) {
  return SayOf(forgotten.unknown, "{} recipient of whom nobody knows whether the message arrived",
               "{} recipients of whom nobody knows whether the message arrived");
}

// "refused, deferred"
std::string NamesOf(const StateSet& states) {
  std::vector<const char*> names;
  for (std::size_t n = 0; n < kResultStates; ++n) {
    if (states[n]) names.push_back(Name(static_cast<ResultState>(n)));
  }
  return fmt::format("{}", fmt::join(names, ", "));
}

// And the command that goes on with them, where there is one.
Sentence WhatElseThereIs(const MailingEntry& mailing) {
  const std::string counts = CountsText(mailing.counts);
  const RunId run = mailing.runs.front().id;
  if (CountOf(mailing, ResultState::kNotTried) > 0) {
    return Say("There are: {}. quillcast runs resume {} goes on.", counts, run);
  }
  std::vector<const char*> again;
  for (const ResultState state : {ResultState::kDeferred, ResultState::kRefused, ResultState::kFailed}) {
    if (CountOf(mailing, state) > 0) again.push_back(Name(state));
  }
  if (!again.empty()) {
    return Say("There are: {}. quillcast runs retry {} --state {} sends to those again.", counts, run,
               fmt::format("{}", fmt::join(again, ",")));
  }
  if (CountOf(mailing, ResultState::kUnknown) > 0) {
    return Say(
        "There are: {}. quillcast runs resume {} --include-unknown sends to the unknown, though some of them may "
        "have it.",
        counts, run);
  }
  return Say("There are: {}.", counts);
}

// What is beside a journal, its locks too, is beside the file itself, by whichever link one comes to it.
std::filesystem::path WhereItLeads(const std::filesystem::path& file) {
  std::error_code unknown;
  auto real = std::filesystem::canonical(file, unknown);
  return unknown ? file : real;
}

}  // namespace

Result<std::unique_ptr<RunJournal>> OpenJournal(const profile::Folders& folders, const platform::Clock& clock,
                                                const platform::CancelToken& cancel) {
  JournalPlace place{.file = WhereItLeads(folders.RunJournal()), .clock = &clock};
  place.patience.cancel = &cancel;
  place.patience.cancel_ends_statements = false;  // what became of a recipient is kept to the end
  auto journal = SqliteRunJournal::Open(place);
  if (!journal) return journal.error();
  return std::unique_ptr<RunJournal>(*std::move(journal));
}

MailingStanding StandingOf(const MailingEntry& mailing) {
  const bool goes_on = std::any_of(mailing.runs.begin(), mailing.runs.end(),
                                   [](const RunEntry& run) { return run.standing == RunStanding::kGoesOn; });
  if (goes_on) return MailingStanding::kGoesOn;
  const bool is_anybody_left = CountOf(mailing, ResultState::kNotTried) + mailing.tried_again > 0;
  return is_anybody_left ? MailingStanding::kCanResume : MailingStanding::kFinished;
}

const char* Name(MailingStanding standing) {
  switch (standing) {
    case MailingStanding::kGoesOn:
      return "goes on";
    case MailingStanding::kCanResume:
      return "can be resumed";
    case MailingStanding::kFinished:
      break;
  }
  return "finished";
}

const char* Name(RunStanding standing) {
  switch (standing) {
    case RunStanding::kGoesOn:
      return "goes on";
    case RunStanding::kEnded:
      return "ended";
    case RunStanding::kCutOff:
      break;
  }
  return "cut off";
}

bool WasCutOff(const MailingEntry& mailing) { return LastStanding(mailing) == RunStanding::kCutOff; }

std::string CountsText(const StateCounts& counts) {
  std::string text;
  for (std::size_t n = 0; n < kResultStates; ++n) {
    if (counts[n] == 0) continue;
    text += fmt::format("{}{} {}", text.empty() ? "" : ", ", platform::WithThousands(counts[n]),
                        Name(static_cast<ResultState>(n)));
  }
  return text.empty() ? "nobody" : text;
}

std::string StandingText(const MailingEntry& mailing) {
  const std::string again = mailing.tried_again == 0
                                ? ""
                                : fmt::format("; {} to be tried again", platform::WithThousands(mailing.tried_again));
  return fmt::format("{}: {}{}", Name(StandingOf(mailing)), CountsText(mailing.counts), again);
}

RecipientChoice WhoIsLeft() {
  RecipientChoice choice(SetOf({ResultState::kNotTried}));
  choice.tried_again = true;
  return choice;
}

std::optional<std::int64_t> KnownCount(const MailingEntry& mailing, const RecipientChoice& choice) {
  if (!choice.replies.empty()) return {};
  const std::int64_t count = CountIn(mailing.counts, choice.states);
  if (!choice.tried_again) return count;
  // They are all of these states, so that either all of them are counted or none.
  const StateSet apart = choice.states & WhoDidNotGetIt();
  return apart.none() ? std::optional(count + mailing.tried_again) : std::nullopt;
}

Result<std::int64_t> CountChosen(RunJournal& journal, const MailingEntry& mailing, const RecipientChoice& choice) {
  if (const auto known = KnownCount(mailing, choice)) return *known;
  return journal.Count(mailing.id, choice);
}

Error NobodyOf(const RecipientChoice& choice, const MailingEntry& mailing) {
  const std::string names = NamesOf(choice.states);
  if (!choice.replies.empty()) {
    return {Failure::kNoInput,
            Say("No recipient of this run is in this state ({}) with this reply: {}.", names,
                fmt::format("{}", fmt::join(choice.replies, ", "))),
            "quillcast runs show has the reply to each."};
  }
  const Sentence nobody = AreSeveral(choice) ? Say("No recipient of this run is in one of these states: {}.", names)
                                             : Say("No recipient of this run is in this state: {}.", names);
  return {Failure::kNoInput, nobody, WhatElseThereIs(mailing)};
}

std::string ShownSubject(std::string_view subject) { return platform::Printable(subject, kLongestShownSubject); }

std::vector<Sentence> WhatIsLeft(const MailingEntry& mailing) {
  std::vector<Sentence> sentences;
  const bool goes_on = StandingOf(mailing) == MailingStanding::kGoesOn;
  if (const auto left = CountOf(mailing, ResultState::kNotTried); left > 0 && !goes_on) {
    sentences.push_back(SayOf(left, "{} recipient was not tried; nothing was sent there.",
                              "{} recipients were not tried; nothing was sent to them."));
  }
  if (mailing.tried_again > 0 && !goes_on) {
    sentences.push_back(SayOf(
        mailing.tried_again,
        "{} recipient was deferred, not reached, or refused because of the account, and is to be tried again.",
        "{} recipients were deferred, not reached, or refused because of the account, and are to be tried again."));
  }
  if (const auto unknown = CountOf(mailing, ResultState::kUnknown); unknown > 0) {
    sentences.push_back(UnknownOnes(unknown));
  }
  return sentences;
}

Sentence ForgetQuestion(const MailingEntry& mailing) {
  const std::string subject = ShownSubject(mailing.subject);
  Sentence which = StandingOf(mailing) == MailingStanding::kCanResume
                       ? Say("\"{}\" to {} can be resumed.", subject, mailing.group)
                       : Say("\"{}\" to {} is finished.", subject, mailing.group);
  for (const Sentence& left : WhatIsLeft(mailing)) which = Say("{} {}", which, left);
  return Say("{} Are you sure you want to forget it?", which);
}

Sentence WhatIsForgotten(const MailingEntry& mailing, RunId run, const std::filesystem::path& history) {
  const auto reports = std::ranges::count_if(mailing.runs, [&](const RunEntry& entry) {
    return std::filesystem::exists(ReportIn(history, entry.history), IgnoreErrors());
  });
  if (reports == 0) return Say("Run #{} was forgotten.", run);
  if (reports == 1) return Say("Run #{} was forgotten; its report stays in the history.", run);
  return Say("Run #{} was forgotten; its {} reports stay in the history.", run, reports);
}

Result<JournalList> CutOffMailings(RunJournal& journal, const std::vector<RunId>& left) {
  auto all = journal.List();
  if (!all) return all.error();
  std::erase_if(all->mailings, [&left](const MailingEntry& mailing) {
    const bool was_left = !mailing.runs.empty() && std::ranges::count(left, mailing.runs.back().id) > 0;
    const auto standing = StandingOf(mailing);
    return !(WasCutOff(mailing) || was_left) || standing == MailingStanding::kGoesOn ||
           (standing == MailingStanding::kFinished && CountOf(mailing, ResultState::kUnknown) == 0);
  });
  return all;
}

Result<Forgotten> ForgetFinished(RunJournal& journal) {
  auto all = journal.List();
  if (!all) return all.error();
  Forgotten forgotten;
  for (MailingEntry& mailing : all->mailings) {
    if (StandingOf(mailing) == MailingStanding::kFinished) {
      const auto gone = journal.Forget(mailing.id);
      if (gone) {
        Count(forgotten, mailing);
        continue;
      }
      if (gone.error().failure != Failure::kTryAgain) return gone.error();  // else somebody began to go on with it
    }
    forgotten.kept.push_back(std::move(mailing));
  }
  forgotten.damaged = std::move(all->damaged);
  return forgotten;
}

Result<Forgotten> FinishedOnes(RunJournal& journal) {
  auto all = journal.List();
  if (!all) return all.error();
  Forgotten finished;
  for (MailingEntry& mailing : all->mailings) {
    if (StandingOf(mailing) == MailingStanding::kFinished) {
      Count(finished, mailing);
    } else {
      finished.kept.push_back(std::move(mailing));
    }
  }
  return finished;
}

std::optional<Sentence> WhatWouldGo(const Forgotten& forgotten) {
  if (forgotten.mailings == 0) return {};
  if (forgotten.unknown == 0) {
    return SayOf(forgotten.mailings, "Clearing the history forgets {} run too.",
                 "Clearing the history forgets {} runs too.");
  }
  const Sentence whom = ThoseInDoubt(forgotten);
  if (forgotten.mailings == 1) return Say("Clearing the history forgets 1 run too, with {}.", whom);
  return Say("Clearing the history forgets {} runs too, {} of them with {}.", NumberValue(forgotten.mailings),
             NumberValue(forgotten.in_doubt), whom);
}

std::optional<Sentence> WhatWentOf(const Forgotten& forgotten) {
  if (forgotten.mailings == 0) return {};
  if (forgotten.unknown == 0) return SayOf(forgotten.mailings, "{} run was forgotten.", "{} runs were forgotten.");
  const Sentence whom = ThoseInDoubt(forgotten);
  if (forgotten.mailings == 1) return Say("1 run was forgotten, with {}.", whom);
  return Say("{} runs were forgotten, {} of them with {}.", NumberValue(forgotten.mailings),
             NumberValue(forgotten.in_doubt), whom);
}

std::vector<Sentence> WhatStayed(const Forgotten& forgotten, std::size_t most_named) {
  std::vector<Sentence> sentences;
  const std::size_t named = std::min(most_named, forgotten.kept.size());
  for (const MailingEntry& mailing : std::span(forgotten.kept).first(named)) {
    const std::string subject = ShownSubject(mailing.subject);
    sentences.push_back(StandingOf(mailing) == MailingStanding::kCanResume
                            ? Say("The run \"{}\" to {} was kept, for it can be resumed.", subject, mailing.group)
                            : Say("The run \"{}\" to {} was kept, for it goes on.", subject, mailing.group));
  }
  const auto more = static_cast<std::int64_t>(forgotten.kept.size() - named);
  if (more > 0) sentences.push_back(SayOf(more, "So was {} more.", "So were {} more."));
  if (!forgotten.damaged.empty()) {
    sentences.push_back(
        Say("{} That was kept: forget it by itself, in the window of the runs or with quillcast runs forget --damaged.",
            WhatIsDamaged(forgotten.damaged)));
  }
  return sentences;
}

}  // namespace quillcast::run
