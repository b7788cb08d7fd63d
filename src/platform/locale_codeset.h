// The character set of the user's locale.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::platform {

// "UTF-8" where there is no locale.
std::string LocaleCodeset();
// A codeset that stands for UTF-8: "UTF-8" itself, and the ASCII of the locales "C" and "POSIX".
bool IsUtf8Codeset(std::string_view codeset);

}  // namespace quillcast::platform
