// Words that their own letters keep out of sight: the line that mailings have for the lists of mail programs.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "html/html_tokenizer.h"

namespace quillcast::html {

class HiddenWords {
 public:
  // Whether letters without a colour count: not in a page that no longer says what else is drawn in their place.
  enum class Transparency { kHides, kMayBeDrawn };
  // Of this page, which outlives it.
  explicit HiddenWords(std::string_view page, Transparency transparency = Transparency::kHides)
      : page_(page), transparency_(transparency) {}

  // Each start and end tag that is displayed, in their order.
  void Take(const HtmlTokenizer& page, const HtmlToken& tag);
  // Whether this text, as the page has it, is not seen where it stands: its letters have no size, or one of a pixel, or
  // let all through. Where a style sheet may say otherwise it is seen: in a block, link or element with a class within,
  // and wherever the page has a sheet that speaks of such a thing at all. Blanks hold their place.
  bool Hold(std::string_view text) const;

 private:
  struct Letters {
    bool are_too_small = false;
    bool have_no_size = false;  // which none that is reckoned from it has either
    bool are_transparent = false;
  };
  struct Open {
    std::string name;
    Letters letters;
  };
  static Letters LettersWithin(const HtmlTokenizer& page, const HtmlToken& tag, Letters letters);
  // What the page says something of beside the elements' own sizes and colours.
  struct Sheets {
    bool say_sizes = false;
    bool say_colours = false;
  };
  static Sheets ReadSheets(std::string_view page);
  void Start(const HtmlTokenizer& page, const HtmlToken& tag);
  void End(const std::string& name);

  std::string_view page_;
  Transparency transparency_;
  std::optional<Sheets> sheets_;  // once something would hide
  std::vector<Open> open_;        // from one that hides on
};

}  // namespace quillcast::html
