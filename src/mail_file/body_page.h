// What the body of a message is, and the page that shows it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "html/safe_page.h"
#include "mail_file/mail_message.h"

namespace quillcast::mail_file {

// Whether the body is a page: one that shows nothing, beside a text, is none.
bool HasPage(const MailMessage& message);

// Whether pictures stand among the texts or pages of the body, as parts beside them that no page shows.
bool HasPicturesBeside(const MailMessage& message);

using TextAsHtml = std::string (*)(std::string_view text);

// The body as HTML, not made safe, its pictures at EmbeddedParts' addresses: of a message that has no page, one of its
// text. The pictures beside it stand where the message has them.
Result<std::string> BodyAsHtml(const MailMessage& message, TextAsHtml text_as_html = html::PageOfText);

// Why a message has no body that can be read, and what to do: it is encrypted, or there is none. Nothing where it has:
// pictures alone are one, but no text.
std::optional<Error> WhyNoBody(const MailMessage& message);
std::optional<Error> WhyNoText(const MailMessage& message);

}  // namespace quillcast::mail_file
