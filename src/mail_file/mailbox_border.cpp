#include "mail_file/mailbox_border.h"

namespace quillcast::mail_file {

bool IsMailboxLine(std::string_view line) {
  if (!line.starts_with("From ")) return false;
  const std::size_t colon = line.find(':');
  const auto is_digit = [&](std::size_t at) { return at < line.size() && line[at] >= '0' && line[at] <= '9'; };
  return colon != std::string_view::npos && is_digit(colon - 1) && is_digit(colon + 1);
}

bool MailboxBorder::IsPassedBy(std::string_view line, std::uint64_t content_end) {
  const std::size_t colon = line.find(':');
  const bool is_field = colon != std::string_view::npos && line.find(' ') > colon;
  const bool is_passed = is_behind_from_ && is_field;
  is_behind_from_ = !is_passed && is_behind_blank_ && IsMailboxLine(line);
  if (is_behind_from_) content_end_ = content_end;
  is_behind_blank_ = line.empty();
  return is_passed;
}

}  // namespace quillcast::mail_file
