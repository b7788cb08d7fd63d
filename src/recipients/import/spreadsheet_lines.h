// The rows of a spreadsheet (.xlsx of Office Open XML, .ods of OpenDocument), a line each.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "recipients/import/archive_directory.h"
#include "recipients/import/archive_part.h"
#include "recipients/import/field_lines.h"
#include "recipients/import/office_book.h"

namespace quillcast::recipients {

// Of one sheet. A row with nothing in it is none; the cells of others are texts as people
// see them, dates as in "2024-03-01", formulas as what they came to. The file is unpacked into memory, see
// ArchiveDirectory for how much of it that may be.
class SpreadsheetLines final : public FieldLines {
 public:
  enum class Kind : std::uint8_t { kOfficeOpenXml, kOpenDocument };

  // `sheet` is the name of one; where it is empty, the first is taken that has anything in it. Errors: kNoInput for a
  // file that cannot be read; kBadData for one that is no spreadsheet, is protected by a password, is damaged, or would
  // unpack to too much. In Read also kUsage where no sheet has the name, kTryAgain when `cancel`, which outlives the
  // lines, asks to give up.
  static Result<SpreadsheetLines> Open(const std::filesystem::path& file, std::string sheet = {},
                                       const platform::CancelToken* cancel = nullptr);
  // The names of the sheets, in the order of their tabs.
  Result<std::vector<std::string>> ListSheets() const;
  Result<void> Read(const Take& take) override;
  FileFacts Facts() const override;
  // The whole is unpacked before its first line is there.
  std::uint64_t BytesRead() const override { return size_; }

 private:
  SpreadsheetLines(std::filesystem::path file, ArchiveDirectory directory, Kind kind, std::uint64_t size)
      : file_(std::move(file)), directory_(std::move(directory)), kind_(kind), size_(size) {}
  Result<std::string> Unpack(std::string_view part) const { return UnpackPart(file_, directory_, part, cancel_); }
  Result<void> NoSuchSheet() const;
  Result<OfficeBook> ReadWorkbook() const;
  Result<OfficeBook> ReadShared() const;
  Result<bool> IsFilled(const OfficeBook& book, const std::string& part) const;
  Result<void> ReadOfficeRows(const OfficeBook& book, const std::string& part, SheetRow& row) const;
  Result<void> ReadOffice(const Take& take);
  Result<void> ReadOpen(const Take& take);

  std::filesystem::path file_;
  ArchiveDirectory directory_;
  Kind kind_;
  std::uint64_t size_;
  std::string wanted_;
  const platform::CancelToken* cancel_ = nullptr;
  std::string taken_;
  int sheets_left_unread_ = 0;
};

// The file as what programs call by these names; for files that begin as one and are none that is served.
Error OldSpreadsheet(const std::filesystem::path& file);

}  // namespace quillcast::recipients
