// What the program calls itself in messages and on paper.
#pragma once

#include <string>

namespace quillcast::profile {

// "Tarnwick Quillcast Classic 1.0".
std::string MailerName();

}  // namespace quillcast::profile
