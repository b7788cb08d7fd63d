// One answer of the mailbox to one command.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::smtp {

struct Answer {
  int code;
  std::string_view enhanced;  // "5.1.1" (RFC 3463); a literal, or a piece of a table
  std::string text;           // one line, without control characters
};

}  // namespace quillcast::smtp
