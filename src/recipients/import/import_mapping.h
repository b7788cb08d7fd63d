// Which field of a line goes into which field of a recipient.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"
#include "recipients/recipient.h"

namespace quillcast::recipients {

// Only the first eighteen fields of a line can be chosen.
inline constexpr int kSourceFields = 18;
inline constexpr int kIgnore = 0;
inline constexpr const char* kIgnoreEntry = "Ignore";

struct ImportMapping {
  std::array<int, kFieldCount> source{};  // by position in kFields: the field of the line, from 1, or kIgnore

  bool IsAllIgnore() const { return *this == ImportMapping{}; }
  bool operator==(const ImportMapping&) const = default;
};

// "Email Address=2,First Name=1"; a field that is not named, or is "Ignore", is ignored.
// Errors: kUsage for an unknown label, one that is named twice, and a source field that is none of 1 to 18.
Result<ImportMapping> ParseMapping(std::string_view text);

// The entries of a mapping list: "Ignore", then "Field 1 = " and the trimmed text of the field, without its first and
// last character when `quotes` is set; for the fields that this line has, eighteen at most.
std::vector<std::string> SampleEntries(std::string_view first_line, char delimiter, bool quotes);

// The field of an entry, told by its first eight characters; kIgnore for every other text.
int SourceFieldOf(std::string_view entry);

// A field without its first and last character, whatever they are; empty when it has fewer than two.
std::string_view WithoutQuotes(std::string_view field);

// The fields of a line up to the eighteenth. Returns how many there are.
std::size_t SplitLine(std::string_view line, char delimiter, std::array<std::string_view, kSourceFields>& fields);

// The eighteen values of a line. They point into it.
std::array<std::string_view, kFieldCount> MapLine(std::string_view line, char delimiter, bool quotes,
                                                  const ImportMapping& mapping);

}  // namespace quillcast::recipients
