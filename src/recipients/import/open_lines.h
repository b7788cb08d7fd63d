// Opens a file of recipients as lines of fields, in the format that it has.
#pragma once

#include <array>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recipients/import/field_lines.h"
#include "recipients/import/import_mapping.h"
#include "recipients/import/text_source.h"

namespace quillcast::recipients {

struct ReadingOptions {
  FileFormat format = FileFormat::kAuto;  // kAuto: what its content looks like
  std::string sheet = {};                 // of a spreadsheet; empty: the first with anything in it
  char delimiter = ',';
  bool rfc4180 = false;                     // quotes and what stands between them, see QuotedLines
  std::string encoding = {};                // of a text; empty: found out, see FindOutEncoding
  std::optional<TextEncoding> known = {};   // what was found out of this file before: it is not read for that again
  std::size_t most_fields = kSourceFields;  // that are cut out of a line
  std::vector<std::size_t> columns = {};    // that are taken instead, in this order, see TakenFields; none: all

  bool operator==(const ReadingOptions&) const = default;
};

// `code_page` is the locale's codeset. Errors: kNoInput for a file that cannot be read, kBadData for one that is no
// list of any kind, kUsage for an unknown encoding; here and in the reading kTryAgain when `cancel`, which outlives the
// lines, asks to give up.
Result<std::unique_ptr<FieldLines>> OpenLines(const std::filesystem::path& file, const ReadingOptions& options,
                                              std::string_view code_page,
                                              const platform::CancelToken* cancel = nullptr);

// A text alone, in the encoding that the options say. Errors: as OpenLines.
Result<TextSource> OpenText(const std::filesystem::path& file, const ReadingOptions& options,
                            std::string_view code_page, const platform::CancelToken* cancel = nullptr);

// The names of a spreadsheet's sheets, in the order of their tabs. Errors: as OpenLines.
Result<std::vector<std::string>> ListSheets(const std::filesystem::path& file, const platform::CancelToken* cancel);

// The format that the options say, or what the content looks like. Errors: as OpenLines.
Result<FileFormat> FormatOf(const std::filesystem::path& file, const ReadingOptions& options);

// What the content of a file looks like. Errors: as OpenLines.
Result<FileFormat> FindOutFormat(const std::filesystem::path& file);

// Whether there can be quotes round its fields that are taken off: in other formats what stands there is the value.
bool MayHaveQuotes(FileFormat format);
// Whether its lines have the fields of a recipient, in the order of kFields, and no line of headings.
bool HasKnownFields(FileFormat format);
// What is taken of such a line: all but the three additional fields, in which they have things of their own.
ImportMapping KnownMapping();

// As people call it: "delimited text", "spreadsheet", "vCard", "LDIF".
const char* NameOf(FileFormat format);
// The same the other way round, in any case; "text" too. Nothing for another name.
std::optional<FileFormat> FormatOfName(std::string_view name);
// Those that can be asked for, in the order in which they are offered.
inline constexpr std::array<FileFormat, 4> kFormats = {FileFormat::kDelimited, FileFormat::kSpreadsheet,
                                                       FileFormat::kVCard, FileFormat::kLdif};

}  // namespace quillcast::recipients
