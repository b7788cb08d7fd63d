#include "account/account_pace.h"

#include <array>

namespace quillcast::account {
namespace {

using enum AccountKey;
using namespace std::chrono_literals;

struct PaceKey {
  AccountKey key;
  std::string run::PaceTexts::*text;
  std::optional<Error> (*fault)(std::string_view text);
};

template <typename Rule>
std::optional<Error> FaultOf(const Result<Rule>& read) {
  return read ? std::nullopt : std::optional(read.error());
}

constexpr auto kPaceKeys = std::to_array<PaceKey>({
    {kRate, &run::PaceTexts::rate, [](std::string_view text) { return FaultOf(run::ReadRate(text)); }},
    {kQuotaHour, &run::PaceTexts::quota_hour, [](std::string_view text) { return FaultOf(run::ReadCount(text)); }},
    {kQuotaDay, &run::PaceTexts::quota_day, [](std::string_view text) { return FaultOf(run::ReadCount(text)); }},
    {kDomainRate, &run::PaceTexts::domain_rate, [](std::string_view text) { return FaultOf(run::ReadRate(text)); }},
    {kHours, &run::PaceTexts::hours, [](std::string_view text) { return FaultOf(run::ReadHours(text)); }},
    {kPauseAfter, &run::PaceTexts::pause_after, [](std::string_view text) { return FaultOf(run::ReadPause(text)); }},
    {kPerConnection, &run::PaceTexts::per_connection,
     [](std::string_view text) { return FaultOf(run::ReadCount(text)); }},
    {kConnections, &run::PaceTexts::connections,
     [](std::string_view text) { return FaultOf(run::ReadConnections(text)); }},
    {kRetries, &run::PaceTexts::retries, [](std::string_view text) { return FaultOf(run::ReadRetries(text)); }},
    {kRetryAfter, &run::PaceTexts::retry_after, [](std::string_view text) { return FaultOf(run::ReadDuration(text)); }},
    {kSlowDown, &run::PaceTexts::slow_down, [](std::string_view text) { return FaultOf(run::ReadSwitch(text)); }},
});

}  // namespace

run::PaceTexts PaceTextsOf(const AccountSettings& account) {
  run::PaceTexts texts;
  for (const PaceKey& row : kPaceKeys) texts.*row.text = account[row.key];
  return texts;
}

std::optional<PaceFault> FaultInPace(const AccountSettings& account) {
  for (const PaceKey& row : kPaceKeys) {
    if (auto fault = row.fault(account[row.key])) return PaceFault{row.key, *std::move(fault)};
  }
  return {};
}

}  // namespace quillcast::account
