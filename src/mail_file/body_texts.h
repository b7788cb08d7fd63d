// Which of the texts and pages of a message are its body: within an alternative one is chosen (RFC 2046 5.1.4), and
// what stands beside it is shown too.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "mail_file/mail_message.h"

namespace quillcast::mail_file {

// Whether the part is a text or page of the body that has more in it than line ends.
bool HasText(const MailMessage& message, const Part& part);

// Those that are shown, in order, where texts of that type ("text/plain" or "text/html") are chosen.
std::vector<const Part*> BodyParts(const MailMessage& message, std::string_view type);

// The texts one after the other, parted by a line end, and the words of the pages that no text stands for.
Result<std::string> BodyAsText(const MailMessage& message);

}  // namespace quillcast::mail_file
