// Whether a letter tells its readers how to get no more of them.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::document {

// Reads a letter piece by piece, words and addresses, for what speaks of leaving a list in one of some twenty
// languages. A phrase may go on over pieces, tags and line ends, may have any blanks between its words, and may be
// written in capitals. In constant memory; linear in the text.
class WayOutSearch {
 public:
  // Text that goes on where the last one ended.
  void Add(std::string_view text);
  // No phrase goes on over this place: the end of a block or of an address.
  void Part() { Append("\n"); }

  bool Found();

 private:
  void AddCharacter(char32_t code, std::string_view bytes);
  void Append(std::string_view bytes);
  void Search();

  std::string pending_;  // as it is compared; begins with the end of what was looked through
  bool found_ = false;
};

}  // namespace quillcast::document
