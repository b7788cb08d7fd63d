#include "recipients/import/spreadsheet_lines.h"

#include <algorithm>
#include <map>

#include "platform/file.h"
#include "platform/text.h"
#include "recipients/import/office_book.h"
#include "recipients/import/open_document.h"
#include "recipients/import/reading_given_up.h"

namespace quillcast::recipients {
namespace {

constexpr const char* kOfficeParts = "[Content_Types].xml";
constexpr const char* kOfficeBook = "xl/workbook.xml";
constexpr const char* kOfficeRelations = "xl/_rels/workbook.xml.rels";
constexpr std::size_t kLongestNames = 300;  // bytes
constexpr const char* kTooManyCells = "it repeats its cells without end";
constexpr const char* kOpenContent = "content.xml";
constexpr const char* kOpenManifest = "META-INF/manifest.xml";
constexpr const char* kOpenType = "mimetype";
constexpr std::string_view kOpenSpreadsheet = "application/vnd.oasis.opendocument.spreadsheet";

Error NoSpreadsheet(const std::filesystem::path& file) {
  return {Failure::kBadData, Say("{} is an archive, and no spreadsheet.", file.string()),
          "Unpack it, and import the list that is in it; lists are .xlsx, .ods, .vcf, .ldif and delimited text."};
}

Error IsProtected(const std::filesystem::path& file) {
  return {Failure::kBadData, Say("{} is protected by a password.", file.string()),
          "Open it in the program that made it, and save it without one."};
}

Error IsDamaged(const std::filesystem::path& file, std::string_view why) {
  return {Failure::kBadData,
          Say("{} cannot be read as a spreadsheet ({}).", file.string(), platform::Printable(why, 200)),
          "Save it again in the program that made it, or as delimited text."};
}

Result<SpreadsheetLines::Kind> KindOf(const std::filesystem::path& file, const ArchiveDirectory& directory) {
  const auto& entries = directory.entries();
  if (std::any_of(entries.begin(), entries.end(), [](const auto& entry) { return entry.is_encrypted; }))
    return IsProtected(file);
  if (directory.Holds(kOfficeParts) && directory.Holds(kOfficeBook)) return SpreadsheetLines::Kind::kOfficeOpenXml;
  const auto type = UnpackPart(file, directory, kOpenType);
  if (!type) return type.error();
  if (!directory.Holds(kOpenContent) || !type->starts_with(kOpenSpreadsheet)) return NoSpreadsheet(file);
  const auto manifest = UnpackPart(file, directory, kOpenManifest);
  if (!manifest) return manifest.error();
  if (manifest->find("encryption-data") != std::string::npos) return IsProtected(file);
  return SpreadsheetLines::Kind::kOpenDocument;
}

}  // namespace

Error OldSpreadsheet(const std::filesystem::path& file) {
  return {Failure::kBadData, Say("{} is a spreadsheet of the old kind (.xls), or one with a password.", file.string()),
          "Open it in the program that made it, and save it as .xlsx, .ods or delimited text, without a password."};
}

Result<SpreadsheetLines> SpreadsheetLines::Open(const std::filesystem::path& file, std::string sheet,
                                                const platform::CancelToken* cancel) {
  auto directory = ArchiveDirectory::Read(file);
  if (!directory) return directory.error();
  if (const auto bounded = directory->CheckSizes(file); !bounded) return bounded.error();
  const auto kind = KindOf(file, *directory);
  if (!kind) return kind.error();
  const auto fd = platform::OpenForReading(file);
  if (!fd) return fd.error();
  const auto size = platform::FileSize(fd->get(), file);
  if (!size) return size.error();
  SpreadsheetLines lines(file, std::move(*directory), *kind, *size);
  lines.wanted_ = std::move(sheet);
  lines.cancel_ = cancel;
  return lines;
}

FileFacts SpreadsheetLines::Facts() const {
  return {.format = FileFormat::kSpreadsheet,
          .encoding = {},
          .size = size_,
          .sheet = taken_,
          .sheets_left_unread = sheets_left_unread_};
}

Result<void> SpreadsheetLines::NoSuchSheet() const {
  const auto sheets = ListSheets();
  if (!sheets) return sheets.error();
  std::string names;
  for (const std::string& name : *sheets) names += (names.empty() ? "\"" : ", \"") + name + "\"";
  return Error{Failure::kUsage,
               Say("{} has no sheet \"{}\".", file_.string(), platform::Printable(wanted_, kLongestNames)),
               Say("Choose one of its sheets: {}.", platform::Printable(names, kLongestNames))};
}

Result<OfficeBook> SpreadsheetLines::ReadWorkbook() const {
  OfficeBook book;
  const auto relations = Unpack(kOfficeRelations);
  if (!relations) return relations.error();
  const auto workbook = Unpack(kOfficeBook);
  if (!workbook) return workbook.error();
  if (const auto failed = ReadBook(*workbook, *relations, book); !failed.empty()) return IsDamaged(file_, failed);
  return book;
}

Result<std::vector<std::string>> SpreadsheetLines::ListSheets() const {
  std::vector<std::string> names;
  if (kind_ == Kind::kOfficeOpenXml) {
    const auto book = ReadWorkbook();
    if (!book) return book.error();
    for (const OfficeSheet& sheet : book->sheets) names.push_back(sheet.name);
    return names;
  }
  const auto xml = Unpack(kOpenContent);
  if (!xml) return xml.error();
  if (const auto failed = ListOpenSheets(*xml, names, cancel_); !failed.empty()) return IsDamaged(file_, failed);
  if (IsGivenUp(cancel_)) return ReadingGivenUp(file_);
  return names;
}

// The texts and the formats that the sheets of a workbook share.
Result<OfficeBook> SpreadsheetLines::ReadShared() const {
  auto book = ReadWorkbook();
  if (!book) return book;
  const auto texts = Unpack(book->texts_part);
  if (!texts) return texts.error();
  if (!texts->empty()) {
    if (const auto failed = ReadTexts(*texts, book->texts, cancel_); !failed.empty()) return IsDamaged(file_, failed);
  }
  const auto formats = Unpack(book->formats_part);
  if (!formats) return formats.error();
  // Without the formats numbers are shown as they are.
  if (!formats->empty()) ReadFormats(*formats, book->formats);
  if (book->formats.has_too_many()) return IsDamaged(file_, "it has more formats than any list");
  return book;
}

// Of a sheet behind the one that was taken.
Result<bool> SpreadsheetLines::IsFilled(const OfficeBook& book, const std::string& part) const {
  const auto xml = Unpack(part);
  if (!xml) return xml.error();
  const Take look = [](const FieldLine&) { return false; };
  SheetRow row(look);
  ReadOfficeSheet(*xml, book, row, cancel_);
  return row.has_told();
}

Result<void> SpreadsheetLines::ReadOfficeRows(const OfficeBook& book, const std::string& part, SheetRow& row) const {
  const auto xml = Unpack(part);
  if (!xml) return xml.error();
  if (const auto failed = ReadOfficeSheet(*xml, book, row, cancel_); !failed.empty()) return IsDamaged(file_, failed);
  return row.has_too_many() ? Result<void>(IsDamaged(file_, kTooManyCells)) : Result<void>();
}

Result<void> SpreadsheetLines::ReadOffice(const Take& take) {
  const auto book = ReadShared();
  if (!book) return book.error();
  SheetRow row(take);
  bool has_wanted = wanted_.empty();
  std::map<std::string_view, bool> filled;  // by part: many sheets may name the same one, and each is read once
  for (const OfficeSheet& sheet : book->sheets) {
    if (!row.is_wanted()) return {};
    if (!wanted_.empty() && sheet.name != wanted_) continue;
    const auto [known, is_new] = filled.try_emplace(sheet.part);
    if (row.has_told()) {
      const auto looked = is_new ? IsFilled(*book, sheet.part) : Result<bool>(known->second);
      if (!looked) return looked.error();
      known->second = *looked;
      sheets_left_unread_ += *looked ? 1 : 0;
      continue;
    }
    has_wanted = true;
    taken_ = sheet.name;
    if (!is_new) continue;
    if (auto read = ReadOfficeRows(*book, sheet.part, row); !read) return read;
    known->second = row.has_told();
  }
  return has_wanted ? Result<void>() : NoSuchSheet();
}

Result<void> SpreadsheetLines::ReadOpen(const Take& take) {
  const auto xml = Unpack(kOpenContent);
  if (!xml) return xml.error();
  SheetRow row(take);
  OpenSheets sheets;
  const auto failed = ReadOpenSheets(*xml, wanted_, row, sheets, cancel_);
  taken_ = sheets.taken;
  sheets_left_unread_ = sheets.left_unread;
  if (row.has_too_many()) return IsDamaged(file_, kTooManyCells);
  if (!failed.empty()) return IsDamaged(file_, failed);
  return wanted_.empty() || sheets.has_wanted ? Result<void>() : NoSuchSheet();
}

Result<void> SpreadsheetLines::Read(const Take& take) {
  auto read = kind_ == Kind::kOfficeOpenXml ? ReadOffice(take) : ReadOpen(take);
  if (read && IsGivenUp(cancel_)) return ReadingGivenUp(file_);
  return read;
}

}  // namespace quillcast::recipients
