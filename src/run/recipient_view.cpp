#include "run/recipient_view.h"

#include <utility>

#include "document/merge_fields.h"

namespace quillcast::run {

RecipientView ViewOfTags(const document::MessageDocument& document) {
  return {"", document.subject, document.html, document.PlainText()};
}

Result<RecipientView> ViewFor(const document::MessageDocument& document, const recipients::Recipient& recipient) {
  std::array<std::string, document::kMergeFields.size()> changed;
  const auto values = document::ValuesForMerge(recipient, changed);
  auto subject = document::ReplaceMergeFields(document.subject, values);
  auto html = document::ReplaceMergeFields(document.html, values);
  auto text = document::ReplaceMergeFields(document.PlainText(), values);
  if (!subject || !html || !text) {
    return Error{Failure::kBadData, "The values of this recipient make the message too long.",
                 "Look at the values that hold merge tags themselves."};
  }
  return RecipientView{recipient.email(), std::move(*subject), std::move(*html), std::move(*text)};
}

}  // namespace quillcast::run
