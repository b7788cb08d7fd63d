// Looks for the names of files among the words and signs of a text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "html/address_reach.h"

namespace quillcast::html {

// One reading of a text as it stands, in a time that grows with its length alone. What an address of the net holds, and
// what an address of a program's own scheme asks for, is passed over.
class FileScanner {
 public:
  // What a text is: in one that people read, "file:Logo/a.png" is a title.
  enum class Text { kOfPrograms, kOfPeople };

  // The text must outlive the scanner.
  FileScanner(std::string_view text, Text kind) : text_(text), kind_(kind) {}

  // Whether one is named: "file:" with a folder, "C:\x", "\\server\share".
  bool FindsFile();

  // What there was beside the passed over, where no file was named; a blank stands for each address.
  std::string TakeRest() { return std::move(rest_); }

 private:
  char CharacterAt(std::size_t at) const { return at < text_.size() ? text_[at] : '\0'; }
  void Keep(std::size_t end);
  void PassOverAddress();
  bool IsFileOrPassesOver(AddressReach reach);
  // Each reads on from at_, and says whether a file is named.
  bool ReadSign();
  bool ReadSlashes();
  bool ReadWord();
  bool ReadScheme(std::size_t colon);
  bool IsFile(std::size_t colon);
  bool IsDrive(std::size_t colon) const;
  bool IsSizeOrUnit(std::size_t colon) const;
  bool IsShare() const;
  void BeginAddress(std::size_t from);
  bool EndsAddress(char c);

  std::string_view text_;
  Text kind_;
  std::size_t at_ = 0;
  std::string rest_;
  char before_ = '\0';         // the last sign that is no blank
  bool is_in_pairs_ = true;    // all up to here is "a=b&c="
  bool awaits_slash_ = false;  // behind "file:home"
  // The last address that began, where it is one of the net or of a program.
  std::size_t host_ = 0;
  std::size_t asks_ = 0;  // where its query or fragment begins; npos where there is none
  std::size_t end_ = 0;
  bool is_value_ = false;  // of one of the pairs
  int open_ = 0;           // brackets of its query
};

}  // namespace quillcast::html
