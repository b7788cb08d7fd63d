// The tokens of a page without those of elements that say by themselves that they are not displayed.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "html/html_tokenizer.h"
#include "html/open_elements.h"

namespace quillcast::html {

class ShownTokens {
 public:
  // Whether elements of a name are looked at; the others stay with all that is in them.
  using Names = bool (*)(std::string_view name);
  // `page` must outlive it. Without `names` all are looked at.
  explicit ShownTokens(HtmlTokenizer& page, Names names = nullptr) : page_(page), names_(names) {}

  // The next that is displayed; false at the end. An element that is not is passed over as far as it goes.
  bool Next(HtmlToken& token);

 private:
  bool IsHidden(const HtmlToken& token) const;
  bool Start(const HtmlToken& token);
  bool End(const HtmlToken& token);
  void ForgetEnded();

  HtmlTokenizer& page_;
  Names names_;
  OpenElements open_;
  std::vector<std::size_t> hidden_;  // the places of the open elements that hide, each further in than the one before
};

}  // namespace quillcast::html
