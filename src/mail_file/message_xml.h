// A message as XML, for programs: the form that docs/message.xsd describes.
#pragma once

#include <string>

#include "mail_file/body_formats.h"
#include "mail_file/mail_message.h"

namespace quillcast::mail_file {

// In UTF-8. Characters that XML 1.0 does not have become U+FFFD. The bodies are there as text: the page with its markup
// escaped, so that it is nobody's markup.
Result<void> WriteAsXml(const MailMessage& message, const WriteText& write);

}  // namespace quillcast::mail_file
