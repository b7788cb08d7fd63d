#include "mail_file/header_lines.h"

#include <algorithm>

#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

// Printable ASCII, and blanks before the colon as the old grammar had them (RFC 5322 4.5). 0: no field begins there.
std::size_t FieldNameLength(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos || colon == 0) return 0;
  const std::string_view name = line.substr(0, line.find_last_not_of(" \t", colon - 1) + 1).substr(0, colon);
  const bool is_name = std::ranges::all_of(name, [](char c) { return c > ' ' && c < 0x7F; });
  return is_name ? name.size() : 0;
}

// As mailboxes have it before each message.
bool IsMailboxLine(std::string_view line) { return line.starts_with("From ") || line.starts_with(">From "); }

bool IsCut(const MessageLine& line) { return line.end - line.begin > kLongestLineText; }

}  // namespace

void HeaderLines::Begin(bool is_of_file) {
  is_of_file_ = is_of_file;
  is_empty_ = true;
}

void HeaderLines::End(const TakeField& take) {
  if (!name_.empty()) take(name_, platform::Trim(value_));
  name_.clear();
  value_.clear();
}

void HeaderLines::TellCut() {
  if (!is_told_)
    faults_.Add(LoadCode::kException,
                Say("The header field \"{}\" is too long; its end was left out.", platform::Printable(name_, 100)));
  is_told_ = true;
}

// What is folded begins with a blank or tab, which stands for one blank.
void HeaderLines::GoOn(const MessageLine& line) {
  const std::size_t room = kLongestField - std::min(kLongestField, value_.size());
  if (line.text.size() > room || IsCut(line)) TellCut();
  value_ += ' ';
  value_ += line.text.substr(1, room);
}

HeaderLine HeaderLines::Take(const MessageLine& line, const TakeField& take) {
  if (line.text.empty()) return HeaderLine::kEnd;
  const bool is_folded = line.text.front() == ' ' || line.text.front() == '\t';
  if (is_folded && !name_.empty()) {
    GoOn(line);
    return HeaderLine::kWithin;
  }
  const std::size_t name = FieldNameLength(line.text);
  if (name == 0 && is_of_file_ && is_empty_ && IsMailboxLine(line.text)) return HeaderLine::kWithin;
  End(take);
  if (name == 0) return HeaderLine::kBody;
  is_empty_ = false;
  if (++count_ > kMostFields) return HeaderLine::kTooMany;
  name_ = line.text.substr(0, name);
  value_ = line.text.substr(line.text.find(':') + 1);
  is_told_ = false;
  if (IsCut(line)) TellCut();
  return HeaderLine::kWithin;
}

}  // namespace quillcast::mail_file
