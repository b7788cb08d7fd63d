// The character sets that pages declare, read and written as browsers do.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillcast::charset {

// A set that is read as a larger one, which holds what writers meant: "gb2312" as GBK, "shift_jis" as Windows' own,
// "iso-8859-1" as Windows-1252. UTF-8 and UTF-16 are none of these: a page shows by its bytes that it is in them.
bool IsPageCharset(std::string_view label);

// The text of `bytes` as UTF-8, U+FFFD for what has no meaning there. Nothing where the label is no such set.
std::optional<std::string> DecodePage(std::string_view bytes, std::string_view label);

// `html` in that set; characters that it lacks become numeric references. Nothing where the label is no such set.
std::optional<std::string> EncodePage(std::string_view html, std::string_view label);

}  // namespace quillcast::charset
