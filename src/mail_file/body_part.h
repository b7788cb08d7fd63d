// One text or page of the body by itself.
#pragma once

#include "mail_file/mail_message.h"

namespace quillcast::mail_file {

bool IsTextOrPage(const Part& part);

// Whether whoever looks at such a part sees anything: a word or a picture, no blanks, no-break spaces and line ends
// alone. What cannot be decoded shows nothing; of a large one it is taken for granted.
bool ShowsSomething(const MailMessage& message, const Part& part);

}  // namespace quillcast::mail_file
