// Any bytes taken for a page: as rich text its braces match and it is not much longer; made safe it names nothing to
// load, and is the same when it is made safe again.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "html/html_to_rtf.h"
#include "html/html_tokenizer.h"
#include "html/safe_page.h"
#include "platform/text.h"

using namespace quillcast::html;

namespace {

bool IsWhole(std::string_view rtf) {
  std::size_t depth = 0;
  for (std::size_t at = 0; at < rtf.size(); ++at) {
    if (rtf[at] == '\\') {
      ++at;
    } else if (rtf[at] == '{') {
      ++depth;
    } else if (rtf[at] == '}' && (depth == 0 || (--depth == 0 && at + 1 < rtf.size()))) {
      return false;
    }
  }
  return depth == 0;
}

class NothingLoads final : public HtmlVisitor {
 public:
  void StartTag(const HtmlTokenizer& tokenizer, const HtmlToken& token) override {
    if (token.name == "script" || token.name == "iframe" || token.name == "link") std::abort();
    for (const char* name : {"src", "background", "onload", "onerror", "srcset"}) {
      if (tokenizer.Find(token, name) != nullptr) std::abort();
    }
    StyleSheet(tokenizer.Value(token, "style"));
  }
  void StyleSheet(std::string_view css) override {
    if (quillcast::platform::AsciiLower(css).find("url") != std::string::npos) std::abort();
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view page(reinterpret_cast<const char*>(data), size);
  const auto find = [](std::string_view address) -> std::optional<RtfPictureSize> {
    return RtfPictureSize{static_cast<int>(address.size() % 5000) + 1, 10};
  };
  const RtfPage rtf = HtmlToRtf(page, find);
  if (!IsWhole(rtf.text) || rtf.text.size() > 150 * size + 65'536) std::abort();
  for (const RtfPicture& picture : rtf.pictures) {
    if (picture.twips.width < 1 || picture.twips.height < 1) std::abort();
  }
  const SafePageOptions plain{.picture = {}, .forbids_loading = false};
  const std::string safe = SafePage(page, plain);
  NothingLoads visitor;
  VisitTagsAndStyles(safe, visitor);
  if (SafePage(safe, plain) != safe) std::abort();
  return 0;
}
