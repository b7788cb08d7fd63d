#include "recipients/import/sheet_choice.h"

#include "recipients/import/import_mapping.h"

namespace quillcast::recipients {

std::optional<Sentence> SheetChoice::Take(const std::string& read) {
  auto lacking = DescribeLackingSheet(ToRead(), read);
  if (read == wanted_) picked_ = read;
  wanted_.clear();
  if (read.empty()) return {};  // no sheet is lacking in what has none
  shown_ = read;
  if (picked_ != read) picked_.clear();
  return lacking;
}

}  // namespace quillcast::recipients
