// Files of "[Section]" and "key=value" lines, as desktop programs keep their settings in.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace quillcast::account {

// What editors may put before a text in UTF-8.
inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// One line with a value. The texts are views of the file, without blanks around them.
struct KeyLine {
  std::string_view section;  // empty before the first
  std::string_view key;
  std::string_view value;
};

// Each in their order, whatever the bytes are. Comments, other lines and keys for one language ("Name[de]") are passed
// over; line ends are LF or CRLF, and a byte order mark is none of the first section.
void ReadKeyFile(std::string_view file, const std::function<void(const KeyLine&)>& take);

// With what "\s", "\n", "\t", "\r" and "\\" stand for, where a program writes them so.
std::string KeyFileText(std::string_view value);

}  // namespace quillcast::account
