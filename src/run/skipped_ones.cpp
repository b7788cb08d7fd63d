#include "run/skipped_ones.h"

#include <fmt/format.h>

#include <algorithm>

#include "run/frozen/frozen_text.h"

namespace quillcast::run {
namespace {

std::string PlacesText(std::int64_t first, std::int64_t last) {
  return first == last ? fmt::format("#{}", first) : fmt::format("#{} to #{}", first, last);
}

}  // namespace

Result<std::optional<SkippedOnes>> SkippedOf(RunJournal& journal, const MailingEntry& mailing) {
  const auto frozen = ReadFrozen(journal, mailing.id);
  if (!frozen) {
    const Failure failure = frozen.error().failure;
    const bool is_of_text = failure == Failure::kBadData || failure == Failure::kUnavailable;
    // Whoever goes on with it is told what is wrong.
    return is_of_text ? Result(std::optional<SkippedOnes>()) : frozen.error();
  }
  SkippedOnes skipped{mailing.recipients, {1, mailing.recipients}};
  if (!frozen->inputs.range) return std::optional(skipped);
  skipped.part.first = frozen->inputs.range->first;
  skipped.part.last = skipped.part.first + mailing.recipients - 1;
  skipped.list = std::max(frozen->inputs.recipients, skipped.part.last);
  return std::optional(skipped);
}

Sentence WhoWasSkipped(const std::optional<SkippedOnes>& known) {
  if (!known) return Say("Who was skipped is not known: what the journal has of the letter is damaged.");
  const SkippedOnes& skipped = *known;
  if (skipped.count() == 0) return Say("Nobody was skipped: the run was for the whole list.");
  std::string places;
  if (skipped.part.first > 1) places = PlacesText(1, skipped.part.first - 1);
  if (skipped.part.last < skipped.list) {
    places += (places.empty() ? "" : " and ") + PlacesText(skipped.part.last + 1, skipped.list);
  }
  return Say("Skipped, for they are outside the part of the list that was asked for: {}.", places);
}

}  // namespace quillcast::run
