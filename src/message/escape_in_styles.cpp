#include "message/escape_in_styles.h"

#include <fmt/format.h>

#include <cstdint>

#include "html/html_tokenizer.h"
#include "platform/utf8.h"

namespace quillcast::message {
namespace {

class StyleEscaper final : public html::HtmlVisitor {
 public:
  StyleEscaper(std::string_view html, const charset::Charset& charset) : html_(html), charset_(charset) {}

  std::string Run() && {
    html::VisitTagsAndStyles(html_, *this);
    out_ += html_.substr(done_);
    return std::move(out_);
  }

 private:
  void StartTag(const html::HtmlTokenizer& tokenizer, const html::HtmlToken& token) override {
    const auto* const style = tokenizer.Find(token, "style");
    if (style == nullptr) return;
    const std::string_view css = tokenizer.RawValue(*style);
    const std::string_view before = html_.substr(0, PlaceOf(css));
    Escape(css, before.ends_with('"') || before.ends_with("'"));
  }

  void StyleSheet(std::string_view css) override { Escape(css, true); }

  std::size_t PlaceOf(std::string_view part) const { return static_cast<std::size_t>(part.data() - html_.data()); }

  // `css` is a part of the page. The blank that ends an escape would end an attribute without quotes; six digits need
  // none where no blank of the text can follow.
  void Escape(std::string_view css, bool may_hold_blanks) {
    if (platform::IsAscii(css)) return;
    const std::size_t begin = PlaceOf(css);
    out_ += html_.substr(done_, begin - done_);
    done_ = begin + css.size();
    bool escaped = false;  // a backslash stands before, and takes the next character
    while (!css.empty()) {
      const auto [code, length] = platform::DecodeUtf8(css);
      const auto letter = css.substr(0, length);
      css.remove_prefix(length);
      if (CanHold(letter)) {
        out_ += letter;
      } else {
        if (!escaped) out_ += '\\';
        const auto number = static_cast<std::uint32_t>(code);
        out_ += may_hold_blanks ? fmt::format("{:X} ", number) : fmt::format("{:06X}", number);
      }
      escaped = letter == "\\" && !escaped;
    }
  }

  bool CanHold(std::string_view letter) {
    if (letter.size() == 1) return true;
    scratch_.clear();
    return charset_.Encode(letter, scratch_, nullptr, charset::Unmapped::kFail);
  }

  std::string_view html_;
  const charset::Charset& charset_;
  std::string out_;
  std::size_t done_ = 0;  // how much of the page is in it
  std::string scratch_;
};

}  // namespace

std::string EscapeInStyles(std::string_view html, const charset::Charset& charset) {
  if (charset.IsUtf8() || platform::IsAscii(html)) return std::string(html);
  return StyleEscaper(html, charset).Run();
}

}  // namespace quillcast::message
