// Encoded words (RFC 2047): "=?utf-8?Q?caf=C3=A9?=".
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "charset/charset.h"
#include "mime/header_text.h"

namespace quillcast::mime {

inline constexpr std::size_t kHeaderColumns = 76;

// True for text that has to be encoded: not ASCII, or it reads like an encoded word.
bool NeedsEncodedWord(std::string_view text);

// The columns that the first letter of a text takes as a word of its own, at most 75. A letter is a character and the
// marks on it.
std::size_t FirstWordColumns(std::string_view utf8, const charset::Charset& charset, HeaderEncoding encoding);

// Appends the text as encoded words of at most 75 characters, with CRLF and a blank between them and no letter split
// that fits into a word. `column` is where the line stands and is carried on. The caller has left FirstWordColumns on
// the line, or folded before. The words are good in a phrase as well as in unstructured text.
void AppendEncodedWords(std::string& out, std::string_view utf8, const charset::Charset& charset,
                        HeaderEncoding encoding, std::size_t& column);

}  // namespace quillcast::mime
