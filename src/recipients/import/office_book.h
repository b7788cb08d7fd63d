// The parts of a spreadsheet in Office Open XML (ECMA-376), made into rows.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/cancel.h"
#include "recipients/import/number_formats.h"
#include "recipients/import/sheet_row.h"

namespace quillcast::recipients {

// The texts that cells share, each at its number.
class SharedTexts {
 public:
  std::string_view At(std::size_t number) const;
  void Append(std::string_view text) { text_ += text; }
  // What was appended since the last end is one text.
  void End() { ends_.push_back(static_cast<std::uint32_t>(text_.size())); }
  bool has_too_many() const { return ends_.size() > kMost; }

 private:
  static constexpr std::size_t kMost = 10'000'000;

  std::string text_;                 // of at most ArchiveDirectory::kMostUnpacked
  std::vector<std::uint32_t> ends_;  // in it
};

struct OfficeSheet {
  std::string name;  // on its tab
  std::string part;
};

struct OfficeBook {
  std::vector<OfficeSheet> sheets;  // in the order of their tabs
  std::string texts_part;           // empty where there is none
  std::string formats_part;
  SharedTexts texts;
  NumberFormats formats;
};

// Each takes the part of its name. They give why it is no such part, empty where it is, or where `cancel` ended it.
std::string ReadBook(std::string_view workbook, std::string_view relations, OfficeBook& book);
std::string ReadTexts(std::string_view xml, SharedTexts& texts, const platform::CancelToken* cancel = nullptr);
std::string ReadFormats(std::string_view xml, NumberFormats& formats);
std::string ReadOfficeSheet(std::string_view xml, const OfficeBook& book, SheetRow& row,
                            const platform::CancelToken* cancel = nullptr);

}  // namespace quillcast::recipients
