#include "mail_file/mailbox_line.h"

#include <algorithm>
#include <array>
#include <vector>

#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

using Words = std::vector<std::string_view>;

constexpr std::array<std::string_view, 7> kWeekdays = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr std::size_t kLongestFromLine = 1000;  // bytes
constexpr std::size_t kDateWords = 6;           // behind the weekday, with the time zone
constexpr std::size_t kZoneWords = 2;           // "MET DST"

// Whether a word is of that shape: "0" stands for a digit, and anything else for itself.
bool HasShape(std::string_view word, std::string_view shape) {
  return std::ranges::equal(word, shape,
                            [](char c, char wanted) { return wanted == '0' ? c >= '0' && c <= '9' : c == wanted; });
}

bool HasShapeOf(std::string_view word, std::initializer_list<std::string_view> shapes) {
  return std::ranges::any_of(shapes, [&](std::string_view shape) { return HasShape(word, shape); });
}

bool IsTime(std::string_view word) { return HasShapeOf(word, {"00:00:00", "00:00", "0:00:00", "0:00"}); }

Words WordsOf(std::string_view line) {
  Words words;
  for (const std::string_view word : platform::Split(line, ' ')) {
    if (!word.empty()) words.push_back(word);
  }
  return words;
}

// How many words from that one on are a date, in any of the orders in which programs write it; 0: none.
std::size_t DateLength(const Words& words, std::size_t at) {
  if (HasShape(words[at], "0000-00-00")) return at + 1 < words.size() && IsTime(words[at + 1]) ? 2 : 0;
  const std::string_view weekday = words[at].substr(0, words[at].find(','));
  if (std::ranges::find(kWeekdays, weekday) == kWeekdays.end()) return 0;
  std::array<bool, 4> has = {};  // the month, day, time and year
  for (std::size_t length = 1; length <= kDateWords && at + length < words.size(); ++length) {
    const std::string_view word = words[at + length];
    has[0] = has[0] || std::ranges::find(kMonths, word) != kMonths.end();
    has[1] = has[1] || HasShapeOf(word, {"0", "00"});
    has[2] = has[2] || IsTime(word);
    has[3] = has[3] || HasShape(word, "0000");
    if (std::ranges::all_of(has, [](bool it) { return it; })) return length + 1;
  }
  return 0;
}

// As all programs write them, and people hardly do.
bool HasSeconds(const Words& words, std::size_t at, std::size_t length) {
  return std::any_of(words.begin() + static_cast<std::ptrdiff_t>(at),
                     words.begin() + static_cast<std::ptrdiff_t>(at + length), [](std::string_view word) {
                       return HasShapeOf(word, {"00:00:00", "0:00:00"});
                     });
}

// Whether the first words are no sentence's: one that is spelt out ("ada at example.org"), one with an "@" among blanks
// in quotes; and before a time that no invitation has, one word or none.
bool IsSender(const Words& words, std::size_t count, bool has_seconds) {
  if ((count <= 1 && has_seconds) || (count == 3 && words[1] == "at")) return true;
  return std::any_of(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(count),
                     [](std::string_view word) { return word.find('@') != std::string_view::npos; });
}

}  // namespace

MailboxLine MailboxLineOf(std::string_view line) {
  constexpr std::string_view kFrom = "From ";
  if (!line.starts_with(kFrom) || line.size() > kLongestFromLine) return MailboxLine::kNone;
  const Words words = WordsOf(line.substr(kFrom.size()));
  if (words.empty() || (words.size() == 1 && words[0] == "-")) return MailboxLine::kMaybe;
  for (std::size_t at = 0; at < words.size(); ++at) {
    const std::size_t length = DateLength(words, at);
    if (length == 0) continue;
    const std::size_t end = at + length;
    const bool is_end = end + kZoneWords >= words.size() || words[end] == "remote" || words[end + 1] == "remote";
    if (!is_end) return MailboxLine::kNone;
    return IsSender(words, at, HasSeconds(words, at, length)) ? MailboxLine::kSure : MailboxLine::kMaybe;
  }
  return MailboxLine::kNone;
}

}  // namespace quillcast::mail_file
