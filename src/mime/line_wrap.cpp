#include "mime/line_wrap.h"

#include "mime/html_tokenizer.h"
#include "platform/utf8.h"

namespace quillcast::mime {
namespace {

std::size_t Columns(std::string_view text) {
  std::size_t count = 0;
  for (const char c : text) count += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  return count;
}

void AppendWrapped(std::string& out, std::string_view text, std::size_t width, std::size_t& column) {
  while (!text.empty()) {
    const bool line_end = text.front() == '\n';
    const bool blank = text.front() == ' ';
    if (line_end) {
      out += '\n';
      column = 0;
      text.remove_prefix(1);
      continue;
    }
    const auto word = text.substr(0, text.find_first_of(" \n", blank ? 1 : 0));
    const std::size_t columns = Columns(word);
    if (blank && column > 0 && column + columns > width && columns > 1) {
      out += '\n';
      out += word.substr(1);
      column = columns - 1;
    } else {
      out += word;
      column += columns;
    }
    text.remove_prefix(word.size());
  }
}

}  // namespace

std::string WrapText(std::string_view utf8, std::size_t width) {
  std::string out;
  std::size_t column = 0;
  AppendWrapped(out, utf8, width, column);
  return out;
}

std::string WrapHtml(std::string_view html, std::size_t width) {
  std::string out;
  std::size_t column = 0;
  HtmlTokenizer tokenizer(html);
  HtmlToken token;
  while (tokenizer.Next(token)) {
    const auto source = tokenizer.Source(token);
    if (token.kind == HtmlTokenKind::kText) {
      AppendWrapped(out, source, width, column);
    } else {
      out += source;
      column += Columns(source);
    }
  }
  return out;
}

}  // namespace quillcast::mime
