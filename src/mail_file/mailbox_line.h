// The line that stands before each message of a mailbox file.
#pragma once

#include <string_view>

namespace quillcast::mail_file {

// kSure: "From ada@example.org Sat Nov 14 22:40:05 2026", as it may be dated; a text that begins with the word has no
// date of that form. kMaybe: "From ", "From -", or one with words before the date that may be a sentence's or a
// sender's.
enum class MailboxLine { kNone, kMaybe, kSure };
MailboxLine MailboxLineOf(std::string_view line);

}  // namespace quillcast::mail_file
