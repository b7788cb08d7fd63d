// Recipients as they were when a mailing began, in the octets of a block: each its fields, each field its length first.
#pragma once

#include <string>
#include <string_view>

#include "recipients/recipient.h"

namespace quillcast::run {

void AppendRow(const recipients::Recipient& recipient, std::string& block);

// Reads a block's rows one after the other. The octets must live as long.
class FrozenRows {
 public:
  explicit FrozenRows(std::string_view block) : rest_(block) {}
  // False where the block has no further row that is whole.
  bool Next(recipients::Recipient& recipient);
  bool Skip();

 private:
  bool NextField(std::string_view& field);
  std::string_view rest_;
};

}  // namespace quillcast::run
