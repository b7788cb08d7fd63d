// What the preview inside the program shows of one recipient's message.
#pragma once

#include <string>

#include "document/message_document.h"
#include "platform/result.h"
#include "recipients/recipient.h"

namespace quillcast::run {

// The message as this recipient would read it. Pictures are referred to as in the document.
struct RecipientView {
  std::string address;  // as stored
  std::string subject;
  std::string html;
  std::string text;
};

// The document as it stands, merge tags and all.
RecipientView ViewOfTags(const document::MessageDocument& document);
// Fails with kBadData for values that make the message grow without measure.
Result<RecipientView> ViewFor(const document::MessageDocument& document, const recipients::Recipient& recipient);

}  // namespace quillcast::run
