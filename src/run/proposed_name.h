// How a file is called that is made of a mailing, until the person calls it something else.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "run/journal/recipient_choice.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

// As a mailing is told from others.
struct NamedMailing {
  std::string subject;
  std::string group;
  std::chrono::sys_seconds began;
};

// "Hello to Readers 2026-11-27, refused.csv": with the day by the clock on the wall, what is in it where that is said,
// and the ending. No folder, and nothing that a file system or a shell takes for something else, whatever stands in
// subject and group.
std::string ProposedName(const NamedMailing& mailing, std::string_view what, std::string_view ending,
                         const platform::Clock& clock);
std::string ProposedName(const MailingEntry& mailing, std::string_view what, std::string_view ending,
                         const platform::Clock& clock);
// What a list of the chosen ones holds: their one state, or recipients.
std::string_view WhatIsIn(const RecipientChoice& choice);

}  // namespace quillcast::run
