// One line for the wire: a type that cannot hold what would end the line early and start another command.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quillcast::smtp {

class SmtpLine {
 public:
  // Nothing when the text holds CR, LF, NUL or another control character.
  static std::optional<SmtpLine> From(std::string text) {
    const auto is_control = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
    if (std::any_of(text.begin(), text.end(), is_control)) return {};
    return SmtpLine(std::move(text));
  }

  // Without the line end.
  const std::string& text() const { return text_; }

 private:
  explicit SmtpLine(std::string text) : text_(std::move(text)) {}
  std::string text_;
};

}  // namespace quillcast::smtp
