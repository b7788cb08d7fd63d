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
constexpr std::string_view kOtherWord = "\xE2\x80\xA6";  // "…"
constexpr std::string_view kOtherBehind = " \xE2\x80\xA6";

std::string DomainOfRow(const recipients::Recipient& recipient) {
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

// "queued …", "… no such mailbox": what texts share word by word, or, where they have not as many, at their ends. An
// address, or the number that a server keeps a message under, is one recipient's alone.
std::string InCommon(std::string_view one, std::string_view other) {
  const auto words = platform::Split(one, ' ');
  const auto others = platform::Split(other, ' ');
  const std::size_t shorter = std::min(words.size(), others.size());
  const auto is_same_from = [&](auto begin, auto other_begin) {
    return static_cast<std::size_t>(
        std::mismatch(begin, begin + static_cast<std::ptrdiff_t>(shorter), other_begin).first - begin);
  };
  const std::size_t first = words.size() == others.size() ? shorter : is_same_from(words.begin(), others.begin());
  const std::size_t last = std::min(is_same_from(words.rbegin(), others.rbegin()), shorter - first);
  std::string text;
  const auto add = [&](std::string_view word) {
    if (word == kOtherWord && (text == kOtherWord || text.ends_with(kOtherBehind))) return;
    text += (text.empty() ? "" : " ") + std::string(word);
  };
  for (std::size_t n = 0; n < first; ++n) add(words[n] == others[n] ? words[n] : kOtherWord);
  if (words.size() != others.size()) add(kOtherWord);
  for (std::size_t n = words.size() - last; n < words.size(); ++n) add(words[n]);
  return text;
}

// Of sentences that share less than half of their words, nothing is told.
std::string InCommonOfReasons(std::string_view one, std::string_view other) {
  if (one.empty()) return "";
  const std::string common = InCommon(one, other);
  const auto words = [](std::string_view text) {
    const auto all = platform::Split(text, ' ');
    return std::ssize(all) - std::ranges::count(all, kOtherWord);
  };
  return 2 * words(common) >= std::min(words(one), words(other)) ? common : "";
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
  Count(domains_, DomainOfRow(row.recipient), fate);
  Counted& reply = Count(replies_, ReplyOf(row), fate);
  const bool is_reason = row.reply.code == 0;
  const std::string& words = is_reason ? row.reason : row.reply.text;
  if (reply.tally.all() == 1) {
    reply.words = words;
  } else if (reply.words != words) {
    reply.words = is_reason ? InCommonOfReasons(reply.words, words) : InCommon(reply.words, words);
  }
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
      all.push_back({name, counted.tally, counted.words});
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
