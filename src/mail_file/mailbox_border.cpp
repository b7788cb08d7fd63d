#include "mail_file/mailbox_border.h"

#include <algorithm>
#include <array>

#include "mail_file/boundary.h"
#include "mail_file/gmime_border.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr int kMostBlankLines = 100;  // before a mailbox
constexpr int kLinesBetweenChecks = 4096;

// Hears lines go by, and what boundaries their Content-Type fields name.
class NamedBoundaries {
 public:
  // Whether the field that this line ends names it.
  bool EndsOneThatNames(std::string_view boundary, std::string_view line) {
    if (!field_.empty() && (line.starts_with(' ') || line.starts_with('\t'))) {
      if (field_.size() < kLongestField) field_.append(line);
      return false;
    }
    const bool may_name = platform::AsciiLower(field_).find("boundary") != std::string::npos;
    const bool names = may_name && ReadContentType(field_).Parameter("boundary") == boundary;
    field_.clear();
    if (platform::EqualsIgnoringAsciiCase(line.substr(0, kField.size()), kField)) {
      field_ = line.substr(kField.size());
      if (field_.empty()) field_ = " ";
    }
    return names;
  }

 private:
  static constexpr std::string_view kField = "content-type:";
  static constexpr std::size_t kLongestField = 4096;
  std::string field_;  // as far as it has gone by
};

std::string_view FieldName(std::string_view line) {
  const std::size_t colon = line.find(':');
  return colon == std::string_view::npos || line.find(' ') < colon ? std::string_view() : line.substr(0, colon);
}

bool IsField(std::string_view line) { return !FieldName(line).empty(); }

// One that programs begin a message with, so that words with a colon in a text are none.
bool IsFieldOfMail(std::string_view line) {
  constexpr std::string_view kNames =
      " return-path received delivered-to envelope-to delivery-date from sender reply-to to cc bcc date subject "
      "message-id "
      "in-reply-to references mime-version status user-agent organization importance priority precedence sensitivity "
      "keywords comments lines thread-topic thread-index errors-to return-receipt-to disposition-notification-to "
      "mail-followup-to accept-language newsgroups path xref dkim-signature domainkey-signature "
      "authentication-results ";
  constexpr auto kBeginnings =
      std::to_array<std::string_view>({"x-", "content-", "list-", "resent-", "arc-", "received-", "auto-"});
  const std::string name = platform::AsciiLower(FieldName(line));
  if (name.empty()) return false;
  return kNames.find(" " + name + " ") != std::string_view::npos ||
         std::ranges::any_of(kBeginnings, [&name](std::string_view one) { return name.starts_with(one); });
}

// One that stands in no text.
bool IsFieldOfMailAlone(std::string_view line) {
  constexpr auto kNames = std::to_array<std::string_view>(
      {"x-mozilla-status", "return-path", "received", "delivered-to", "message-id", "mime-version", "dkim-signature"});
  const std::string name = platform::AsciiLower(FieldName(line));
  return std::ranges::find(kNames, name) != kNames.end();
}

bool GoesOnHeader(std::string_view line) { return IsField(line) || line.starts_with(' ') || line.starts_with('\t'); }

}  // namespace

Result<bool> MailboxBorder::LookAtBeginning() {
  MessageLines lines(file_, {0, file_.size()});
  MessageLine line;
  for (int blank = 0; blank <= kMostBlankLines; ++blank) {
    const auto more = lines.Next(line);
    if (!more) return more.error();
    if (!*more) break;
    if (line.begin == 0 && line.text.starts_with(kUtf8Mark)) line.text.remove_prefix(kUtf8Mark.size());
    if (MailboxLineOf(line.text) != MailboxLine::kNone) {
      begin_ = line.begin;
      return true;
    }
    if (!line.text.empty()) break;
  }
  return false;
}

Result<void> MailboxBorder::HearContentLength(std::string_view length, std::uint64_t content) {
  const auto size = platform::WholeNumberBetween(length, 0, static_cast<std::int64_t>(file_.size()));
  if (!size || content + static_cast<std::uint64_t>(*size) > file_.size()) return {};
  const std::uint64_t end = content + static_cast<std::uint64_t>(*size);
  MessageLines lines(file_, {end, file_.size()});
  MessageLine line;
  for (int blank = 0; blank <= 2; ++blank) {
    const auto more = lines.Next(line);
    if (!more) return more.error();
    if (!*more || MailboxLineOf(line.text) != MailboxLine::kNone) within_until_ = end;
    if (!*more || !line.text.empty()) break;
  }
  return {};
}

bool MailboxBorder::IsPassedBy(std::string_view line, std::uint64_t content_end) {
  const bool is_behind_from = behind_ != MailboxLine::kNone;
  if (is_behind_from && line.starts_with(">From ")) return false;  // the way of a message that was relayed by UUCP
  const bool is_first = behind_ == MailboxLine::kMaybe && !is_behind_field_ && IsFieldOfMail(line);
  const bool is_passed = (behind_ == MailboxLine::kSure && IsField(line)) ||
                         (behind_ == MailboxLine::kMaybe && IsFieldOfMailAlone(line)) ||
                         (is_behind_field_ && GoesOnHeader(line));
  is_behind_field_ = is_first && !is_passed;
  if (is_behind_field_) return false;  // words with a colon may stand in a text; two lines of a header hardly do
  behind_ = !is_passed && is_behind_blank_ ? MailboxLineOf(line) : MailboxLine::kNone;
  if (behind_ != MailboxLine::kNone) content_end_ = content_end;
  is_behind_blank_ = line.empty();
  return is_passed;
}

// Looks ahead once for a multipart: where its end does not come, the line is the next message's, and nothing more is
// asked. An end that comes after another multipart has named the same boundary is that one's.
Result<bool> MailboxBorder::IsWithinMessage(const MessageLine& line, std::string_view boundary) {
  if (line.begin < within_until_) return true;
  if (boundary.empty()) return false;
  MessageLines lines(file_, {content_end_, file_.size()});  // a field behind "From " may have named it, too
  MessageLine ahead;
  NamedBoundaries named;
  for (int count = 1;; ++count) {
    if (count % kLinesBetweenChecks == 0) {
      if (const auto checked = check_(); !checked) return checked.error();
    }
    const auto more = lines.Next(ahead);
    if (!more) return more.error();
    if (!*more || named.EndsOneThatNames(boundary, ahead.text)) return false;
    if (DelimiterOf(ahead.text, boundary) == DelimiterKind::kClose) break;
  }
  within_until_ = ahead.begin;
  return true;
}

}  // namespace quillcast::mail_file
