#include "recipients/import/sheet_choice.h"

#include "recipients/import/import_mapping.h"

namespace quillcast::recipients {

std::optional<Sentence> SheetChoice::Take(const std::string& read) {
  if (read.empty()) return {};
  auto lacking = DescribeLackingSheet(ToRead(), read);
  if (read == wanted_) picked_ = read;
  wanted_.clear();
  shown_ = read;
  if (picked_ != read) picked_.clear();
  return lacking;
}

}  // namespace quillcast::recipients
