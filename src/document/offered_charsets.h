// The character sets that the account offers, and the names that they have in a message.
#pragma once

#include <array>
#include <string_view>

namespace quillcast::document {

// A line of the account's box. Whether messages can be written in it is for charset::FindCharset to say.
struct OfferedCharset {
  std::string_view display_name;  // as stored in `Account` `CharSet`
  std::string_view mime_name;
};

// In the order in which they are offered and searched. The last one is written with a capital W, alone among the
// Windows code pages; deliberate.
inline constexpr auto kOfferedCharsets = std::to_array<OfferedCharset>({
    {"Arabic (ISO)", "iso-8859-6"},
    {"Arabic (Windows)", "windows-1256"},
    {"Baltic (ISO)", "iso-8859-4"},
    {"Baltic (Windows)", "windows-1257"},
    {"Central European (ISO)", "iso-8859-2"},
    {"Central European (Windows)", "windows-1250"},
    {"Chinese Simplified (GB2312)", "gb2312"},
    {"Chinese Simplified (HZ)", "hz-gb-2312"},
    {"Chinese Traditional (Big5)", "big5"},
    {"Cyrillic (ISO)", "iso-8859-5"},
    {"Cyrillic (KOI8-R)", "koi8-r"},
    {"Cyrillic (KOI8-U)", "koi8-u"},
    {"Cyrillic (Windows)", "windows-1251"},
    {"Greek (ISO)", "iso-8859-7"},
    {"Greek (Windows)", "windows-1253"},
    {"Hebrew (ISO-Logical)", "iso-8859-8-i"},
    {"Hebrew (ISO-Visual)", "iso-8859-8"},
    {"Hebrew (Windows)", "windows-1255"},
    {"Japanese (EUC)", "euc-jp"},
    {"Japanese (JIS)", "iso-2022-jp"},
    {"Japanese (Shift-JIS)", "shift-jis"},
    {"Korean", "iso-ir-149"},
    {"Korean (EUC)", "euc-kr"},
    {"Korean (ISO)", "iso-2022-kr"},
    {"Latin 3 (ISO)", "iso-8859-3"},
    {"Latin 9 (ISO)", "iso-8859-15"},
    {"Thai (ISO)", "iso-8859-11"},
    {"Thai (Windows)", "windows-874"},
    {"Turkish (ISO)", "iso-8859-9"},
    {"Turkish (Windows)", "windows-1254"},
    {"Unicode (UTF-7)", "utf-7"},
    {"Unicode (UTF-8)", "utf-8"},
    {"US-ASCII", "us-ascii"},
    {"User Defined", "x-user-defined"},
    {"Vietnamese (Windows)", "windows-1258"},
    {"Western European (ISO)", "iso-8859-1"},
    {"Western European (Windows)", "Windows-1252"},
});

// Exact and case-sensitive; empty when no row has the name.
constexpr std::string_view MimeNameOf(std::string_view display_name) {
  for (const OfferedCharset& row : kOfferedCharsets) {
    if (row.display_name == display_name) return row.mime_name;
  }
  return {};
}

}  // namespace quillcast::document
