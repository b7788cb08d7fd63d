#include "html/office_fields.h"

#include "html/html_tokenizer.h"
#include "html/local_name.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

bool IsOfPathPart(char c) {
  return platform::AsciiIsAlnum(c) || std::string_view("._-%()").find(c) != std::string_view::npos ||
         static_cast<unsigned char>(c) >= 0x80;
}

// The folders of a path are parted by two backslashes there ("Pictures\\x.png"); one begins what is no path
// ("\* MERGEFORMAT").
bool HoldsPartedPath(std::string_view text) {
  constexpr std::string_view kParting = "\\\\";
  for (std::size_t at = text.find(kParting); at != std::string_view::npos; at = text.find(kParting, at + 1)) {
    const std::size_t behind = at + kParting.size();
    if (at > 0 && behind < text.size() && IsOfPathPart(text[at - 1]) && IsOfPathPart(text[behind])) return true;
  }
  return false;
}

}  // namespace

bool BeginsFields(std::string_view comment) {
  std::string begin(comment);
  std::erase_if(begin, [](char c) { return static_cast<unsigned char>(c) <= ' '; });
  return platform::EqualsIgnoringAsciiCase(begin, "<!--[ifsupportFields]>");
}

bool FieldsNameFile(std::string_view fields, std::span<const std::string> known) {
  const auto names_file = [&](std::string_view text) { return NamesLocalFile(text, known) || HoldsHomeFolder(text); };
  HtmlTokenizer tokens(fields);
  HtmlToken token;
  std::string together;
  while (tokens.Next(token)) {
    if (token.kind != HtmlTokenKind::kText) continue;
    const std::string text = DecodeCharacterReferences(tokens.Source(token));
    if (names_file(text)) return true;
    together += text;
  }
  return names_file(together) || HoldsPartedPath(together);
}

}  // namespace quillcast::html
