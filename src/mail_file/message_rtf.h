// The body of a message as rich text with its pictures.
#pragma once

#include "mail_file/body_formats.h"
#include "mail_file/mail_message.h"

namespace quillcast::mail_file {

// The page of the message, or its text, by html::HtmlToRtf. Embedded pictures that rich text can hold (PNG, JPEG, BMP)
// are written out of the file, block by block; of others there is the description. Of a picture that is shown again and
// again there are no more copies than twice the size of all embedded parts.
Result<void> WriteAsRtf(const MailMessage& message, const WriteText& write);

}  // namespace quillcast::mail_file
