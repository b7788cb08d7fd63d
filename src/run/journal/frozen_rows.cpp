#include "run/journal/frozen_rows.h"

#include "run/journal/varint.h"

namespace quillcast::run {

void AppendRow(const recipients::Recipient& recipient, std::string& block) {
  for (const std::string& value : recipient.values) {
    AppendVarint(value.size(), block);
    block += value;
  }
}

bool FrozenRows::NextField(std::string_view& field) {
  std::uint64_t size = 0;
  if (!TakeVarint(rest_, size) || size > rest_.size()) return false;
  field = rest_.substr(0, size);
  rest_.remove_prefix(size);
  return true;
}

bool FrozenRows::Next(recipients::Recipient& recipient) {
  for (std::string& value : recipient.values) {
    std::string_view field;
    if (!NextField(field)) return false;
    value = field;
  }
  return true;
}

bool FrozenRows::Skip() {
  std::string_view field;
  for (std::size_t i = 0; i < recipients::kFieldCount; ++i) {
    if (!NextField(field)) return false;
  }
  return true;
}

}  // namespace quillcast::run
