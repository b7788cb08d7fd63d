#include "run/recipient_view.h"

#include <utility>

#include "document/merge_fields.h"

namespace quillcast::run {

RecipientView ViewOfTags(const document::MessageDocument& document, message::Parts parts) {
  return {"", document.subject, parts, message::HasHtml(parts) ? document.html : "",
          message::HasText(parts) ? document.PlainText() : ""};
}

Result<RecipientView> ViewFor(const document::MessageDocument& document, message::Parts parts,
                              const recipients::Recipient& recipient) {
  std::array<std::string, document::kMergeFields.size()> changed;
  const auto values = document::ValuesForMerge(recipient, changed);
  const RecipientView tags = ViewOfTags(document, parts);
  auto subject = document::ReplaceMergeFields(tags.subject, values);
  auto html = document::ReplaceMergeFields(tags.html, values);
  auto text = document::ReplaceMergeFields(tags.text, values);
  if (!subject || !html || !text) {
    return Error{Failure::kBadData, "The values of this recipient make the message too long.",
                 "Look at the values that hold merge tags themselves."};
  }
  return RecipientView{recipient.email(), std::move(*subject), parts, std::move(*html), std::move(*text)};
}

}  // namespace quillcast::run
