#include "run/slow_down.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>

#include "platform/text.h"
#include "smtp/outcome_text.h"

namespace quillcast::run {
namespace {

using namespace std::chrono_literals;
using platform::Duration;

constexpr double kSlowest = 1;  // a minute
constexpr double kSlower = 0.5;
constexpr double kFaster = 1.1;
constexpr Duration kOnce = 10s;
constexpr Duration kQuiet = 1min;

constexpr std::array kCodes = {421, 450, 451, 452};
// What servers write of somebody who sends too much. Of a mailbox that is full they write some of it too.
constexpr std::array<std::string_view, 13> kTooFast = {
    "too many", "too much", "too fast",  "throttl",      "slow down",    "rate lim",         "rate-lim",
    "ratelim",  "exceeded", "too often", "sending rate", "unusual rate", "unexpected volume"};
// Who does not know the sender yet takes the message another time, at whatever pace.
constexpr std::array<std::string_view, 6> kGreylists = {"greylist",  "graylist",  "grey list",
                                                        "gray list", "grey-list", "gray-list"};

// Not a mere "closing connection".
constexpr std::array<std::string_view, 8> kOfOneConnection = {"this connection", "per connection", "one connection",
                                                              "a connection",    "this session",   "per session",
                                                              "one session",     "a session"};

std::string RateText(double a_minute) {
  if (a_minute >= 10) return platform::WithThousands(std::llround(a_minute));
  return fmt::format("{:.1f}", a_minute);
}

}  // namespace

bool SlowDown::IsAskedBy(const smtp::Outcome& outcome) {
  const smtp::ServerReply& reply = outcome.reply;
  if (reply.code / 100 != 4) return false;
  const bool is_of_mailbox = reply.enhanced.starts_with("4.2.");
  if (is_of_mailbox || std::ranges::find(kCodes, reply.code) == kCodes.end()) return false;
  const std::string text = platform::AsciiLower(reply.text);
  if (text.find("mailbox") != std::string::npos) return false;
  const auto says = [&](std::string_view words) { return text.find(words) != std::string::npos; };
  return std::ranges::none_of(kGreylists, says) && std::ranges::any_of(kTooFast, says);
}

void SlowDown::WentOut() {
  const auto now = clock_.Monotonic();
  if (lately_.empty() || now - lately_.back().begin >= 1s) lately_.push_back({now, 0});
  ++lately_.back().messages;
  while (now - lately_.front().begin > 1min) lately_.pop_front();
}

// Of the last minute, in which it may have waited.
double SlowDown::RateOfLate() {
  const auto now = clock_.Monotonic();
  while (!lately_.empty() && now - lately_.front().begin > 1min) lately_.pop_front();
  if (lately_.empty()) return 0;
  double messages = 0;
  for (const Second& second : lately_) messages += second.messages;
  const auto span = std::max<Duration>(now - lately_.front().begin, 1s);
  return messages * std::chrono::duration<double>(1min) / std::chrono::duration<double>(span);
}

std::optional<Sentence> SlowDown::Decided(const smtp::Outcome& outcome) {
  if (!IsAskedBy(outcome)) return {};
  const auto now = clock_.Monotonic();
  quiet_since_ = now;
  if (limit_ && (now - slowed_ < kOnce || *limit_ <= kSlowest)) return {};
  const double rate = RateOfLate();
  if (!limit_) unlimited_ = std::max(rate, kSlowest);
  limit_ = std::max(kSlowest, kSlower * (limit_ && rate > 0 ? std::min(rate, *limit_) : rate));
  slowed_ = now;
  next_ = now + std::chrono::duration_cast<Duration>(std::chrono::duration<double>(60 / *limit_));
  return Say("The server asks for fewer messages: {}. The run goes slower from now on, up to {} messages a minute.",
             smtp::ReplyText(outcome.reply), RateText(*limit_));
}

std::optional<Sentence> SlowDown::CameBack(const smtp::Outcome& why) {
  std::string text = platform::AsciiLower(why.reply.text);
  for (const std::string_view goodbye : {"closing this connection", "closing this session"}) {
    if (const auto at = text.find(goodbye); at != std::string::npos) text.erase(at, goodbye.size());
  }
  const auto says = [&](std::string_view words) { return text.find(words) != std::string::npos; };
  return std::ranges::any_of(kOfOneConnection, says) ? std::nullopt : Decided(why);
}

std::optional<Sentence> SlowDown::GoFaster() {
  if (!limit_) return {};
  const auto now = clock_.Monotonic();
  const double before = *limit_;
  while (now - quiet_since_ >= kQuiet) {
    quiet_since_ += kQuiet;
    *limit_ *= kFaster;
    if (*limit_ >= unlimited_) break;
  }
  if (*limit_ == before) return {};
  if (*limit_ >= unlimited_) {
    limit_.reset();
    return Sentence("The server has not complained for a while: the run goes as fast as it did at first.");
  }
  return Say("No complaint for a minute: the run goes a little faster, up to {} messages a minute.", RateText(*limit_));
}

std::optional<platform::Instant> SlowDown::Due() const { return limit_ ? std::optional(next_) : std::nullopt; }

void SlowDown::Taken() {
  if (!limit_) return;
  const auto step = std::chrono::duration_cast<Duration>(std::chrono::duration<double>(60 / *limit_));
  next_ = std::max(next_ + step, clock_.Monotonic());  // one that came a little late delays no other
}

Sentence SlowDown::Why() const {
  return Say("The server asked for fewer messages: up to {} go out a minute.", RateText(limit_.value_or(kSlowest)));
}

}  // namespace quillcast::run
