// Which texts of a document go out: the one rule that the message, its pictures and every look at it ask.
#pragma once

#include <cstdint>

#include "document/message_document.h"
#include "message/message_options.h"

namespace quillcast::message {

enum class Parts : std::uint8_t { kText, kHtml, kBoth };

// Without MIME, and from a document of text, it is the text; HTML has a text part beside it where the options say so.
constexpr Parts PartsOf(const document::MessageDocument& document, const MessageOptions& options) {
  if (document.format != document::Format::kHtml || options.is_bare) return Parts::kText;
  return options.text_part ? Parts::kBoth : Parts::kHtml;
}
constexpr bool HasText(Parts parts) { return parts != Parts::kHtml; }
constexpr bool HasHtml(Parts parts) { return parts != Parts::kText; }

}  // namespace quillcast::message
