// The older way to put a file into a text.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::mime {

// Lines with CRLF: "begin 644 name", the content, "end".
class Uuencoder {
 public:
  void Begin(std::string_view file_name, std::string& out);
  void Encode(std::string_view bytes, std::string& out);
  void Finish(std::string& out);

 private:
  std::string open_;  // fewer than 45 bytes
};

}  // namespace quillcast::mime
