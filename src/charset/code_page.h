// Text in the character set of the system, for files that a person reads with other programs.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillcast::charset {

// Appends UTF-8 in the set that `code_page` names (platform::LocaleCodeset), and gives how many characters that does
// not have: "?" stands in their place. UTF-8 stays as it is, also for a set that is not served.
std::size_t AppendInCodePage(std::string& out, std::string_view text, std::string_view code_page);

}  // namespace quillcast::charset
