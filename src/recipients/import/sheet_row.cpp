#include "recipients/import/sheet_row.h"

#include "platform/utf8.h"
#include "recipients/import/text_encoding.h"

namespace quillcast::recipients {

void SheetRow::Put(std::size_t column, std::string_view text) {
  if (text.empty() || column >= kMostColumns || has_too_many() || is_too_long_) return;
  if (column >= cells_.size()) cells_.resize(column + 1);
  for (; used_ <= column; ++used_) cells_[used_] = {};
  const std::size_t begin = text_.size();
  const bool fits = text.size() <= kLongestRow - begin;
  if (fits && platform::IsUtf8(text)) {
    text_ += text;
  } else if (fits) {
    AppendRepairedUtf8(text, text_);  // which may make it longer
  }
  is_too_long_ = !fits || text_.size() > kLongestRow;
  cells_[column] = {begin, text_.size() - begin};
}

void SheetRow::End(std::int64_t number) {
  if (used_ == 0 || !is_wanted_) return;
  fields_.clear();
  for (std::size_t at = 0; at < used_ && !is_too_long_; ++at) {
    fields_.push_back(std::string_view(text_).substr(cells_[at].begin, cells_[at].size));
  }
  cells_told_ += static_cast<std::int64_t>(used_);
  bytes_told_ += text_.size();
  used_ = 0;
  has_told_ = true;
  is_wanted_ =
      take_({.fields = fields_, .number = number, .fault = is_too_long_ ? LineFault::kTooLong : LineFault::kNone});
  text_.clear();
  is_too_long_ = false;
}

}  // namespace quillcast::recipients
