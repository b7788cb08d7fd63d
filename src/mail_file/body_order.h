// The way through the parts of a message that a reader goes: one form of what comes in several (RFC 2046 5.1.4), and
// everything that stands beside it.
#pragma once

#include <string_view>
#include <vector>

#include "mail_file/mail_message.h"

namespace quillcast::mail_file {

// The parts in that order, where texts of that type ("text/plain" or "text/html") are chosen: of an alternative the
// last branch that shows one, else the last that shows any, with everything in it. What was found in a packed part
// (TNEF) has its place, and is another form of the text before it.
std::vector<const Part*> ReadingOrder(const MailMessage& message, std::string_view type);

}  // namespace quillcast::mail_file
