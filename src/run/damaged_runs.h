// Runs of which the journal's file holds what cannot be: nobody can read what became of their recipients.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/result.h"
#include "platform/sentence.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

// "What the journal has of 3 runs is damaged: #1, #4, and 1 whose number is lost."
Sentence WhatIsDamaged(const std::vector<DamagedMailing>& damaged);
// That, where there is such a run, and what to do.
Result<void> CheckIsWhole(const JournalList& kept);
// All of them, those among them that the list counts and of whom a row, a state or a word is damaged: each that does
// not go on is read to its end.
Result<std::vector<DamagedMailing>> FindDamaged(RunJournal& journal);
struct ForgottenDamaged {
  std::int64_t forgotten = 0;
  std::optional<Error> stays;  // why not all of them
};
// What another program has in hand keeps no other; any other failure ends it.
ForgottenDamaged ForgetDamaged(RunJournal& journal, const std::vector<DamagedMailing>& damaged);
// Whether a person means to forget it, or all of them.
Sentence ForgetQuestion(const DamagedMailing& damaged);
Sentence ForgetQuestion(const std::vector<DamagedMailing>& damaged);
// "2 damaged runs were forgotten."
Sentence DamagedAreForgotten(std::int64_t count);

}  // namespace quillcast::run
