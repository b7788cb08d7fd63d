#include "charset/code_page.h"

#include "charset/charset.h"
#include "platform/locale_codeset.h"

namespace quillcast::charset {

std::size_t AppendInCodePage(std::string& out, std::string_view text, std::string_view code_page) {
  const auto set = platform::IsUtf8Codeset(code_page) ? std::nullopt : FindCharset(code_page);
  std::size_t lost = 0;
  if (set && !set->IsUtf8()) {
    set->Encode(text, out, &lost);
  } else {
    out += text;
  }
  return lost;
}

}  // namespace quillcast::charset
