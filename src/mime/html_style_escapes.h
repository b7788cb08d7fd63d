// Writes the characters that a character set lacks as CSS has it, where a page's styles hold them: a style element
// knows no "&#8364;".
#pragma once

#include <string>
#include <string_view>

#include "mime/charset.h"

namespace quillcast::mime {

// Looks into style elements and style attributes, also within conditional comments. Elsewhere nothing changes. Linear
// in time on any input.
std::string EscapeInStyles(std::string_view html, const Charset& charset);

}  // namespace quillcast::mime
