// Which field of a line goes into which field of a recipient.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"
#include "recipients/recipient.h"

namespace quillcast::recipients {

// Only the first eighteen fields of a line can be chosen, by number or by their headings.
inline constexpr int kSourceFields = 18;
inline constexpr int kIgnore = 0;
inline constexpr const char* kIgnoreEntry = "Ignore";

struct ImportMapping {
  std::array<int, kFieldCount> source{};  // by position in kFields: the field of the line, from 1, or kIgnore

  bool IsAllIgnore() const { return *this == ImportMapping{}; }
  bool operator==(const ImportMapping&) const = default;
};

// "Email Address=2,First Name=1"; a field that is not named, or is "Ignore", is ignored.
// Errors: kUsage for an unknown label, one that is named twice, and a source field that is none of 1 to `most`.
Result<ImportMapping> ParseMapping(std::string_view text, int most = kSourceFields);

// The text that ParseMapping reads, of the fields that are not ignored.
std::string MappingText(const ImportMapping& mapping);

// A mapping, kept or of another file, as far as a file has its fields.
struct FittedMapping {
  ImportMapping mapping;
  std::vector<std::size_t> lacking;  // by position in kFields: what is ignored because its field of the line is missing
};
// `fields` is how many a line of the file has. Those behind the eighteenth cannot be chosen by number and are missing.
FittedMapping FitMapping(const ImportMapping& mapping, std::size_t fields);
// What is missing, for whoever applied it: "Field 7, for “City”". Nothing where nothing is.
std::optional<Sentence> DescribeLacking(const FittedMapping& fitted, const ImportMapping& wanted);
// That no line of those that were read, the widest of which has `fields`, reaches to a field that the mapping takes.
// Nothing where one does, and where there was no line.
std::optional<Sentence> DescribeMissingFields(const ImportMapping& mapping, std::size_t fields);
// Nothing where the sheet that is read is the wanted one, none was wanted, or none is read.
std::optional<Sentence> DescribeLackingSheet(std::string_view wanted, std::string_view read);

// A list with longer entries would stall while it lays them out; nobody tells fields apart by what comes after.
inline constexpr std::size_t kLongestEntryText = 1000;  // characters

// The entries of a mapping list: "Ignore", then "Field 1 = " and the trimmed text of the field, without its first and
// last character when `quotes` is set; for the fields that this line has, eighteen at most. A text is whole up to
// kLongestEntryText, and then ends in "…"; it is safe to show.
std::vector<std::string> SampleEntries(std::span<const std::string_view> fields, bool quotes);

// The field of an entry, told by its first eight characters; kIgnore for every other text.
int SourceFieldOf(std::string_view entry);

// A field without its first and last character, whatever they are; empty when it has fewer than two.
std::string_view WithoutQuotes(std::string_view field);

// The eighteen values of a line; empty where it has no such field. They point into its texts.
std::array<std::string_view, kFieldCount> MapFields(std::span<const std::string_view> fields, bool quotes,
                                                    const ImportMapping& mapping);

}  // namespace quillcast::recipients
