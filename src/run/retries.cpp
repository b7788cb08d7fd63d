#include "run/retries.h"

#include <algorithm>
#include <array>

namespace quillcast::run {
namespace {

// How a network, or a server that is being started anew, fails for a while. Nothing was taken then.
constexpr std::array kPassing = {smtp::ResultCode::kConnectFailed, smtp::ResultCode::kConnectionLost,
                                 smtp::ResultCode::kConnectTimeout, smtp::ResultCode::kResolveTimeout,
                                 smtp::ResultCode::kReplyTimeout};

}  // namespace

bool Retries::IsWorthAnother(const smtp::Outcome& outcome) {
  if (!outcome.is_decided()) return false;
  if (outcome.state == smtp::State::kDeferred) return true;
  return outcome.state == smtp::State::kFailed && std::ranges::find(kPassing, outcome.code) != kPassing.end();
}

bool Retries::Defer(const Retry& retry) {
  static_assert(sizeof(Waiting) == 24, "a million who wait take 24 MB");
  const int tries = retry.before + retry.tries;
  if (tries > rules_.times) return false;
  const auto row = static_cast<std::size_t>(tries - 1);
  if (rows_.size() <= row) rows_.resize(row + 1);
  rows_[row].push_back({retry.position, clock_.SinceBoot() + rules_.DelayAfter(tries), retry.domain, retry.before});
  ++size_;
  return true;
}

const Retries::Row* Retries::FirstRow() const {
  const Row* first = nullptr;
  for (const Row& row : rows_) {
    if (!row.empty() && (first == nullptr || row.front().due < first->front().due)) first = &row;
  }
  return first;
}

std::optional<platform::Instant> Retries::NextDue() const {
  const Row* first = FirstRow();
  if (first == nullptr) return {};
  return clock_.Monotonic() + (first->front().due - clock_.SinceBoot());
}

bool Retries::IsOneDue() const {
  const Row* first = FirstRow();
  return first != nullptr && first->front().due <= clock_.SinceBoot();
}

std::optional<Retry> Retries::TakeDue() {
  if (!IsOneDue()) return {};
  const Row* first = FirstRow();
  const std::ptrdiff_t row = first - rows_.data();
  const Waiting waiting = first->front();
  rows_[static_cast<std::size_t>(row)].pop_front();
  --size_;
  return Retry{waiting.position, waiting.domain, static_cast<int>(row) + 1 - waiting.before, waiting.before};
}

}  // namespace quillcast::run
