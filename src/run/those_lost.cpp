#include "run/those_lost.h"

#include <algorithm>

namespace quillcast::run {
namespace {

constexpr std::ptrdiff_t kMany = 20;

constexpr std::ptrdiff_t kMostOfTheirOwn = 2;

}  // namespace

void ThoseLost::Add(std::int64_t position, int before, int tries, const smtp::Outcome& outcome) {
  run_.IsTriedAgain(position, tries);
  in_a_row_.push_back(
      {position, before, outcome.has_sender, smtp::IsOfWay(outcome) && !outcome.has_sender, outcome.no_way});
  ++count_;
}

void ThoseLost::AddInDoubt(std::int64_t position) {
  in_a_row_.push_back({.position = position, .in_doubt = true});
  ++count_;
}

bool ThoseLost::AreManyAnew() const {
  return std::ranges::count_if(in_a_row_, [](const Lost& whom) { return whom.before == 0; }) >= kMany;
}

bool ThoseLost::MayBeTheirDoing() const {
  return in_a_row() <= kMostOfTheirOwn && std::ranges::none_of(in_a_row_, &Lost::has_no_way);
}

void ThoseLost::Fail(std::int64_t count) {
  for (; !in_a_row_.empty() && count_ - in_a_row() < count; in_a_row_.pop_front()) {
    const Lost& whom = in_a_row_.front();
    if (whom.is_not_theirs) ++left_;
    if (!whom.is_not_theirs && !whom.in_doubt) run_.IsTriedAgain(whom.position, 0);
  }
}

void ThoseLost::FailThoseLostTwice() {
  const auto is_lost_twice = [](const Lost& whom) { return whom.before > 0 && whom.has_sender; };
  for (const Lost& whom : in_a_row_) {
    if (is_lost_twice(whom)) run_.IsTriedAgain(whom.position, 0);
  }
  std::erase_if(in_a_row_, is_lost_twice);
}

void ThoseLost::Leave() {
  left_ += in_a_row() - std::ranges::count_if(in_a_row_, &Lost::in_doubt);
  in_a_row_.clear();
}

}  // namespace quillcast::run
