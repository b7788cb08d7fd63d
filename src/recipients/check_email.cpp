#include "recipients/check_email.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace quillcast::recipients {
namespace {

constexpr std::size_t kShortestTopLevel = 2;
constexpr std::size_t kLongestTopLevel = 5;

constexpr std::array<bool, 256> kAddressCharacters = [] {
  std::array<bool, 256> set{};
  for (int c = 'a'; c <= 'z'; ++c) set[c] = set[c - 32] = true;
  for (int c = '0'; c <= '9'; ++c) set[c] = true;
  set['_'] = set['-'] = set['.'] = true;
  return set;
}();

// What stands in local parts beside the characters that the rule takes. Those that also stand between addresses, such
// as "=", "/" and "|", are left out.
constexpr std::string_view kJoinsWords = "'+!#$%&*^~@";

enum class InWord : std::uint8_t { kOutside, kInside, kAsBefore };

constexpr std::array<InWord, 256> kInWord = [] {
  std::array<InWord, 256> table{};
  for (int c = 0; c < 256; ++c) {
    if (kAddressCharacters[c]) table[c] = InWord::kInside;
    if (c >= 0x80 && c <= 0xBF) table[c] = InWord::kAsBefore;  // within a character
    // What begins the characters from U+00C0 to U+1FFF, the letters of scripts that put blanks between words. Signs and
    // punctuation stand before and behind them.
    if (c >= 0xC3 && c <= 0xE1) table[c] = InWord::kInside;
  }
  for (const char c : kJoinsWords) table[static_cast<std::uint8_t>(c)] = InWord::kAsBefore;
  return table;
}();

InWord InWordAt(char c) { return kInWord[static_cast<std::uint8_t>(c)]; }

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsLetterOrDigit(char c) { return IsLetter(c) || (c >= '0' && c <= '9'); }

bool EndsInsideWord(std::string_view text) {
  const auto last = std::find_if(text.rbegin(), text.rend(), [](char c) { return InWordAt(c) != InWord::kAsBefore; });
  return last != text.rend() && InWordAt(*last) == InWord::kInside;
}

}  // namespace

bool IsAddressCharacter(char c) { return kAddressCharacters[static_cast<std::uint8_t>(c)]; }

// The middle part is greedy, so the last dot that has two letters behind it and something before it ends it.
std::size_t DomainLength(std::string_view run) {
  std::size_t letters = 0;  // how many follow run[at]
  for (std::size_t at = run.size(); at-- > 1;) {
    if (run[at] == '.' && letters >= kShortestTopLevel) return at + 1 + std::min(letters, kLongestTopLevel);
    letters = IsLetter(run[at]) ? letters + 1 : 0;
  }
  return 0;
}

bool GoesOn(char c, bool so_far) {
  return InWordAt(c) == InWord::kInside || (so_far && InWordAt(c) == InWord::kAsBefore);
}

bool IsCut(bool inside, std::string_view rest, char next) {
  return inside || GoesOn(next, false) || std::any_of(rest.begin(), rest.end(), IsLetterOrDigit);
}

// A local part ends at its "@", for "@" is no character of it; so the leftmost match is the first "@" with a run before
// it and a domain behind it, and it begins where that run begins. Each run is looked at twice at most.
std::optional<AddressMatch> FindAddress(std::string_view text, std::size_t from) {
  std::size_t local_floor = from;
  for (std::size_t at = text.find('@', from); at != std::string_view::npos; at = text.find('@', at + 1)) {
    std::size_t begin = at;
    while (begin > local_floor && IsAddressCharacter(text[begin - 1])) --begin;
    local_floor = at + 1;
    if (begin == at) continue;
    std::size_t end = at + 1;
    while (end < text.size() && IsAddressCharacter(text[end])) ++end;
    const std::string_view run = text.substr(at + 1, end - at - 1);
    const std::size_t domain = DomainLength(run);
    if (domain == 0) continue;
    const char next = end < text.size() ? text[end] : '\0';
    return AddressMatch{begin, at + 1 + domain - begin,
                        IsCut(EndsInsideWord(text.substr(0, begin)), run.substr(domain), next)};
  }
  return {};
}

bool CheckEmail(std::string_view text) { return FindAddress(text, 0).has_value(); }

bool CheckEmail(std::string_view text, platform::Prompts& prompts) {
  if (CheckEmail(text)) return true;
  prompts.Warn("Invalid email address.");
  return false;
}

}  // namespace quillcast::recipients
