#include "run/run_words.h"

#include <fmt/format.h>

#include "document/merge_fields.h"
#include "platform/text.h"
#include "run/pace/pace_words.h"
#include "smtp/outcome_text.h"

namespace quillcast::run {

Sentence CountsOf(const RunSummary& summary) {
  if (summary.delivery == Delivery::kWritten) {
    return SayOf(summary.sent, "{} message was written, {} failed. Nothing was sent.",
                 "{} messages were written, {} failed. Nothing was sent.", NumberValue(summary.failed));
  }
  return SayOf(summary.sent, "{} message was sent, {} failed.", "{} messages were sent, {} failed.",
               NumberValue(summary.failed));
}

Sentence WaitsUntil(const Sentence& why, Moment until, const platform::Clock& clock) {
  return Say("Waits until {}. {}", TimeText(until, clock), why);
}

const char* Name(Delivery delivery) { return delivery == Delivery::kSent ? "sent" : "written"; }

std::string WhatBecameOf(const smtp::Outcome& outcome, Delivery delivery) {
  if (delivery == Delivery::kSent || outcome.reason.empty()) return smtp::OutcomeText(outcome);
  return "not written. " + outcome.reason;
}

const char* MeaningOf(ResultState state) {
  switch (state) {
    case ResultState::kSent:
      return "The server took the message over.";
    case ResultState::kRefused:
      return "The server refused it.";
    case ResultState::kDeferred:
      return "The server refused it for now; another time it may take it.";
    case ResultState::kFailed:
      return "No server came to a verdict; the message did not go out.";
    case ResultState::kUnknown:
      return "The message was out and no answer came: it may have arrived. It is not sent again by itself.";
    case ResultState::kNotTried:
      return "Nothing was sent.";
    case ResultState::kInFlight:
      break;
  }
  return "The message is on its way.";
}

std::string StandingOf(const JournalRow& row) {
  return fmt::format("{}{}{}", Name(row.state), row.attempts > 1 ? fmt::format(", after {} tries", row.attempts) : "",
                     row.again ? ", to be tried again" : "");
}

std::string ReadableSubject(std::string subject) {
  if (subject.empty()) return "(no subject)";
  constexpr std::string_view kBegin = "$*Merge";
  for (const auto& field : document::kMergeFields) {
    const std::string_view name = field.tag.substr(kBegin.size(), field.tag.size() - kBegin.size() - 2);
    subject = platform::ReplaceAll(subject, field.tag, fmt::format("[{}]", name));
  }
  return subject;
}

std::optional<Sentence> NotTriedIn(const RunSummary& summary) {
  if (summary.not_tried == 0) return {};
  if (summary.not_tried == 1) return Say("1 recipient was not tried (#{}); nothing was sent there.", summary.last);
  if (summary.last - summary.first_left + 1 > summary.not_tried) {
    return Say("{} recipients were not tried, #{} the first of them and #{} the last; nothing was sent to them.",
               NumberValue(summary.not_tried), summary.first_left, summary.last);
  }
  return Say("{} recipients were not tried (from #{} to #{}); nothing was sent to them.",
             NumberValue(summary.not_tried), summary.first_left, summary.last);
}

std::vector<Sentence> LeftBy(const RunSummary& summary) {
  std::vector<Sentence> sentences;
  if (auto left = NotTriedIn(summary)) sentences.push_back(*std::move(left));
  if (summary.retries_left > 0) {
    sentences.push_back(
        SayOf(summary.retries_left, "{} recipient was to be tried again and was not: what became of it stays as it is.",
              "{} recipients were to be tried again and were not: what became of them stays as it is."));
  }
  if (summary.not_their_doing > 0) {
    sentences.push_back(SayOf(summary.not_their_doing,
                              "{} recipient got nothing by the fault of the account or of its server, and is sent to "
                              "when the run is resumed.",
                              "{} recipients got nothing by the fault of the account or of its server, and are sent to "
                              "when the run is resumed."));
  }
  if (summary.unknown > 0) sentences.push_back(UnknownOnes(summary.unknown));
  if (summary.unknown_before > 0) {
    sentences.push_back(
        SayOf(summary.unknown_before,
              "{} recipient was unknown before this run and still is. It is not sent again unless you "
              "ask for it.",
              "{} recipients were unknown before this run and still are. They are not sent again unless "
              "you ask for it."));
  }
  return sentences;
}

Sentence UnknownOnes(std::int64_t recipients) {
  return SayOf(recipients,
               "{} recipient is unknown: the message was out and no answer came, so it may have arrived. "
               "It is not sent again unless you ask for it.",
               "{} recipients are unknown: their messages were out and no answers came, so they may have "
               "arrived. They are not sent again unless you ask for it.");
}

Sentence RefusedTheSame(const smtp::Outcome& refusal, int times, Then then) {
  const std::string why = smtp::WhyText(refusal);
  if (refusal.reply.code == 0 && refusal.state == smtp::State::kFailed &&
      refusal.code != smtp::ResultCode::kAuthNotOffered) {
    return then == Then::kStops ? Say("Nothing could be sent {} times in a row, so the run stops: {}", times, why)
                                : Say("Nothing could be sent {} times in a row, so the run waits: {}", times, why);
  }
  return then == Then::kStops ? Say("The server refused the same {} times in a row, so the run stops: {}", times, why)
                              : Say("The server refused the same {} times in a row, so the run waits: {}", times, why);
}

}  // namespace quillcast::run
