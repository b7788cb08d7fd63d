// What an import comes across that its counts do not say.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sentence.h"
#include "recipients/delimiters.h"
#include "recipients/import/field_lines.h"

namespace quillcast::recipients {

struct ImportFindings {
  std::int64_t cut_addresses = 0;      // harvested as a part of their word only
  std::string first_cut;               // as it was harvested
  std::int64_t addresses_in_text = 0;  // stored with other text around them
  std::string first_in_text;
  std::int64_t addresses_in_blanks = 0;  // stored with the blanks around them
  std::string first_in_blanks;
  std::int64_t long_lines = 0;
  std::int64_t first_long_line = 0;
  std::int64_t open_quote_line = 0;  // of a quote that is never closed; 0: none
  std::optional<Delimiter> fitting;  // the delimiter that would fit the file, where another was used
  bool addresses_in_quotes = false;  // stored with the quotes around them
  bool quotes_unread = false;        // its fields stand in quotes that were not looked at
  bool quotes_left = false;          // they were to be taken off a file of a format that has none

  std::size_t widest_line = 0;             // in fields
  std::optional<Sentence> missing_fields;  // that the mapping takes and no line has

  void NoteCut(std::string_view address);
  void NoteInText(std::string_view value);
  void NoteInBlanks(std::string_view value);
  void NoteFault(const FieldLine& line);
};

// A sentence each; none where all went well. Fields that are missing are not told where another delimiter would fit:
// they are there then.
std::vector<Sentence> Describe(const ImportFindings& findings);

// What is odd about the file itself; none where nothing is.
std::vector<Sentence> Describe(const FileFacts& facts);

}  // namespace quillcast::recipients
