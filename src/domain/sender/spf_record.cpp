#include "domain/sender/spf_record.h"

#include <algorithm>
#include <array>
#include <optional>

#include "domain/sender/spf_macros.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

// What may follow a mechanism's name.
enum class Argument { kNone, kName, kOptionalNameAndBits, kOptionalName, kNetwork };

struct MechanismRow {
  std::string_view name;
  SpfMechanism mechanism;
  Argument argument;
  bool needs_lookup;
};

constexpr std::array kMechanisms = {
    MechanismRow{"all", SpfMechanism::kAll, Argument::kNone, false},
    MechanismRow{"include", SpfMechanism::kInclude, Argument::kName, true},
    MechanismRow{"a", SpfMechanism::kA, Argument::kOptionalNameAndBits, true},
    MechanismRow{"mx", SpfMechanism::kMx, Argument::kOptionalNameAndBits, true},
    MechanismRow{"ptr", SpfMechanism::kPtr, Argument::kOptionalName, true},
    MechanismRow{"ip4", SpfMechanism::kIp4, Argument::kNetwork, false},
    MechanismRow{"ip6", SpfMechanism::kIp6, Argument::kNetwork, false},
    MechanismRow{"exists", SpfMechanism::kExists, Argument::kName, true},
};

Error BadWord(std::string_view word) {
  return {Failure::kBadData, Say("\"{}\" is not understood.", platform::Printable(word, 60)),
          "Receivers take a record with a mistake for none at all: mend or remove that word."};
}

std::optional<SpfVerdict> VerdictOf(char sign) {
  switch (sign) {
    case '+':
      return SpfVerdict::kPass;
    case '-':
      return SpfVerdict::kFail;
    case '~':
      return SpfVerdict::kSoftFail;
    case '?':
      return SpfVerdict::kNeutral;
    default:
      return std::nullopt;
  }
}

// Digits without a leading zero, up to `highest`.
std::optional<int> BitsOf(std::string_view digits, int highest) {
  if (digits.size() > 1 && digits[0] == '0') return std::nullopt;
  const std::optional<std::int64_t> bits = platform::WholeNumberBetween(digits, 0, highest);
  return bits ? std::optional(static_cast<int>(*bits)) : std::nullopt;
}

// Takes "/24", "//64" or "/24//64" from the end of `argument`. False where it is none of these.
bool TakeBits(std::string_view& argument, SpfTerm& term) {
  const std::size_t macro = argument.rfind('}');  // "%{d/}" holds a slash of its own
  const std::size_t slash = argument.find('/', macro == std::string_view::npos ? 0 : macro);
  if (slash == std::string_view::npos) return true;
  std::string_view bits = argument.substr(slash);
  argument = argument.substr(0, slash);
  const std::size_t two = bits.find("//");
  if (two != std::string_view::npos) {
    const std::optional<int> bits6 = BitsOf(bits.substr(two + 2), 128);
    if (!bits6) return false;
    term.bits6 = *bits6;
    bits = bits.substr(0, two);
  }
  if (bits.empty()) return true;
  const std::optional<int> bits4 = BitsOf(bits.substr(1), 32);
  if (bits4) term.bits4 = *bits4;
  return bits4.has_value();
}

// "192.0.2.0/24" behind "ip4:", "2001:db8::/32" behind "ip6:".
bool TakeNetwork(std::string_view argument, SpfTerm& term) {
  const bool is_ip4 = term.mechanism == SpfMechanism::kIp4;
  const std::size_t slash = argument.find('/');
  if (slash != std::string_view::npos) {
    const std::optional<int> bits = BitsOf(argument.substr(slash + 1), is_ip4 ? 32 : 128);
    if (!bits) return false;
    (is_ip4 ? term.bits4 : term.bits6) = *bits;
  }
  const std::optional<net::IpAddress> network = net::ParseIpAddress(argument.substr(0, slash));
  if (!network || (network->family == net::Family::kIpv4) != is_ip4) return false;
  term.network = *network;
  return true;
}

// The last label is one that a domain at the top could have, behind a dot, or the name ends in a macro (RFC 7208 7.1).
bool EndsAsAName(std::string_view name) {
  for (const std::string_view macro : {"}", "%%", "%_", "%-"}) {
    if (name.ends_with(macro)) return true;
  }
  if (name.ends_with('.')) name.remove_suffix(1);
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return false;
  const std::string_view label = name.substr(dot + 1);
  constexpr auto kMayStand = [](char c) { return platform::AsciiIsAlnum(c) || c == '-'; };
  return !label.empty() && !label.starts_with('-') && !label.ends_with('-') &&
         std::all_of(label.begin(), label.end(), kMayStand) &&
         label.find_first_not_of("0123456789") != std::string_view::npos;
}

bool IsName(std::string_view name) {
  return EndsAsAName(name) &&
         ExpandSpfName(std::string(name), "a.example", {.local_part = "a", .domain = "a.example"}).has_value();
}

bool TakeArgument(const MechanismRow& row, std::string_view argument, SpfTerm& term) {
  const bool has_colon = argument.starts_with(':');
  if (row.argument == Argument::kNone) return argument.empty();
  if (row.argument == Argument::kNetwork) return has_colon && TakeNetwork(argument.substr(1), term);
  if (row.argument == Argument::kOptionalNameAndBits && !TakeBits(argument, term)) return false;
  if (argument.empty()) return row.argument != Argument::kName;
  if (!has_colon || argument.size() == 1) return false;
  term.name = argument.substr(1);
  return IsName(term.name);
}

// "name=value"; nothing for what is a mechanism.
std::optional<std::pair<std::string_view, std::string_view>> ModifierOf(std::string_view word) {
  const std::size_t end = word.find_first_of("=:/");
  if (end == std::string_view::npos || word[end] != '=' || end == 0) return std::nullopt;
  return std::pair(word.substr(0, end), word.substr(end + 1));
}

std::optional<SpfTerm> TermOf(std::string_view word) {
  SpfTerm term;
  term.text = word;
  if (const std::optional<SpfVerdict> verdict = VerdictOf(word[0])) {
    term.verdict = *verdict;
    word.remove_prefix(1);
  }
  const std::string_view name = word.substr(0, word.find_first_of(":/"));
  const auto* row = std::find_if(kMechanisms.begin(), kMechanisms.end(), [&](const MechanismRow& each) {
    return platform::EqualsIgnoringAsciiCase(each.name, name);
  });
  if (row == kMechanisms.end()) return std::nullopt;
  term.mechanism = row->mechanism;
  if (!TakeArgument(*row, word.substr(name.size()), term)) return std::nullopt;
  return term;
}

}  // namespace

bool SpfTerm::NeedsLookup() const {
  return std::any_of(kMechanisms.begin(), kMechanisms.end(),
                     [&](const MechanismRow& row) { return row.mechanism == mechanism && row.needs_lookup; });
}

const SpfTerm* SpfRecord::All() const {
  const auto all = std::find_if(terms.begin(), terms.end(),
                                [](const SpfTerm& term) { return term.mechanism == SpfMechanism::kAll; });
  return all == terms.end() ? nullptr : &*all;
}

bool IsSpf(std::string_view record) {
  constexpr std::string_view kVersion = "v=spf1";
  return platform::StartsWithIgnoringAsciiCase(record, kVersion) &&
         (record.size() == kVersion.size() || record[kVersion.size()] == ' ');
}

Result<SpfRecord> ParseSpf(std::string_view record) {
  SpfRecord found;
  bool has_explanation = false;
  const std::vector<std::string_view> words = platform::Split(record, ' ');
  for (std::size_t i = 1; i < words.size(); ++i) {
    if (words[i].empty()) continue;
    if (const auto modifier = ModifierOf(words[i])) {
      const bool is_redirect = platform::EqualsIgnoringAsciiCase(modifier->first, "redirect");
      const bool is_explanation = platform::EqualsIgnoringAsciiCase(modifier->first, "exp");
      if (is_redirect && (!IsName(modifier->second) || !found.redirect.empty())) return BadWord(words[i]);
      if (is_explanation && has_explanation) return BadWord(words[i]);
      if (is_redirect) found.redirect = modifier->second;
      has_explanation = has_explanation || is_explanation;
      continue;
    }
    std::optional<SpfTerm> term = TermOf(words[i]);
    if (!term) return BadWord(words[i]);
    found.terms.push_back(*std::move(term));
  }
  if (found.All() != nullptr) found.redirect.clear();  // RFC 7208 6.1: it is then passed over
  return found;
}

}  // namespace quillcast::domain
