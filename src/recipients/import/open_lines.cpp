#include "recipients/import/open_lines.h"

#include "recipients/import/delimited_lines.h"

namespace quillcast::recipients {

Result<std::unique_ptr<FieldLines>> OpenLines(const std::filesystem::path& file, const ReadingOptions& options,
                                              std::string_view code_page) {
  auto source = TextSource::Open(file, options.encoding, code_page);
  if (!source) return source.error();
  if (options.rfc4180) {
    return std::unique_ptr<FieldLines>(
        std::make_unique<QuotedLines>(std::move(*source), options.delimiter, options.most_fields));
  }
  return std::unique_ptr<FieldLines>(
      std::make_unique<DelimitedLines>(std::move(*source), options.delimiter, options.most_fields));
}

Result<FileFormat> FindOutFormat(const std::filesystem::path& file) {
  const auto fd = platform::OpenForReading(file);
  if (!fd) return fd.error();
  return FileFormat::kDelimited;
}

const char* NameOf(FileFormat format) {
  switch (format) {
    case FileFormat::kSpreadsheet:
      return "spreadsheet";
    case FileFormat::kVCard:
      return "vCard";
    case FileFormat::kLdif:
      return "LDIF";
    case FileFormat::kAuto:
    case FileFormat::kDelimited:
      break;
  }
  return "delimited text";
}

}  // namespace quillcast::recipients
