// The blanks between the words of a header and of encoded data, ends of lines among them.
#pragma once

#include <string_view>

namespace quillcast::mail_file {

inline constexpr std::string_view kBlanks = " \t\r\n";
constexpr bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

}  // namespace quillcast::mail_file
