// What is told of a run beside its report and its results, in the same words by every face.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "platform/clock.h"
#include "platform/sentence.h"
#include "run/carrier.h"
#include "run/journal/recipient_states.h"
#include "run/pace/local_time.h"
#include "run/sending_run.h"
#include "smtp/outcome.h"

namespace quillcast::run {

// "25 messages were sent, 1 failed."; of what went into files, that nothing was sent.
Sentence CountsOf(const RunSummary& summary);
// The state of what was delivered: "sent", or "written".
const char* Name(Delivery delivery);
// What became of one message and why. Of one that was to be written our reason alone, for no server was asked.
std::string WhatBecameOf(const smtp::Outcome& outcome, Delivery delivery);
// What a state means for whoever sends, as a sentence.
const char* MeaningOf(ResultState state);
// "deferred, after 3 tries, to be tried again": where a recipient is.
std::string StandingOf(const JournalRow& row);
// "Dear [FirstName]", "(no subject)": for somebody to whom a tag would mean nothing; its field does.
std::string ReadableSubject(std::string subject);
// Who was left when it ended; nothing where nobody was.
std::optional<Sentence> NotTriedIn(const RunSummary& summary);
// Those, who was to be tried again and was not, who failed and could not help it, and who may have got it, by this run
// or by one before: a sentence for each of which there is somebody.
std::vector<Sentence> LeftBy(const RunSummary& summary);
// That they may have got it, and nobody knows.
Sentence UnknownOnes(std::int64_t recipients);

// Why the machine does not sleep (platform::Power::StayAwake).
inline constexpr const char* kKeepsAwake = "Messages are being sent.";

// What a run waits for (RunListener::Waits), and until when.
Sentence WaitsUntil(const Sentence& why, Moment until, const platform::Clock& clock);

// What follows on the same refusal so many times in a row (RunListener::GoOn).
enum class Then { kStops, kWaits };
Sentence RefusedTheSame(const smtp::Outcome& refusal, int times, Then then);

}  // namespace quillcast::run
