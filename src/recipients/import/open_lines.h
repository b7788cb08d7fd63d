// Opens a file of recipients as lines of fields, in the format that it has.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "recipients/import/field_lines.h"
#include "recipients/import/import_mapping.h"

namespace quillcast::recipients {

struct ReadingOptions {
  FileFormat format = FileFormat::kAuto;  // kAuto: what its content looks like
  char delimiter = ',';
  bool rfc4180 = false;                     // quotes and what stands between them, see QuotedLines
  std::string encoding = {};                // of a text; empty: found out, see FindOutEncoding
  std::size_t most_fields = kSourceFields;  // that are cut out of a line

  bool operator==(const ReadingOptions&) const = default;
};

// `code_page` is the locale's codeset. Errors: kNoInput for a file that cannot be read, kBadData for one that is no
// list of any kind, kUsage for an unknown encoding.
Result<std::unique_ptr<FieldLines>> OpenLines(const std::filesystem::path& file, const ReadingOptions& options,
                                              std::string_view code_page);

// What the content of a file looks like. Errors: as OpenLines.
Result<FileFormat> FindOutFormat(const std::filesystem::path& file);

// Whether its lines have the fields of a recipient, in the order of kFields, and no line of headings.
bool HasKnownFields(FileFormat format);
// What is taken of such a line: all but the three additional fields, in which they have things of their own.
ImportMapping KnownMapping();

// As people call it: "delimited text", "spreadsheet", "vCard", "LDIF".
const char* NameOf(FileFormat format);

}  // namespace quillcast::recipients
