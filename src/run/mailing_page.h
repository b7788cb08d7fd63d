// A page on a mailing to hand to whoever ordered it: what became of it, in numbers and charts.
#pragma once

#include <functional>
#include <string_view>

#include "platform/cancel.h"
#include "platform/clock.h"
#include "platform/result.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

// Writes HTML that needs nothing else and runs nothing, piece by piece: who sent it to whom and when, by state, by
// reply, by recipient domain, over time, and the first thousand who did not get it, with the servers' own words. Memory
// does not grow with the recipients. Fails as the journal and `write` do, and with kTryAgain after a cancel.
Result<void> WriteMailingPage(RunJournal& journal, const MailingEntry& mailing, const platform::Clock& clock,
                              const platform::CancelToken& cancel,
                              const std::function<Result<void>(std::string_view html)>& write);

}  // namespace quillcast::run
