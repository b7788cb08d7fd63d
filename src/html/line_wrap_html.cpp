#include <algorithm>
#include <optional>

#include "html/characters.h"
#include "html/html_tokenizer.h"
#include "html/line_wrap.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::html {
namespace {

bool KeepsBlanks(std::string_view name) { return name == "pre" || name == "listing"; }

// True when an inline style or a style sheet in the source gives white-space a value that keeps blanks apart from line
// ends. Which elements it reaches is not worked out.
bool SetsWhiteSpace(std::string_view html) {
  constexpr std::string_view kProperty = "white-space";
  constexpr std::size_t kLongestValue = 100;
  const std::string lower = platform::AsciiLower(html);
  for (std::size_t at = lower.find(kProperty); at != std::string::npos; at = lower.find(kProperty, at + 1)) {
    std::string_view rest = std::string_view(lower).substr(at + kProperty.size(), kLongestValue);
    rest = rest.substr(0, rest.find_first_of(";}\"'<"));
    const std::string_view value = rest.substr(std::min(rest.find(':'), rest.size()));
    if (value.find("pre") != std::string_view::npos || value.find("break-spaces") != std::string_view::npos)
      return true;
  }
  return false;
}

// Every break replaces a blank, so that offsets into the source are offsets into the result.
class HtmlWrapper {
 public:
  HtmlWrapper(std::string_view html, std::size_t width)
      : tokenizer_(html), out_(html), width_(width), text_breaks_(!SetsWhiteSpace(html)) {}

  std::string Run() && {
    HtmlToken token;
    bool in_textarea = false;
    while (tokenizer_.Next(token)) {
      const bool is_tag = token.kind == HtmlTokenKind::kStartTag || token.kind == HtmlTokenKind::kEndTag;
      if (is_tag) {
        PassTag(token);
      } else {
        const bool running = token.kind == HtmlTokenKind::kText && kept_depth_ == 0 && !in_textarea;
        Pass(token.end, running && text_breaks_);
      }
      in_textarea = token.kind == HtmlTokenKind::kStartTag && token.name == "textarea";
    }
    return std::move(out_);
  }

 private:
  struct Place {
    std::size_t at;
    std::size_t column_after;
  };

  void PassTag(const HtmlToken& token) {
    for (const HtmlAttribute& attribute : token.attributes) {
      Pass(attribute.name_begin - 1, false);
      Pass(attribute.name_begin, true);
    }
    Pass(token.end, false);
    if (!KeepsBlanks(token.name)) return;
    if (token.kind == HtmlTokenKind::kStartTag) {
      ++kept_depth_;
    } else if (kept_depth_ > 0) {
      --kept_depth_;
    }
  }

  // Goes on to `end`; with `breaks`, a line may end at any blank on the way.
  void Pass(std::size_t end, bool breaks) {
    while (at_ < end) {
      const auto [code, length] = platform::DecodeUtf8(std::string_view(out_).substr(at_));
      if (code == '\n') {
        BeginLine(0);
      } else {
        PassCharacter(code, breaks && IsBlank(out_[at_]));
      }
      at_ += length;
    }
  }

  void PassCharacter(char32_t code, bool is_place) {
    if (is_place && !in_indentation_) place_ = Place{at_, column_ + 1};
    if (!IsBlank(out_[at_])) in_indentation_ = false;
    column_ += code == '\t' ? 1 : DisplayColumns(code);
    if (column_ <= width_ || !place_) return;
    out_[place_->at] = '\n';
    BeginLine(column_ - place_->column_after);
  }

  void BeginLine(std::size_t column) {
    column_ = column;
    in_indentation_ = column == 0;
    place_.reset();
  }

  HtmlTokenizer tokenizer_;
  std::string out_;
  std::size_t width_;
  bool text_breaks_;
  std::size_t kept_depth_ = 0;  // how many elements that keep blanks are open
  std::size_t at_ = 0;
  std::size_t column_ = 0;
  bool in_indentation_ = true;
  std::optional<Place> place_;  // the last one of this line
};

}  // namespace

std::string WrapHtml(std::string_view html, std::size_t width) { return HtmlWrapper(html, width).Run(); }

}  // namespace quillcast::html
