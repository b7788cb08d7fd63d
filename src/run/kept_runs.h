// What a person is told of the mailings that the journal keeps, and what can be done about each.
#pragma once

#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/cancel.h"
#include "platform/clock.h"
#include "platform/result.h"
#include "platform/sentence.h"
#include "profile/folders.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

// The journal of this profile. Fails as RunJournal does.
Result<std::unique_ptr<RunJournal>> OpenJournal(const profile::Folders& folders, const platform::Clock& clock,
                                                const platform::CancelToken& cancel);

enum class MailingStanding : std::uint8_t {
  kGoesOn,     // some program sends it
  kCanResume,  // nobody does, and somebody has not been tried, or was to be tried again
  kFinished,   // everybody was tried as often as was to be, whatever became of each
};
MailingStanding StandingOf(const MailingEntry& mailing);
// "goes on", "can be resumed", "finished".
const char* Name(MailingStanding standing);
// "goes on", "ended", "cut off".
const char* Name(RunStanding standing);

// Nobody ended its last run: its program was killed, or the computer lost its power.
bool WasCutOff(const MailingEntry& mailing);
// "20 sent, 1 refused, 3 not tried": those that there are.
std::string CountsText(const StateCounts& counts);
// "can be resumed: 20 sent, 3 deferred, 5 not tried; 2 to be tried again": how the mailing stands, and where its
// recipients are.
std::string StandingText(const MailingEntry& mailing);
// Whom a resume is for: who was not tried, and who was to be tried again.
RecipientChoice WhoIsLeft();
// How many are chosen, where the mailing's own counts tell.
std::optional<std::int64_t> KnownCount(const MailingEntry& mailing, const RecipientChoice& choice);
// How many are chosen. Fails as the journal does.
Result<std::int64_t> CountChosen(RunJournal& journal, const MailingEntry& mailing, const RecipientChoice& choice);
// A subject as sentences name a run by it: on one line, and cut where it is long.
std::string ShownSubject(std::string_view subject);
// Whether a person means to forget it: which it is, and who never gets it then.
Sentence ForgetQuestion(const MailingEntry& mailing);
// That the mailing was forgotten, and what stays of it in this folder. `run`: as the person named it.
Sentence WhatIsForgotten(const MailingEntry& mailing, RunId run, const std::filesystem::path& history);
// Why nothing is done about the chosen ones: there are none. Says whom there are.
Error NobodyOf(const RecipientChoice& choice, const MailingEntry& mailing);
// Of a mailing that can be resumed: how many are left, and of those who are unknown what that means. Of one that goes
// on the latter alone, for nobody is left yet.
std::vector<Sentence> WhatIsLeft(const MailingEntry& mailing);

// Those that a person should be offered to go on with, newest first: cut off, or `left` by a program that was told to
// end, with somebody left or in doubt, and nothing was done about them since. And those of which nobody knows that.
Result<JournalList> CutOffMailings(RunJournal& journal, const std::vector<RunId>& left);

struct Forgotten {
  std::int64_t mailings = 0;
  std::int64_t in_doubt = 0;       // of these: mailings with recipients who are unknown
  std::int64_t unknown = 0;        // those recipients
  std::vector<MailingEntry> kept;  // those that go on or can be resumed
  std::vector<DamagedMailing> damaged;
};
// Forgets every finished mailing.
Result<Forgotten> ForgetFinished(RunJournal& journal);
// What that would forget.
Result<Forgotten> FinishedOnes(RunJournal& journal);
// Said before the history is cleared; nothing where there is none.
std::optional<Sentence> WhatWouldGo(const Forgotten& forgotten);
// "2 runs were forgotten.", and of how many nobody knows whether they got it; nothing where none was.
std::optional<Sentence> WhatWentOf(const Forgotten& forgotten);
// What was kept and why, naming each, or the first so many where they are more.
std::vector<Sentence> WhatStayed(const Forgotten& forgotten,
                                 std::size_t most_named = std::numeric_limits<std::size_t>::max());

}  // namespace quillcast::run
