// The body of a message in the four forms in which it is written to a file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "mail_file/mail_message.h"

namespace quillcast::mail_file {

enum class BodyFormat : std::uint8_t { kText, kHtml, kRtf, kXml };

// What a file dialog for it offers.
std::string_view FilterOf(BodyFormat format);

// What whoever names the file of the body has to know: that its name is that of another form. Nothing where it is not.
std::optional<Sentence> FormNote(const std::filesystem::path& file, BodyFormat format);

// Why there is nothing to write in that form: pictures alone are no text (see body_page.h). XML tells of any message.
std::optional<Error> WhyNothing(const MailMessage& message, BodyFormat format);

// Gives the body to `write`, piece by piece.
//   text  the text; of a message that has a page alone the text of that. In the character set `code_page` (empty for
//         UTF-8); what that lacks becomes "?" and is counted.
//   HTML  the page without what runs or loads (html::SafePage), in UTF-8; of a text a page that shows it.
//   RTF   the same page, with its embedded pictures.
//   XML   the message's fields, recipients, stamps, parts and both bodies, as docs/message.xsd has them.
// Fails when the message cannot be read, or `write` fails.
using WriteText = std::function<Result<void>(std::string_view)>;
Result<std::size_t> WriteBody(const MailMessage& message, BodyFormat format, std::string_view code_page,
                              const WriteText& write);

}  // namespace quillcast::mail_file
