// Writes the characters that a character set lacks as CSS has it, where a page's styles hold them: a style element
// knows no "&#8364;".
#pragma once

#include <string>
#include <string_view>

#include "charset/charset.h"

namespace quillcast::message {

// Looks into style elements and style attributes, also within conditional comments. Elsewhere nothing changes. Linear
// in time on any input.
std::string EscapeInStyles(std::string_view html, const charset::Charset& charset);

}  // namespace quillcast::message
