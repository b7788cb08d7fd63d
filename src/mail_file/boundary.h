// Boundary delimiter lines (RFC 2046 5.1.1).
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "mail_file/message_file.h"
#include "mail_file/part.h"

namespace quillcast::mail_file {

enum class DelimiterKind { kNone, kOpen, kClose };

// Whether the line, without its end, is a delimiter of that boundary; blanks may stand behind it.
DelimiterKind DelimiterOf(std::string_view line, std::string_view boundary);

// What the boundary of a multipart with this content seems to be: `declared` where that stands in it, else the first
// line "--..." before a line that begins with "Content-". At most `budget` bytes are looked at, which it is lessened
// by. Nothing where there is none. Fails when the file cannot be read.
Result<std::optional<std::string>> GuessBoundary(const MessageFile& file, ByteRange content, std::string_view declared,
                                                 std::size_t& budget);

}  // namespace quillcast::mail_file
