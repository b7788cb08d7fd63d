#include "document/single_blanks.h"

namespace quillcast::document {

std::string WithSingleBlanks(std::string_view text) {
  std::string out;
  bool between = false;
  for (const char c : text) {
    if (std::string_view(" \t\n\f\r").find(c) != std::string_view::npos) {
      between = !out.empty();
      continue;
    }
    if (between) out += ' ';
    between = false;
    out += c;
  }
  return out;
}

}  // namespace quillcast::document
