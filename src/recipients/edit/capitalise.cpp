#include "recipients/edit/capitalise.h"

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <vector>

#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::recipients {
namespace {

enum class Where : std::uint8_t { kAnywhere, kBehindTheFirst };

struct Particle {
  std::string_view word;
  Where in_last_name;  // French articles begin a name in capitals: "Le Blanc", but "de la Tour"
  bool in_first_name;  // a single letter is an initial there
};

constexpr Particle kParticles[] = {
    {"van", Where::kAnywhere, true},       {"von", Where::kAnywhere, true},       {"vom", Where::kAnywhere, true},
    {"der", Where::kAnywhere, true},       {"den", Where::kAnywhere, true},       {"ter", Where::kAnywhere, true},
    {"ten", Where::kAnywhere, true},       {"te", Where::kAnywhere, true},        {"op", Where::kAnywhere, false},
    {"zu", Where::kAnywhere, true},        {"zum", Where::kAnywhere, true},       {"zur", Where::kAnywhere, true},
    {"de", Where::kAnywhere, true},        {"del", Where::kAnywhere, true},       {"dei", Where::kAnywhere, true},
    {"di", Where::kAnywhere, true},        {"da", Where::kAnywhere, true},        {"dal", Where::kAnywhere, true},
    {"das", Where::kAnywhere, true},       {"do", Where::kAnywhere, true},        {"dos", Where::kAnywhere, true},
    {"della", Where::kAnywhere, true},     {"af", Where::kAnywhere, true},        {"av", Where::kAnywhere, true},
    {"bin", Where::kAnywhere, true},       {"ibn", Where::kAnywhere, true},       {"du", Where::kBehindTheFirst, true},
    {"des", Where::kBehindTheFirst, true}, {"la", Where::kBehindTheFirst, true},  {"le", Where::kBehindTheFirst, true},
    {"las", Where::kBehindTheFirst, true}, {"los", Where::kBehindTheFirst, true}, {"les", Where::kBehindTheFirst, true},
    {"und", Where::kBehindTheFirst, true}, {"y", Where::kBehindTheFirst, false},  {"e", Where::kBehindTheFirst, false}};

// What stands before an apostrophe and still leaves a capital behind it, beside single letters (O'Neill, D'Angelo).
constexpr std::array<std::string_view, 7> kBeforeApostrophe = {"dell", "dall", "nell", "sant", "all", "quell", "degl"};

constexpr std::array<std::string_view, 8> kRomanNumerals = {"II", "III", "IV", "VI", "VII", "VIII", "IX", "XI"};

enum class Case : std::uint8_t { kNone, kSmall, kCapitals, kTitle, kMixed };

// A stretch of letters with what ends it. A part is a piece of a word: "Anne" and "Marie" of "Anne-Marie".
struct Part {
  std::string_view text;
  std::string_view end;  // "", or one of: blank, "-", ".", apostrophe
  bool is_last = false;  // of the name
};

bool IsApostrophe(std::string_view end) { return end == "'" || end == "\xE2\x80\x99"; }
bool EndsWord(std::string_view end) { return end.empty() || end == " " || end == "\t" || end == "-"; }

std::size_t LengthOfEnd(std::string_view text) {
  constexpr std::string_view kEnds = " \t-.'";
  if (kEnds.find(text[0]) != std::string_view::npos) return 1;
  return text.starts_with("\xE2\x80\x99") ? 3 : 0;
}

std::vector<Part> PartsOf(std::string_view name) {
  std::vector<Part> parts;
  std::size_t begin = 0;
  for (std::size_t at = 0; at < name.size();) {
    const std::size_t length = LengthOfEnd(name.substr(at));
    if (length > 0) {
      parts.push_back({name.substr(begin, at - begin), name.substr(at, length)});
      begin = at + length;
    }
    at += std::max<std::size_t>(length, 1);
  }
  parts.push_back({name.substr(begin), {}});
  const auto last = std::find_if(parts.rbegin(), parts.rend(), [](const Part& part) { return !part.text.empty(); });
  if (last != parts.rend()) last->is_last = true;
  return parts;
}

Case CaseOf(std::string_view text) {
  int capitals = 0;
  int small = 0;
  bool first_is_capital = false;
  for (bool is_first = true; !text.empty(); is_first = false) {
    const auto [code, length] = platform::DecodeUtf8(text);
    const auto letter = static_cast<UChar32>(code);
    const bool is_capital = u_isUUppercase(letter) != 0 || u_istitle(letter) != 0;
    capitals += is_capital ? 1 : 0;
    small += u_isULowercase(letter) != 0 ? 1 : 0;
    if (is_first) first_is_capital = is_capital;
    text.remove_prefix(length);
  }
  if (capitals == 0) return small == 0 ? Case::kNone : Case::kSmall;
  if (small == 0) return Case::kCapitals;
  return capitals == 1 && first_is_capital ? Case::kTitle : Case::kMixed;
}

std::string Small(std::string_view text) {
  if (platform::IsAscii(text)) return platform::AsciiLower(text);
  std::string out;
  icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())})
      .toLower(icu::Locale::getRoot())
      .toUTF8String(out);
  return out;
}

// The first letter as a title has it, the others small: the whole text is made small first, for a letter's small form
// may depend on where it stands.
std::string Title(std::string_view text) {
  std::string small = Small(text);
  if (small.empty()) return small;
  const auto [code, length] = platform::DecodeUtf8(small);
  std::string out;
  platform::AppendUtf8(out, static_cast<char32_t>(u_totitle(static_cast<UChar32>(code))));
  const std::string rest = small.substr(length);
  if (out == "M" && rest.size() > 2 && rest[0] == 'c') return out + "c" + Title(rest.substr(1));
  return out + rest;
}

template <typename Words>
bool Holds(const Words& words, std::string_view word) {
  return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

// Walks along the parts of one name and writes each.
class NameWriter {
 public:
  explicit NameWriter(NamePart name_part) : name_part_(name_part) {}

  std::string Write(const Part& part) {
    std::string out = Written(part);
    before_ = Small(part.text);
    before_end_ = part.end;
    if (!part.text.empty() && EndsWord(part.end)) is_first_word_ = false;
    return out.append(part.end);
  }

 private:
  std::string Written(const Part& part) const {
    const Case is = CaseOf(part.text);
    std::string small = Small(part.text);
    if (IsApostrophe(before_end_) && !TakesCapital()) return is == Case::kMixed ? std::string(part.text) : small;
    if (is == Case::kNone || is == Case::kMixed) return std::string(part.text);
    if (is != Case::kTitle && StaysSmall(part, small)) return small;
    if (is == Case::kCapitals && StaysCapital(part)) return std::string(part.text);
    return Title(part.text);
  }

  // Behind an apostrophe: O'Neill and Dell'Acqua, but Sa'id and "'t Hooft".
  bool TakesCapital() const {
    return platform::IsAscii(before_) && (before_.size() == 1 || Holds(kBeforeApostrophe, before_));
  }

  bool StaysSmall(const Part& part, std::string_view small) const {
    // "d'Estaing" behind another word; at the beginning it is as often "D'Angelo".
    if (IsApostrophe(part.end)) return small == "d" && !is_first_word_ && !part.is_last;
    if (part.is_last || !EndsWord(part.end)) return false;
    for (const Particle& particle : kParticles) {
      if (particle.word != small) continue;
      if (name_part_ == NamePart::kFirst) return particle.in_first_name && !is_first_word_;
      return particle.in_last_name == Where::kAnywhere || !is_first_word_;
    }
    return false;
  }

  // Numbers of kings behind a name, and first names that are initials (JR, TJ).
  bool StaysCapital(const Part& part) const {
    if (part.is_last && !is_first_word_ && Holds(kRomanNumerals, part.text)) return true;
    return name_part_ == NamePart::kFirst && part.text.size() == 2 &&
           part.text.find_first_of("AEIOUY") == std::string_view::npos && platform::IsAscii(part.text);
  }

  NamePart name_part_;
  bool is_first_word_ = true;
  std::string before_;           // the part before, small
  std::string_view before_end_;  // what ended it
};

}  // namespace

std::string Capitalise(std::string_view name, NamePart part) {
  if (name.empty() || !platform::IsUtf8(name)) return std::string(name);
  NameWriter writer(part);
  std::string out;
  for (const Part& piece : PartsOf(name)) out += writer.Write(piece);
  return out;
}

}  // namespace quillcast::recipients
