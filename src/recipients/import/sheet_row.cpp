#include "recipients/import/sheet_row.h"

#include "platform/utf8.h"
#include "recipients/import/text_encoding.h"

namespace quillcast::recipients {

void SheetRow::Put(std::size_t column, std::string_view text) {
  if (text.empty() || column >= kMostColumns || has_too_many()) return;
  if (column >= cells_.size()) cells_.resize(column + 1);
  for (; used_ <= column; ++used_) cells_[used_].clear();
  if (platform::IsUtf8(text)) {
    cells_[column] = text;
  } else {
    cells_[column].clear();
    AppendRepairedUtf8(text, cells_[column]);
  }
}

void SheetRow::End(std::int64_t number) {
  if (used_ == 0 || !is_wanted_) return;
  fields_.assign(cells_.begin(), cells_.begin() + static_cast<std::ptrdiff_t>(used_));
  cells_told_ += static_cast<std::int64_t>(used_);
  used_ = 0;
  has_told_ = true;
  is_wanted_ = take_({.fields = fields_, .number = number});
}

}  // namespace quillcast::recipients
