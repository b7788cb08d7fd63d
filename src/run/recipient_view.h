// What the preview inside the program shows of one recipient's message.
#pragma once

#include <string>

#include "document/message_document.h"
#include "message/message_parts.h"
#include "platform/result.h"
#include "recipients/recipient.h"

namespace quillcast::run {

// The message as this recipient would read it. Pictures are referred to as in the document.
struct RecipientView {
  std::string address;  // as stored
  std::string subject;
  message::Parts parts = message::Parts::kBoth;  // those that go out; the other one is empty
  std::string html;
  std::string text;
};

// The document as it stands, merge tags and all.
RecipientView ViewOfTags(const document::MessageDocument& document, message::Parts parts);
// Fails with kBadData for values that make the message grow without measure.
Result<RecipientView> ViewFor(const document::MessageDocument& document, message::Parts parts,
                              const recipients::Recipient& recipient);

}  // namespace quillcast::run
