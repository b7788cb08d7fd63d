#include "run/mailing_tally.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "platform/text.h"
#include "smtp/envelope_address.h"
#include "smtp/result_code.h"

namespace quillcast::run {
namespace {

constexpr const char* kOthers = "others";

std::string DomainOf(const recipients::Recipient& recipient) {
  const auto address = smtp::EnvelopeAddress(recipient.email());
  if (!address) return "no address";
  return platform::AsciiLower(address->text().substr(address->text().rfind('@') + 1));
}

std::string ReplyOf(const JournalRow& row) {
  if (row.state == ResultState::kNotTried) return "not tried";
  if (row.state == ResultState::kInFlight) return "no answer yet";
  if (row.state == ResultState::kUnknown && row.reply.code == 0) return "no answer";
  if (row.reply.code == 0) return std::string(platform::Trim(smtp::ResultText(row.code)));
  return std::to_string(row.reply.code) + (row.reply.enhanced.empty() ? "" : " " + row.reply.enhanced);
}

// The largest of a few lengths that people count in by which the whole is at most so many columns.
std::chrono::seconds StepFor(std::chrono::seconds whole, std::size_t most) {
  using namespace std::chrono_literals;
  for (const std::chrono::seconds step : {1s, 2s, 5s, 10s, 30s, 60s, 120s, 300s, 600s, 1800s, 3600s, 7200s, 21600s}) {
    if (whole / step < static_cast<std::int64_t>(most)) return step;
  }
  const std::chrono::seconds day = 24h;
  return day * (whole / day / static_cast<std::int64_t>(most) + 1);
}

}  // namespace

Fate FateOf(ResultState state) {
  switch (state) {
    case ResultState::kSent:
      return Fate::kSent;
    case ResultState::kUnknown:
      return Fate::kUnknown;
    case ResultState::kNotTried:
      return Fate::kNotTried;
    case ResultState::kInFlight:
      return Fate::kOnItsWay;
    case ResultState::kRefused:
    case ResultState::kDeferred:
    case ResultState::kFailed:
      break;
  }
  return Fate::kNotSent;
}

std::int64_t Tally::all() const { return std::accumulate(counts.begin(), counts.end(), std::int64_t{0}); }

void Tally::Add(const Tally& other) {
  for (std::size_t n = 0; n < kFates; ++n) counts[n] += other.counts[n];
}

MailingTally::MailingTally(std::chrono::sys_seconds first, std::chrono::sys_seconds last)
    : first_(first), step_(StepFor(std::max(last, first) - first, kMostColumns)) {
  columns_.resize(static_cast<std::size_t>((std::max(last, first) - first) / step_) + 1);
}

MailingTally::Counted& MailingTally::Count(Names& names, std::string name, Fate fate) {
  if (names.size() >= kMostNames && !names.contains(name)) name = kOthers;
  Counted& counted = names[std::move(name)];
  counted.tally.Add(fate);
  return counted;
}

void MailingTally::Add(const JournalRow& row) {
  const Fate fate = FateOf(row.state);
  Count(domains_, DomainOf(row.recipient), fate);
  Counted& reply = Count(replies_, ReplyOf(row), fate);
  if (reply.example.empty()) reply.example = row.reply.code == 0 ? row.reason : row.reply.text;
  if (!row.when || fate == Fate::kNotTried) return;
  // A clock that was set meanwhile puts nobody outside.
  const auto column = std::clamp<std::int64_t>((*row.when - first_) / step_, 0, std::ssize(columns_) - 1);
  columns_[static_cast<std::size_t>(column)].Add(fate);
}

std::vector<NamedTally> MailingTally::Largest(const Names& names, std::size_t most) {
  std::vector<NamedTally> all;
  NamedTally rest{kOthers, {}, {}};
  for (const auto& [name, counted] : names) {
    if (name == kOthers) {
      rest.tally.Add(counted.tally);
    } else {
      all.push_back({name, counted.tally, counted.example});
    }
  }
  std::sort(all.begin(), all.end(), [](const NamedTally& a, const NamedTally& b) {
    return a.tally.all() != b.tally.all() ? a.tally.all() > b.tally.all() : a.name < b.name;
  });
  for (std::size_t n = most; n < all.size(); ++n) rest.tally.Add(all[n].tally);
  all.resize(std::min(all.size(), most));
  if (rest.tally.all() > 0) all.push_back(std::move(rest));
  return all;
}

std::vector<NamedTally> MailingTally::Domains(std::size_t most) const { return Largest(domains_, most); }
std::vector<NamedTally> MailingTally::Replies(std::size_t most) const { return Largest(replies_, most); }

}  // namespace quillcast::run
