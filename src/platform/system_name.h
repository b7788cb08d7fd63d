// What this system calls itself.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::platform {

// The PRETTY_NAME of an os-release file (os-release(5)), else its NAME; empty when it has neither.
std::string SystemNameIn(std::string_view os_release);

// Of the running system; "Linux" when it does not say, or its file is larger than 64 KiB.
std::string SystemName();

}  // namespace quillcast::platform
