// Encoded words (RFC 2047): "=?utf-8?Q?caf=C3=A9?=".
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "mime/charset.h"
#include "mime/header_text.h"

namespace quillcast::mime {

inline constexpr std::size_t kHeaderColumns = 76;

// True for text that has to be encoded: not ASCII, or it reads like an encoded word.
bool NeedsEncodedWord(std::string_view text);

// Appends the text as encoded words of at most 75 characters, with CRLF and a blank between them and no character
// split. `column` is where the line stands and is carried on. The caller has left room for one character on the line,
// or folded before. The words are good in a phrase as well as in unstructured text.
void AppendEncodedWords(std::string& out, std::string_view utf8, const Charset& charset, HeaderEncoding encoding,
                        std::size_t& column);

}  // namespace quillcast::mime
