// Which of the computer's starts this is.
#pragma once

#include <string>

namespace quillcast::platform {

// A random UUID that the system makes at each start; empty where it tells none.
std::string BootId();

}  // namespace quillcast::platform
