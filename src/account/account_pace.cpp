#include "account/account_pace.h"

#include <algorithm>
#include <array>

#include "platform/text.h"

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

// What an empty text means is meant by these, too.
bool AsksForNothing(std::string_view text) {
  const auto written = platform::Trim(text);
  if (written.empty()) return true;
  constexpr std::array<std::string_view, 4> kNothing = {"none", "0", "no", "false"};
  return std::ranges::any_of(kNothing, [&](auto word) { return platform::EqualsIgnoringAsciiCase(written, word); });
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
    {kNetworkWait, &run::PaceTexts::network_wait,
     [](std::string_view text) { return FaultOf(run::ReadDuration(text)); }},
});

}  // namespace

run::PaceTexts PaceTextsOf(const AccountSettings& account) {
  run::PaceTexts texts;
  for (const PaceKey& row : kPaceKeys) texts.*row.text = account[row.key];
  return texts;
}

std::vector<NamedPace> PaceNames() {
  std::vector<NamedPace> names;
  names.reserve(kPaceKeys.size());
  for (const PaceKey& row : kPaceKeys) names.push_back({RowOf(row.key).name, row.text, row.key});
  return names;
}

std::string PaceInWords(const run::PaceTexts& texts) {
  std::string words;
  for (const auto& [name, text, key] : PaceNames()) {
    if (AsksForNothing(texts.*text)) continue;
    words += (words.empty() ? "" : ", ") + std::string(name) + "=" + std::string(platform::Trim(texts.*text));
  }
  return words;
}

run::PaceTexts InsteadOf(const run::PaceTexts& otherwise, const run::PaceTexts& wanted) {
  run::PaceTexts told;
  for (const PaceKey& row : kPaceKeys) {
    const auto was = platform::Trim(otherwise.*row.text);
    const auto is = platform::Trim(wanted.*row.text);
    if (is == was || (AsksForNothing(is) && AsksForNothing(was))) continue;
    told.*row.text = is.empty() ? "none" : is;
  }
  return told;
}

std::optional<PaceFault> FaultInPace(const run::PaceTexts& texts) {
  for (const PaceKey& row : kPaceKeys) {
    if (auto fault = row.fault(texts.*row.text)) return PaceFault{row.key, *std::move(fault)};
  }
  return {};
}

std::optional<PaceFault> FaultInPace(const AccountSettings& account, const run::PaceTexts& instead) {
  run::PaceTexts texts = PaceTextsOf(account);
  for (const PaceKey& row : kPaceKeys) {
    if (!platform::Trim(instead.*row.text).empty()) (texts.*row.text).clear();
  }
  return FaultInPace(texts);
}

Error CannotBeUsed(const PaceFault& fault) {
  return {Failure::kNotConfigured, Say("The account's {} cannot be used: {}", RowOf(fault.key).name, fault.error.what),
          fault.error.remedy};
}

}  // namespace quillcast::account
