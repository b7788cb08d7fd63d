// The line that stands before each message of a mailbox file.
#pragma once

#include <string_view>

namespace quillcast::mail_file {

// "From ada@example.org Sat Nov 14 22:40:05 2026", as it may be dated, "From " or "From -". A text that begins with the
// word has no date of that form.
bool IsMailboxLine(std::string_view line);

}  // namespace quillcast::mail_file
