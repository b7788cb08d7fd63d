// Text in whatever character set as UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::mail_file {

// See MailMessage::TextOf for the order in which the set is found out. A text that is declared in a set of which mail
// programs write a larger one under its name (ISO-8859-1 for Windows-1252, GB 2312 for GB 18030) is read in that one.
std::string DecodeBody(std::string_view bytes, std::string_view declared, bool is_html);

}  // namespace quillcast::mail_file
