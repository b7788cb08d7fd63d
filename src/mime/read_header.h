// Reads a header field of a message that came in.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::mime {

// The first field with this name, without regard to ASCII case, unfolded (RFC 5322 2.2.3) and decoded to UTF-8; empty
// where the header has none. Lines may end in LF alone.
std::string ReadHeader(std::string_view message, std::string_view name);

// Encoded words (RFC 2047) as what they stand for, without the blanks between two of them. One of another shape, of an
// unknown character set or longer than 255 octets stays as it is.
std::string DecodeEncodedWords(std::string_view text);

// The same text with each row of encoded words in base64 of one set, apart by nothing but blanks, as one word: for a
// reader that joins their digits before it decodes them, and so ends at the padding of the first (RFC 2047 2).
std::string JoinBase64Words(std::string_view text);

}  // namespace quillcast::mime
