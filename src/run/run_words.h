// What is told of a run beside its report and its results, in the same words by every face.
#pragma once

#include <optional>

#include "platform/sentence.h"
#include "run/sending_run.h"
#include "smtp/outcome.h"

namespace quillcast::run {

// "25 messages were sent, 1 failed."; of what went into files, that nothing was sent.
Sentence CountsOf(const RunSummary& summary);
// Who was left when it ended; nothing where nobody was.
std::optional<Sentence> NotTriedIn(const RunSummary& summary);

// What follows on the same refusal so many times in a row (RunListener::GoOn).
enum class Then { kStops, kWaits };
Sentence RefusedTheSame(const smtp::Outcome& refusal, int times, Then then);

}  // namespace quillcast::run
