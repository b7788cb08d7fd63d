// Where a page names its pictures, whatever the addresses lead to.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "html/html_css.h"
#include "html/html_tokenizer.h"

namespace quillcast::html {

// `written` is a part of the page, without quotes and blanks round it; `address` is what it means once its references
// and escapes are resolved.
using TakePicture = std::function<void(std::string_view written, std::string address)>;

// Of a start tag: src, poster, background and srcset, and url() in its style, in the order of the source. Of one srcset
// the first 1,000 addresses count. Fonts and others that come by url() are among them.
void EachPictureOf(const HtmlTokenizer& page, const HtmlToken& tag, const TakePicture& take);

// Of a srcset: addresses without blanks, each with an optional description up to a comma.
void EachCandidate(std::string_view value, const TakePicture& take);

// Whether that looks at the attribute; both names in lower case.
bool NamesPictures(std::string_view element, std::string_view attribute);

// By url() in styles.
void EachPictureInStyles(std::string_view css, CssPlace place, const TakePicture& take);

}  // namespace quillcast::html
