#include "mail_file/relay_stamp.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "mail_file/blanks.h"
#include "mail_file/gmime_border.h"
#include "mail_file/part_fields.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

struct Clause {
  std::string_view word;
  std::string RelayStamp::*value;
};
constexpr std::array kClauses = {
    Clause{"from", &RelayStamp::from},     Clause{"by", &RelayStamp::by}, Clause{"via", &RelayStamp::via},
    Clause{"with", &RelayStamp::protocol}, Clause{"id", &RelayStamp::id}, Clause{"for", &RelayStamp::for_whom},
};

// Where the comment that the text begins with ends, or the text.
std::size_t CommentEnd(std::string_view text) {
  int depth = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (text[i] == '(') {
      ++depth;
    } else if (text[i] == ')' && --depth == 0) {
      return i + 1;
    }
  }
  return text.size();
}

// The next word or comment, taken off the front; empty at the end.
std::string_view TakeToken(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  const std::size_t end =
      text.starts_with('(') ? CommentEnd(text) : std::min(text.find_first_of(" \t\r\n("), text.size());
  const std::string_view token = text.substr(0, end);
  text.remove_prefix(end);
  return token;
}

// The place of the semicolon before the date-time: the last one that is in no comment.
std::size_t DatePlace(std::string_view field) {
  std::size_t place = field.size();
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] == '(') {
      i += CommentEnd(field.substr(i)) - 1;
    } else if (field[i] == ';') {
      place = i;
    }
  }
  return place;
}

std::string WithoutAngles(std::string_view text) {
  if (text.starts_with('<')) text.remove_prefix(1);
  if (text.ends_with('>')) text.remove_suffix(1);
  return std::string(text);
}

}  // namespace

RelayStamp ReadRelayStamp(std::string_view field) {
  RelayStamp stamp;
  const std::size_t date = DatePlace(field);
  if (date < field.size()) stamp.time = ReadTime(platform::Trim(field.substr(date + 1)));
  std::string_view text = field.substr(0, date);
  std::string RelayStamp::*value = nullptr;
  for (auto token = TakeToken(text); !token.empty(); token = TakeToken(text)) {
    const auto* const clause = std::ranges::find_if(
        kClauses, [&](const Clause& row) { return platform::EqualsIgnoringAsciiCase(row.word, token); });
    const bool begins = clause != kClauses.end() && (value == nullptr || !(stamp.*value).empty());
    if (begins) {
      value = (stamp.*clause->value).empty() ? clause->value : nullptr;
    } else if (value == nullptr) {
      continue;
    } else if ((stamp.*value).empty()) {
      stamp.*value = BoundedPartText(token);
    } else if (value == &RelayStamp::from && token.starts_with('(') && stamp.from.find(" (") == std::string::npos) {
      stamp.from += ' ';
      stamp.from += BoundedPartText(token);
    }
  }
  stamp.for_whom = WithoutAngles(stamp.for_whom);
  return stamp;
}

std::string StampedTime::Bias() const { return fmt::format("{:+}", bias_minutes); }

std::vector<std::optional<std::int64_t>> HopDelays(const std::vector<RelayStamp>& stamps) {
  std::vector<std::optional<std::int64_t>> delays(stamps.size());
  for (std::size_t i = 0; i + 1 < stamps.size(); ++i) {
    if (stamps[i].time && stamps[i + 1].time) delays[i] = stamps[i].time->unix_time - stamps[i + 1].time->unix_time;
  }
  return delays;
}

}  // namespace quillcast::mail_file
