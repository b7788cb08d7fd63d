// The tokens of a page without those of elements that say by themselves that they are not displayed.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "html/html_tokenizer.h"

namespace quillcast::html {

class ShownTokens {
 public:
  // Whether elements of a name are looked at; the others stay with all that is in them.
  using Names = bool (*)(std::string_view name);
  // `page` must outlive it. Without `names` all are looked at.
  explicit ShownTokens(HtmlTokenizer& page, Names names = nullptr) : page_(page), names_(names) {}

  // The next that is displayed; false at the end. An element that is not is passed over up to its end tag; where that
  // is missing, to what ends it as readers have it: the next item, cell or paragraph, or the end of an element around
  // it.
  bool Next(HtmlToken& token);

 private:
  bool IsHidden(const HtmlToken& token) const;
  bool EndsBefore(const HtmlToken& token);
  bool EndsBeforeStart(const HtmlToken& token);
  bool EndsBeforeEnd(const std::string& name);
  void Open(const HtmlToken& token);
  void CountDrawings(const HtmlToken& token);

  HtmlTokenizer& page_;
  Names names_;
  std::vector<std::string> open_;  // what is passed over, and what is open in it
  std::size_t too_deep_ = 0;       // that is open in those and not kept
  std::size_t drawings_ = 0;       // that are open
};

}  // namespace quillcast::html
