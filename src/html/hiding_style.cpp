#include "html/hiding_style.h"

#include <algorithm>
#include <array>
#include <string>

#include "platform/text.h"

namespace quillcast::html {
namespace {

// "max-height:0" is how previews are kept out of sight where "display" is not obeyed.
enum Property : std::size_t { kDisplay, kVisibility, kOpacity, kMaxHeight, kOverflow, kProperties };
constexpr std::array<std::string_view, kProperties> kNames = {"display", "visibility", "opacity", "max-height",
                                                              "overflow"};
// Values that hide, and those that readers know beside them, between blanks. Where there are none of those a number may
// stand, or "none", or what is calculated.
struct Values {
  std::string_view hiding;
  std::string_view others;
};
constexpr std::string_view kOfAround = " inherit initial unset revert ";
constexpr std::array<Values, kProperties> kValues = {{
    {" none ",
     " block inline inline-block list-item table inline-table table-cell table-row table-row-group table-header-group "
     "table-footer-group table-column table-column-group table-caption flex inline-flex grid inline-grid flow-root "
     "contents run-in "},
    {" hidden ", " visible collapse "},
    {" 0 ", ""},
    {" 0 0px ", ""},
    {" hidden clip ", " visible scroll auto "},
}};

bool IsAmong(std::string_view words, std::string_view word) {
  return !word.empty() && word.find(' ') == std::string_view::npos &&
         words.find(" " + std::string(word) + " ") != std::string_view::npos;
}

// What this property says, in small letters: true where it hides, nothing where no reader takes it.
std::optional<bool> Hides(const Values& values, const std::string& value) {
  if (IsAmong(values.hiding, value)) return true;
  if (IsAmong(values.others, value) || IsAmong(kOfAround, value)) return false;
  if (!values.others.empty() || value.empty()) return {};
  const bool is_number = std::string_view("0123456789.+-").find(value[0]) != std::string_view::npos;
  return is_number || value == "none" || value.ends_with(')') ? std::optional(false) : std::nullopt;
}

// The style in pieces, without comments: what stands in a string or in brackets ends no piece and begins no comment.
template <typename Take>
void EachPiece(std::string_view style, Take take) {
  std::string piece;
  char quote = 0;
  std::size_t brackets = 0;
  for (std::size_t at = 0; at < style.size(); ++at) {
    const char c = style[at];
    if (quote == 0 && brackets == 0 && style.substr(at).starts_with("/*")) {
      const std::size_t end = style.find("*/", at + 2);
      if (end == std::string_view::npos) break;
      at = end + 1;
      piece += ' ';
      continue;
    }
    if (quote == 0 && brackets == 0 && c == ';') {
      take(piece);
      piece.clear();
      continue;
    }
    if (c == quote) {
      quote = 0;
    } else if (quote == 0 && (c == '"' || c == '\'')) {
      quote = c;
    } else if (quote == 0 && c == '(') {
      ++brackets;
    } else if (quote == 0 && c == ')' && brackets > 0) {
      --brackets;
    }
    piece += c;
  }
  take(piece);
}

class Said {
 public:
  void Take(std::string_view piece) {
    const std::size_t colon = piece.find(':');
    if (colon == std::string_view::npos) return;
    const std::string name = platform::AsciiLower(platform::Trim(piece.substr(0, colon)));
    const auto found = std::ranges::find(kNames, name);
    if (found == kNames.end()) return;
    const std::size_t mark = std::min(piece.find('!', colon), piece.size());
    const bool is_important = mark < piece.size();
    if (is_important && !platform::EqualsIgnoringAsciiCase(platform::Trim(piece.substr(mark + 1)), "important")) return;
    const auto property = static_cast<std::size_t>(found - kNames.begin());
    const auto hides =
        Hides(kValues.at(property), platform::AsciiLower(platform::Trim(piece.substr(colon + 1, mark - colon - 1))));
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
  std::array<One, kProperties> ones_;
};

}  // namespace

SaidDisplay SaidDisplayOf(std::string_view style) {
  Said said;
  EachPiece(style, [&said](std::string_view piece) { said.Take(piece); });
  return said.Finish();
}

}  // namespace quillcast::html
