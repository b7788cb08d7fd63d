#include "message/body_style.h"

#include "html/line_wrap.h"
#include "message/wire_text.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::message {
namespace {

// Even where every character is an escape sequence of its own (ISO-2022), so many fit into the longest line.
constexpr std::size_t kSafeColumns = 110;

bool Fits(const BodyStyle& style, std::string_view line) { return style.InCharset(line).size() <= kLongestLine; }

std::string Cut(std::string_view line) {
  std::string out;
  for (std::size_t count = 0; !line.empty(); ++count) {
    const std::size_t length = platform::DecodeUtf8(line).length;
    if (count > 0 && count % kSafeColumns == 0) out += '\n';
    out += line.substr(0, length);
    line.remove_prefix(length);
  }
  return out;
}

// Wraps the lines that may not go out as they are. Where that leaves one too long, which only an address of the net can
// be, it is cut.
std::string FitLines(const BodyStyle& style, std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const auto line = text.substr(0, text.find('\n'));
    if (Fits(style, line)) {
      out += line;
    } else {
      const std::string wrapped = html::WrapText(line, kSafeColumns);
      for (const auto part : platform::Split(wrapped, '\n')) {
        if (part.data() != wrapped.data()) out += '\n';
        out += Fits(style, part) ? std::string(part) : Cut(part);
      }
    }
    text.remove_prefix(line.size());
    if (text.empty()) break;
    out += '\n';
    text.remove_prefix(1);
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
  if (wrap > 0) text = wrapped = is_html ? html::WrapHtml(text, wrap) : html::WrapText(text, wrap);
  std::string bytes = InCharset(text);
  if (!is_bare) return bytes;
  WireText check;
  check.Look(bytes);
  return check.lines_fit() ? bytes : InCharset(FitLines(*this, text));
}

}  // namespace quillcast::message
