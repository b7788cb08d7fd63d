#include "sending/body_style.h"

#include "mime/line_wrap.h"
#include "platform/text.h"
#include "platform/utf8.h"
#include "sending/wire_text.h"

namespace quillcast::sending {
namespace {

// Even where every character is an escape of its own (ISO-2022), so many fit into the longest line.
constexpr std::size_t kSafeColumns = 110;

// Words of more than kSafeColumns characters are cut: the one case in which a line end comes into the middle of one.
std::string CutLines(std::string_view text) {
  std::string out;
  std::size_t column = 0;
  while (!text.empty()) {
    const std::size_t length = platform::DecodeUtf8(text).length;
    if (text.front() == '\n') {
      column = 0;
    } else if (column++ == kSafeColumns) {
      out += '\n';
      column = 1;
    }
    out += text.substr(0, length);
    text.remove_prefix(length);
  }
  return out;
}

}  // namespace

std::string BodyStyle::InCharset(std::string_view text) const {
  std::string with_crlf;
  if (text.find('\n') != std::string_view::npos) text = with_crlf = platform::ReplaceAll(text, "\n", "\r\n");
  std::string bytes;
  charset.Encode(text, bytes, nullptr, unmapped);
  return bytes;
}

std::string BodyStyle::AsItStands(std::string_view text) const {
  std::string wrapped;
  if (wrap > 0) text = wrapped = is_html ? mime::WrapHtml(text, wrap) : mime::WrapText(text, wrap);
  std::string bytes = InCharset(text);
  if (!is_bare) return bytes;
  WireText check;
  check.Look(bytes);
  return check.lines_fit() ? bytes : InCharset(CutLines(mime::WrapText(text, kSafeColumns)));
}

}  // namespace quillcast::sending
