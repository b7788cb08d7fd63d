#include "run/kept_runs.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

#include "platform/text.h"
#include "run/journal/sqlite_run_journal.h"
#include "run/run_words.h"

namespace quillcast::run {
namespace {

constexpr std::size_t kLongestSubject = 60;

std::int64_t CountOf(const MailingEntry& mailing, ResultState state) {
  return mailing.counts[static_cast<std::size_t>(state)];
}

RunStanding LastStanding(const MailingEntry& mailing) {
  return mailing.runs.empty() ? RunStanding::kEnded : mailing.runs.back().standing;
}

}  // namespace

Result<std::unique_ptr<RunJournal>> OpenJournal(const profile::Folders& folders, const platform::Clock& clock,
                                                const platform::CancelToken& cancel) {
  JournalPlace place{.file = folders.RunJournal(), .clock = &clock};
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
  return CountOf(mailing, ResultState::kNotTried) > 0 ? MailingStanding::kCanResume : MailingStanding::kFinished;
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

bool WasCutOff(const MailingEntry& mailing) { return LastStanding(mailing) == RunStanding::kCutOff; }

std::string CountsText(const StateCounts& counts) {
  std::string text;
  for (std::size_t n = 0; n < kResultStates; ++n) {
    if (counts[n] == 0) continue;
    if (!text.empty()) text += ", ";
    text += platform::WithThousands(counts[n]) + " " + Name(static_cast<ResultState>(n));
  }
  return text.empty() ? "nobody" : text;
}

Result<std::int64_t> CountChosen(RunJournal& journal, const MailingEntry& mailing, const RecipientChoice& choice) {
  if (choice.replies.empty()) return CountIn(mailing.counts, choice.states);
  return journal.Count(mailing.id, choice);
}

Error NobodyOf(const RecipientChoice& choice) {
  std::string names;
  for (std::size_t n = 0; n < kResultStates; ++n) {
    if (choice.states[n]) names += (names.empty() ? "" : ", ") + std::string(Name(static_cast<ResultState>(n)));
  }
  if (!choice.replies.empty()) {
    return {Failure::kNoInput,
            Say("No recipient of this run is in this state ({}) with this reply: {}.", names,
                fmt::format("{}", fmt::join(choice.replies, ", "))),
            "quillcast runs show has the reply to each."};
  }
  return {Failure::kNoInput, Say("No recipient of this run is in this state: {}.", names), "Choose other states."};
}

std::vector<Sentence> WhatIsLeft(const MailingEntry& mailing) {
  std::vector<Sentence> sentences;
  if (const auto left = CountOf(mailing, ResultState::kNotTried); left > 0) {
    sentences.push_back(SayOf(left, "{} recipient was not tried; nothing was sent there.",
                              "{} recipients were not tried; nothing was sent to them."));
  }
  if (const auto unknown = CountOf(mailing, ResultState::kUnknown); unknown > 0) {
    sentences.push_back(
        SayOf(unknown,
              "{} recipient is unknown: the message was out and no answer came, so it may have arrived. "
              "It is not sent again unless you ask for it.",
              "{} recipients are unknown: their messages were out and no answers came, so they may have "
              "arrived. They are not sent again unless you ask for it."));
  }
  return sentences;
}

Result<std::vector<MailingEntry>> CutOffMailings(RunJournal& journal) {
  auto all = journal.List();
  if (!all) return all.error();
  std::erase_if(*all, [](const MailingEntry& mailing) {
    return !WasCutOff(mailing) ||
           (StandingOf(mailing) == MailingStanding::kFinished && CountOf(mailing, ResultState::kUnknown) == 0);
  });
  return all;
}

Result<Forgotten> ForgetFinished(RunJournal& journal) {
  auto all = journal.List();
  if (!all) return all.error();
  Forgotten forgotten;
  for (MailingEntry& mailing : *all) {
    if (StandingOf(mailing) == MailingStanding::kFinished) {
      const auto gone = journal.Forget(mailing.id);
      if (gone) {
        ++forgotten.mailings;
        continue;
      }
      if (gone.error().failure != Failure::kTryAgain) return gone.error();  // else somebody began to go on with it
    }
    forgotten.kept.push_back(std::move(mailing));
  }
  return forgotten;
}

std::vector<Sentence> WhatStayed(const Forgotten& forgotten) {
  std::vector<Sentence> sentences;
  for (const MailingEntry& mailing : forgotten.kept) {
    const std::string subject = platform::Printable(mailing.subject, kLongestSubject);
    sentences.push_back(StandingOf(mailing) == MailingStanding::kCanResume
                            ? Say("The run \"{}\" to {} was kept, for it can be resumed.", subject, mailing.group)
                            : Say("The run \"{}\" to {} was kept, for it goes on.", subject, mailing.group));
  }
  return sentences;
}

}  // namespace quillcast::run
