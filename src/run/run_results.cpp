#include "run/run_results.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/text.h"
#include "smtp/outcome_text.h"

namespace quillcast::run {
namespace {

bool Holds(std::string_view text, std::string_view lower_part) {
  return platform::AsciiLower(text).find(lower_part) != std::string::npos;
}

}  // namespace

std::uint32_t RunResults::DetailOf(std::string detail) {
  auto known = known_details_.find(detail);
  if (known == known_details_.end()) {
    known = known_details_.emplace(detail, static_cast<std::uint32_t>(details_.size())).first;
    details_.push_back(std::move(detail));
  }
  return known->second;
}

void RunResults::Add(std::int64_t position, std::string_view address, ResultState state, std::string detail) {
  rows_.push_back(
      {addresses_.size(), position, static_cast<std::uint32_t>(address.size()), DetailOf(std::move(detail)), state});
  addresses_ += address;
}

// Those not tried, who are out of the order, come behind all tries.
void RunResults::Add(const RecipientResult& result) {
  const ResultState state = StateOf(result.outcome.state);
  std::string detail = state == ResultState::kSent ? "" : smtp::WhyText(result.outcome);
  const auto known =
      result.tries == 1 ? rows_.end() : std::ranges::lower_bound(rows_, result.position, {}, &Row::position);
  if (known == rows_.end() || known->position != result.position) {
    return Add(result.position, result.address, state, std::move(detail));
  }
  known->state = state;
  known->detail = DetailOf(std::move(detail));
  ++changes_;
}

void RunResults::AddNotTried(std::int64_t position, std::string_view address, ResultState stays) {
  const bool was_tried = stays != ResultState::kNotTried;
  Add(position, address, ResultState::kNotTried,
      was_tried ? fmt::format("The run ended before this recipient, who stays {}.", Name(stays))
                : "The run ended before this recipient.");
}

ResultRow RunResults::At(std::size_t row) const {
  const Row& at = rows_[row];
  return {at.position, std::string_view(addresses_).substr(at.address_begin, at.address_size), at.state,
          details_[at.detail]};
}

std::vector<std::uint32_t> RunResults::Matching(const Filter& filter, std::size_t from) const {
  const std::string part = platform::AsciiLower(filter.text);
  std::vector<std::uint32_t> found;
  for (std::size_t i = from; i < rows_.size(); ++i) {
    const ResultRow row = At(i);
    if (filter.state && row.state != *filter.state) continue;
    if (filter.unsent_only && row.state == ResultState::kSent) continue;
    if (!part.empty() && !Holds(row.address, part) && !Holds(row.detail, part)) continue;
    found.push_back(static_cast<std::uint32_t>(i));
  }
  return found;
}

std::string RunResults::AsText(const std::vector<std::uint32_t>& rows) const {
  std::string text;
  for (const std::uint32_t place : rows) {
    const ResultRow row = At(place);
    text += fmt::format("{}\t{}\t{}\t{}\n", row.position, platform::Printable(row.address), Name(row.state),
                        platform::Printable(row.detail));
  }
  return text;
}

}  // namespace quillcast::run
