// The line that stands before each message of a mailbox file.
#pragma once

#include <string_view>

namespace quillcast::mail_file {

// "From ada@example.org Sat Nov 14 22:40:05 2026", as it may be dated; kBare: "From " or "From -", which a text may
// have too. A text that begins with the word has no date of that form.
enum class MailboxLine { kNone, kBare, kDated };
MailboxLine MailboxLineOf(std::string_view line);

}  // namespace quillcast::mail_file
