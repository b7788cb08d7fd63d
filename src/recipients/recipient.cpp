#include "recipients/recipient.h"

#include "platform/text.h"

namespace quillcast::recipients {

std::size_t FieldOfLabel(std::string_view label) {
  std::size_t field = 0;
  while (field < kFieldCount && !platform::EqualsIgnoringAsciiCase(kFields[field].label, label)) ++field;
  return field;
}

}  // namespace quillcast::recipients
