// How the text of a part becomes the bytes of a part, before its transfer encoding.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "charset/charset.h"
#include "message/transfer_encoding.h"

namespace quillcast::message {

// As it stands here: UTF-8 in quoted-printable, not wrapped.
struct BodyStyle {
  charset::Charset charset = charset::Charset::Utf8();
  charset::Unmapped unmapped = charset::Unmapped::kQuestionMark;  // what becomes of a character that the set lacks
  std::string_view start = {};  // what a body in this set begins with, before its text
  TransferEncoding encoding = TransferEncoding::kQuotedPrintable;
  std::size_t wrap = 0;  // the columns at which lines are wrapped under kNone; 0 for not at all
  bool is_html = false;
  bool is_bare = false;  // no MIME: nothing can be encoded, so lines that are too long are wrapped

  // `text` has "\n" line ends. In the character set, with CRLF; not wrapped.
  std::string InCharset(std::string_view text) const;
  // As kNone has it: wrapped too.
  std::string AsItStands(std::string_view text) const;
};

}  // namespace quillcast::message
