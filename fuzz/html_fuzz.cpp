// Any bytes taken for HTML: the tokens cover the source without gaps, the text is well set and not much longer,
// once the pictures are replaced none is left, what names files of this computer goes at once, and a page that is
// closed leaves what follows it as it is.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "html/closed_page.h"
#include "html/html_to_text.h"
#include "html/html_tokenizer.h"
#include "html/local_names.h"
#include "html/local_pictures.h"
#include "html/simple_page.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quillcast::html;
  const std::string_view html(reinterpret_cast<const char*>(data), size);
  HtmlTokenizer tokenizer(html);
  HtmlToken token;
  std::size_t at = 0;
  while (tokenizer.Next(token)) {
    if (token.begin != at || token.end <= token.begin) std::abort();
    at = token.end;
  }
  if (at != size) std::abort();

  const std::string text = HtmlToText(html);
  if (!text.empty() && (text.front() == '\n' || text.back() != '\n')) std::abort();
  if (text.find(" \n") != std::string::npos || text.ends_with("\n\n")) std::abort();
  if (text.size() > 16 * size + 64) std::abort();

  if (Simplify(html, 65536).html.size() > 8 * size + 4096) std::abort();

  std::size_t end = 0;
  const auto pictures = FindLocalPictures(html);
  for (const PictureReference& picture : pictures) {
    if (picture.offset < end || picture.offset + picture.length > size) std::abort();
    end = picture.offset + picture.length;
  }
  if (RewriteReferences(html, pictures, std::vector<std::string>(pictures.size())) != html) std::abort();
  const std::string sent = RewriteReferences(html, pictures, std::vector<std::string>(pictures.size(), "cid:x"));
  if (pictures.size() < 1000 && !FindLocalPictures(sent).empty()) std::abort();

  if (!HtmlToText(ClosedPage(html) + "<p>zq</p>").ends_with("zq\n")) std::abort();

  const std::string nameless = WithoutLocalNames(html);
  if (WithoutLocalNames(nameless) != nameless) std::abort();
  return 0;
}
