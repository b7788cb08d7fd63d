// What a server says.
#pragma once

#include <string>

namespace quillcast::smtp {

// A server's answer (RFC 5321 4.2): its three digits and its text, the lines joined by "\n". Text comes from outside:
// pass it through platform::Printable before showing it.
struct ServerReply {
  int code = 0;          // 0 when there was none
  std::string enhanced;  // "5.1.1" (RFC 3463), empty when the reply has none
  std::string text;      // without the digits and, on each line, without the enhanced code
};

}  // namespace quillcast::smtp
