// Archives of any bytes: their directory, and whatever a spreadsheet is made of, must be read or refused.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "recipients/import/archive_directory.h"
#include "recipients/import/office_book.h"
#include "recipients/import/open_document.h"
#include "recipients/import/open_lines.h"

using namespace quillcast;

namespace {

void Require(bool promise) {
  if (!promise) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const auto file = std::filesystem::temp_directory_path() / ("archive_fuzz." + std::to_string(::rand()));
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const recipients::FieldLines::Take take = [](const recipients::FieldLine& line) {
    Require(line.number > 0 && line.fields.size() <= recipients::SheetRow::kMostColumns);
    return true;
  };
  const auto directory = recipients::ArchiveDirectory::Parse(text, file);
  if (directory) Require(directory->entries().size() <= size);
  if (text.starts_with("PK")) {
    std::ofstream(file, std::ios::binary) << text;
    const auto lines = recipients::OpenLines(file, {.format = recipients::FileFormat::kSpreadsheet}, "");
    if (lines) IgnoreErrors((*lines)->Read(take));
    std::filesystem::remove(file);
  }
  recipients::OfficeBook book;
  recipients::ReadTexts(text, book.texts);
  recipients::ReadFormats(text, book.formats);
  recipients::SheetRow row(take);
  recipients::ReadOfficeSheet(text, book, row);
  recipients::SheetRow other(take);
  recipients::OpenSheets sheets;
  recipients::ReadOpenSheets(text, {}, other, sheets);
  return 0;
}
