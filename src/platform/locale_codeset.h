// The character set of the user's locale.
#pragma once

#include <string>

namespace quillcast::platform {

// "UTF-8" where there is no locale.
std::string LocaleCodeset();

}  // namespace quillcast::platform
