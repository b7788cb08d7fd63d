// One line for the wire: a type that cannot hold what would end the line early and start another command.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quillcast::smtp {

// How long it is, is not looked at.
class SmtpLine {
 public:
  // Words that stand in this program: what they hold is checked when they are compiled, as From does for others.
  consteval SmtpLine(const char* words) : words_(words) {  // NOLINT(google-explicit-constructor)
    if (HoldsControl(words_)) throw "a line of SMTP holds no control characters";
  }
  // Nothing when the text holds CR, LF, NUL or another control character.
  static std::optional<SmtpLine> From(std::string text) {
    if (HoldsControl(text)) return {};
    return SmtpLine(std::move(text));
  }
  // In decimal digits.
  static SmtpLine Of(std::uint64_t number) { return SmtpLine(std::to_string(number)); }

  // This, a blank, and `more`.
  SmtpLine Then(const SmtpLine& more) const {
    std::string joined(text());
    joined.append(1, ' ').append(more.text());
    return SmtpLine(std::move(joined));
  }

  // Without the line end.
  std::string_view text() const { return built_ ? std::string_view(*built_) : words_; }

 private:
  explicit SmtpLine(std::string text) : built_(std::move(text)) {}
  static constexpr bool HoldsControl(std::string_view text) {
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
  }

  std::string_view words_;  // of those that stand in this program
  std::optional<std::string> built_;
};

}  // namespace quillcast::smtp
