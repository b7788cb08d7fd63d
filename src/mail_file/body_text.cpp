#include "mail_file/body_text.h"

#include <algorithm>
#include <array>
#include <optional>

#include "charset/charset.h"
#include "mail_file/gmime_border.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::mail_file {
namespace {

constexpr std::size_t kHtmlHead = 1024;  // bytes in which a page names its set

struct Pair {
  std::string_view name;
  std::string_view other;
};
constexpr std::array kMarks = {Pair{"\xEF\xBB\xBF", "utf-8"}, Pair{"\xFF\xFE", "utf-16le"},
                               Pair{"\xFE\xFF", "utf-16be"}};
constexpr std::array kLargerSets = {
    Pair{"us-ascii", "windows-1252"},
    Pair{"ascii", "windows-1252"},
    Pair{"iso-8859-1", "windows-1252"},
    Pair{"latin1", "windows-1252"},
    Pair{"iso-8859-9", "windows-1254"},
    Pair{"iso-8859-11", "windows-874"},
    Pair{"tis-620", "windows-874"},
    Pair{"gb2312", "gb18030"},
    Pair{"gbk", "gb18030"},
    Pair{"ks_c_5601-1987", "cp949"},
    Pair{"euc-kr", "cp949"},
    Pair{"shift_jis", "cp932"},
    Pair{"shift-jis", "cp932"},
};

std::string_view LargerSet(std::string_view declared) {
  const auto* const row = std::ranges::find_if(
      kLargerSets, [&](const Pair& pair) { return platform::EqualsIgnoringAsciiCase(pair.name, declared); });
  return row == kLargerSets.end() ? declared : row->other;
}

// What a page says of itself: the word behind "charset=" near its beginning.
std::string_view CharsetOfPage(std::string_view html, std::string& lower) {
  lower = platform::AsciiLower(html.substr(0, kHtmlHead));
  const std::size_t place = lower.find("charset=");
  if (place == std::string::npos) return {};
  std::string_view name = std::string_view(lower).substr(place + 8);
  name.remove_prefix(std::min(name.find_first_not_of(" \t\"'"), name.size()));
  return name.substr(0, name.find_first_of(" \t\r\n\"'/>;"));
}

// Nothing where the set is not known, or the bytes say that it is another one.
std::optional<std::string> DecodeAs(std::string_view bytes, std::string_view name) {
  const std::string_view set = LargerSet(name);
  const bool is_western = platform::EqualsIgnoringAsciiCase(set, "windows-1252");
  if (set.empty() || (is_western && platform::IsUtf8(bytes))) return {};
  if (platform::EqualsIgnoringAsciiCase(set, "utf-8") || platform::EqualsIgnoringAsciiCase(set, "utf8"))
    return platform::IsUtf8(bytes) ? std::optional(std::string(bytes)) : std::nullopt;
  if (set == name) {
    if (const auto served = charset::FindCharset(set)) return served->Decode(bytes);
  }
  auto converted = ConvertToUtf8(bytes, set);
  return converted ? std::optional(std::move(converted->text)) : std::nullopt;
}

}  // namespace

std::string DecodeBody(std::string_view bytes, std::string_view declared, bool is_html) {
  for (const auto& [mark, set] : kMarks) {
    if (!bytes.starts_with(mark)) continue;
    if (auto converted = ConvertToUtf8(bytes.substr(mark.size()), set)) return std::move(converted->text);
  }
  if (auto text = DecodeAs(bytes, declared)) return *std::move(text);
  std::string lower;
  if (is_html) {
    if (auto text = DecodeAs(bytes, CharsetOfPage(bytes, lower))) return *std::move(text);
  }
  if (platform::IsUtf8(bytes)) return std::string(bytes);
  return charset::FindCharset("windows-1252")->Decode(bytes);
}

}  // namespace quillcast::mail_file
