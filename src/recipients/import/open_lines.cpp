#include "recipients/import/open_lines.h"

#include <algorithm>

#include "platform/file.h"
#include "platform/text.h"
#include "recipients/import/delimited_lines.h"
#include "recipients/import/ldif_lines.h"
#include "recipients/import/spreadsheet_lines.h"
#include "recipients/import/taken_fields.h"
#include "recipients/import/vcard_lines.h"

namespace quillcast::recipients {
namespace {

constexpr std::size_t kBeginning = 4096;  // bytes that tell what a file is
constexpr std::string_view kArchive = "PK\3\4";
constexpr std::string_view kEmptyArchive = "PK\5\6";
constexpr std::string_view kOldSpreadsheet = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
constexpr std::string_view kGzip = "\x1F\x8B";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

Error IsPacked(const std::filesystem::path& file) {
  return {Failure::kBadData, Say("{} is packed.", file.string()), "Unpack it, and import what is in it."};
}

// The first line that says anything, whatever the text is encoded in: marks, and the zeros of wide characters, count
// for nothing.
std::string FirstLine(std::string beginning) {
  if (beginning.starts_with(kUtf8Mark)) beginning.erase(0, kUtf8Mark.size());
  std::erase_if(beginning, [](char c) { return c == '\0' || c == '\xFF' || c == '\xFE'; });
  for (const std::string_view line : platform::Split(beginning, '\n')) {
    const std::string_view text = platform::Trim(line);
    if (!text.empty() && !text.starts_with('#')) return std::string(text);
  }
  return {};
}

FileFormat FormatOfText(const std::string& beginning) {
  const std::string line = FirstLine(beginning);
  if (platform::EqualsIgnoringAsciiCase(line, "BEGIN:VCARD")) return FileFormat::kVCard;
  const bool is_version = platform::StartsWithIgnoringAsciiCase(line, "version:") &&
                          platform::Trim(std::string_view(line).substr(8)) == "1";
  return is_version || platform::StartsWithIgnoringAsciiCase(line, "dn:") ? FileFormat::kLdif : FileFormat::kDelimited;
}

template <typename Lines>
std::unique_ptr<FieldLines> Made(Lines lines) {
  return std::make_unique<Lines>(std::move(lines));
}

Result<std::unique_ptr<FieldLines>> OpenAs(FileFormat format, const std::filesystem::path& file,
                                           const ReadingOptions& options, std::string_view code_page,
                                           const platform::CancelToken* cancel) {
  if (format == FileFormat::kSpreadsheet) {
    auto lines = SpreadsheetLines::Open(file, options.sheet, cancel);
    if (!lines) return lines.error();
    return Made(std::move(*lines));
  }
  auto source = OpenText(file, options, code_page, cancel);
  if (!source) return source.error();
  if (format == FileFormat::kVCard) return Made(VCardLines(std::move(*source)));
  if (format == FileFormat::kLdif) return Made(LdifLines(std::move(*source)));
  if (options.rfc4180) return Made(QuotedLines(std::move(*source), options.delimiter, options.most_fields));
  return Made(DelimitedLines(std::move(*source), options.delimiter, options.most_fields));
}

}  // namespace

Result<FileFormat> FormatOf(const std::filesystem::path& file, const ReadingOptions& options) {
  if (options.format == FileFormat::kAuto) return FindOutFormat(file);
  const auto fd = platform::OpenForReading(file);
  if (!fd) return fd.error();
  return options.format;
}

Result<TextSource> OpenText(const std::filesystem::path& file, const ReadingOptions& options,
                            std::string_view code_page, const platform::CancelToken* cancel) {
  return options.known ? TextSource::OpenKnown(file, *options.known, cancel)
                       : TextSource::Open(file, options.encoding, code_page, cancel);
}

Result<std::vector<std::string>> ListSheets(const std::filesystem::path& file, const platform::CancelToken* cancel) {
  const auto lines = SpreadsheetLines::Open(file, {}, cancel);
  if (!lines) return lines.error();
  return lines->ListSheets();
}

Result<std::unique_ptr<FieldLines>> OpenLines(const std::filesystem::path& file, const ReadingOptions& options,
                                              std::string_view code_page, const platform::CancelToken* cancel) {
  const auto format = FormatOf(file, options);
  if (!format) return format.error();
  if (options.columns.empty()) return OpenAs(*format, file, options, code_page, cancel);
  if (HasKnownFields(*format)) {
    return Error{Failure::kUsage,
                 Say("{} has no columns to take, for {} fields have their places.", file.string(), NameOf(*format)),
                 "Map its fields by their numbers; all of them can be chosen."};
  }
  ReadingOptions whole = options;
  whole.most_fields = *std::max_element(options.columns.begin(), options.columns.end());
  auto lines = OpenAs(*format, file, whole, code_page, cancel);
  if (!lines) return lines;
  return Made(TakenFields(std::move(*lines), options.columns));
}

Result<FileFormat> FindOutFormat(const std::filesystem::path& file) {
  const auto fd = platform::OpenForReading(file);
  if (!fd) return fd.error();
  std::string beginning(kBeginning, '\0');
  const auto count = platform::ReadSome(fd->get(), file, beginning.data(), beginning.size());
  if (!count) return count.error();
  beginning.resize(*count);
  if (beginning.starts_with(kOldSpreadsheet)) return OldSpreadsheet(file);
  if (beginning.starts_with(kGzip)) return IsPacked(file);
  if (!beginning.starts_with(kArchive) && !beginning.starts_with(kEmptyArchive)) return FormatOfText(beginning);
  const auto sheets = SpreadsheetLines::Open(file);
  if (!sheets) return sheets.error();
  return FileFormat::kSpreadsheet;
}

bool MayHaveQuotes(FileFormat format) { return format == FileFormat::kDelimited; }

bool HasKnownFields(FileFormat format) { return format == FileFormat::kVCard || format == FileFormat::kLdif; }

ImportMapping KnownMapping() {
  ImportMapping mapping;
  for (std::size_t field = 0; field <= FieldOfLabel("Web Site"); ++field) {
    mapping.source[field] = static_cast<int>(field) + 1;
  }
  return mapping;
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

std::optional<FileFormat> FormatOfName(std::string_view name) {
  for (const FileFormat format : kFormats) {
    if (platform::EqualsIgnoringAsciiCase(name, NameOf(format))) return format;
  }
  return platform::EqualsIgnoringAsciiCase(name, "text") ? std::optional(FileFormat::kDelimited) : std::nullopt;
}

}  // namespace quillcast::recipients
