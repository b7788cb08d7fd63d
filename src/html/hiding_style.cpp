#include "html/hiding_style.h"

#include <algorithm>
#include <array>
#include <string>

#include "html/characters.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

// "max-height:0" is how previews are kept out of sight where "display" is not obeyed.
enum Property : std::size_t { kDisplay, kVisibility, kOpacity, kMaxHeight, kOverflow, kHidingProperties };
constexpr std::array<std::string_view, kHidingProperties> kPropertyNames = {"display", "visibility", "opacity",
                                                                            "max-height", "overflow"};
// Values that hide, and those that readers know beside them, between blanks. Where there are none of those a number may
// stand, or "none", or what is calculated.
struct Values {
  std::string_view hiding;
  std::string_view others;
};
constexpr std::string_view kOfAround = " inherit initial unset revert ";
constexpr std::array<Values, kHidingProperties> kValues = {{
    {" none ",
     " block inline inline-block list-item table inline-table table-cell table-row table-row-group table-header-group "
     "table-footer-group table-column table-column-group table-caption flex inline-flex grid inline-grid flow-root "
     "contents run-in -webkit-box -webkit-flex "},
    {" hidden ", " visible collapse "},
    {" 0 ", ""},
    {" 0 0px ", ""},
    {" hidden clip auto scroll ", " visible "},
}};

bool HoldsWord(std::string_view words, std::string_view word) {
  return !word.empty() && word.find(' ') == std::string_view::npos &&
         words.find(" " + std::string(word) + " ") != std::string_view::npos;
}

// What this property says, in small letters: true where it hides, nothing where no reader takes it.
std::optional<bool> Hides(const Values& values, const std::string& value) {
  if (HoldsWord(values.hiding, value)) return true;
  if (HoldsWord(values.others, value) || HoldsWord(kOfAround, value)) return false;
  if (!values.others.empty() || value.empty()) return {};
  const std::size_t unit = value.find_first_not_of("0123456789.+-");
  const bool is_number = unit == std::string::npos || value.substr(unit) == "%";
  const bool is_length = unit != 0 && values.hiding.ends_with("px ");
  return is_number || is_length || value == "none" || value.ends_with(')') ? std::optional(false) : std::nullopt;
}

// The style in pieces, without comments: what stands in a string or in brackets ends no piece, and in a string or an
// address no comment begins (CSS Syntax 3, 4.3).
class Pieces {
 public:
  explicit Pieces(std::string_view style) : style_(style) {}

  // The next, false at the end.
  bool Next(std::string& piece) {
    piece.clear();
    if (style_.empty()) return false;
    while (!style_.empty()) {
      const char c = style_[0];
      if (c == '\\') {
        Take(piece, 2);
      } else if (until_ != 0) {
        if (c == until_ || (c == '\n' && until_ != ')')) until_ = 0;
        Take(piece, 1);
      } else if (style_.starts_with("/*")) {
        const std::size_t end = style_.find("*/", 2);
        style_.remove_prefix(end == std::string_view::npos ? style_.size() : end + 2);
        piece += ' ';
      } else if (c == ';' && brackets_ == 0) {
        style_.remove_prefix(1);
        return true;
      } else {
        Begin(piece, c);
        Take(piece, 1);
      }
    }
    return true;
  }

 private:
  void Begin(std::string_view piece, char c) {
    if (c == '"' || c == '\'') until_ = c;
    if (c == ')' && brackets_ > 0) --brackets_;
    if (c != '(') return;
    const std::size_t next = style_.find_first_not_of(kSpaces, 1);
    const bool is_quoted = next != std::string_view::npos && (style_[next] == '"' || style_[next] == '\'');
    const bool is_address =
        piece.size() >= 3 && platform::EqualsIgnoringAsciiCase(piece.substr(piece.size() - 3), "url");
    if (is_address && !is_quoted) {
      until_ = ')';
    } else {
      ++brackets_;
    }
  }

  void Take(std::string& piece, std::size_t count) {
    piece += style_.substr(0, count);
    style_.remove_prefix(std::min(count, style_.size()));
  }

  std::string_view style_;
  char until_ = 0;  // the end of a string or an address
  std::size_t brackets_ = 0;
};

class Said {
 public:
  void Take(std::string_view piece) {
    const std::size_t colon = piece.find(':');
    if (colon == std::string_view::npos) return;
    const std::string name = platform::AsciiLower(platform::Trim(piece.substr(0, colon)));
    const auto found =
        std::ranges::find(kPropertyNames, std::string_view(name).substr(0, name.starts_with("overflow-") ? 8 : 100));
    if (found == kPropertyNames.end()) return;
    const std::size_t mark = std::min(piece.find('!', colon), piece.size());
    const bool is_important = mark < piece.size();
    if (is_important && !platform::EqualsIgnoringAsciiCase(platform::Trim(piece.substr(mark + 1)), "important")) return;
    const auto property = static_cast<std::size_t>(found - kPropertyNames.begin());
    std::string value = platform::AsciiLower(platform::Trim(piece.substr(colon + 1, mark - colon - 1)));
    if (property == kOverflow) value.resize(std::min(value.find(' '), value.size()));  // of both ways either does
    const auto hides = Hides(kValues.at(property), value);
    One& one = ones_.at(property);
    if (!hides || (one.is_important && !is_important)) return;
    one = {hides, is_important};
  }

  SaidDisplay Finish() const {
    const auto hides = [this](Property property) { return ones_.at(property).hides.value_or(false); };
    SaidDisplay said;
    said.hides = hides(kDisplay) || hides(kVisibility) || hides(kOpacity) || (hides(kMaxHeight) && hides(kOverflow));
    if (const auto none = ones_[kDisplay].hides) said.is_shown = !*none;
    return said;
  }

 private:
  struct One {
    std::optional<bool> hides;
    bool is_important = false;
  };
  std::array<One, kHidingProperties> ones_;
};

}  // namespace

SaidDisplay SaidDisplayOf(std::string_view style) {
  Said said;
  Pieces pieces(style);
  for (std::string piece; pieces.Next(piece);) said.Take(piece);
  return said.Finish();
}

}  // namespace quillcast::html
