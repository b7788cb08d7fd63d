// The texts and pages of a message that are its body: of several forms one is chosen, and what stands beside it is
// shown too (see body_order.h).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mail_file/mail_message.h"

namespace quillcast::mail_file {

// Those that are shown, in reading order, where texts of that type ("text/plain" or "text/html") are chosen.
std::vector<const Part*> BodyParts(const MailMessage& message, std::string_view type);

// The texts one after the other, parted by a line end, and the words of the pages that no text stands for.
Result<std::string> BodyAsText(const MailMessage& message);

// Of parts of the body of which one cannot be decoded, and no other shows anything. Beside others it is passed over.
std::optional<Error> WhyUnread(const MailMessage& message, const std::vector<const Part*>& bodies);

}  // namespace quillcast::mail_file
