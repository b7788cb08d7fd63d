#include "html/safe_css.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "html/style_values.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

// Looked for in each piece as a whole, whatever strings and brackets it holds: readers of CSS differ in where those
// end, and a piece is kept only if it is harmless in each reading.
constexpr std::array kHarmful = {"url",     "src",        "image",    "@import", "expression", "behavior",
                                 "binding", "cross-fade", "element(", "\\",      "<",          "namespace"};

bool IsHarmless(std::string_view piece) {
  const std::string lower = platform::AsciiLower(piece);
  return std::none_of(kHarmful.begin(), kHarmful.end(),
                      [&](const char* word) { return lower.find(word) != std::string::npos; });
}

// Anew, so that nothing of the piece is kept.
std::string ColourOfGround(std::string_view piece) {
  const std::size_t colon = std::min(piece.find(':'), piece.size());
  if (!platform::EqualsIgnoringAsciiCase(platform::Trim(piece.substr(0, colon)), "background")) return {};
  const auto colour = ReadColour(GroundIn(platform::Trim(piece.substr(std::min(colon + 1, piece.size())))));
  const std::size_t mark = std::min(piece.rfind('!'), piece.size() - 1);
  const bool outweighs = platform::EqualsIgnoringAsciiCase(platform::Trim(piece.substr(mark + 1)), "important");
  return colour ? fmt::format("background-color:#{:06x}{}", *colour, outweighs ? " !important" : "") : std::string();
}

std::string WithoutComments(std::string_view css) {
  std::string out;
  out.reserve(css.size());
  while (!css.empty()) {
    const std::size_t comment = std::min(css.find("/*"), css.size());
    out += css.substr(0, comment);
    css.remove_prefix(comment);
    if (css.empty()) break;
    out += ' ';  // "@im/**/port" is two words
    const std::size_t end = css.find("*/", 2);
    css.remove_prefix(end == std::string_view::npos ? css.size() : end + 2);
  }
  return out;
}

}  // namespace

std::string SafeCss(std::string_view css) {
  const std::string plain = WithoutComments(css);
  std::string out;
  for (std::string_view rest = plain; !rest.empty();) {
    const std::size_t end = std::min(rest.find_first_of(";{}"), rest.size());
    const std::string_view piece = rest.substr(0, end);
    out += IsHarmless(piece) ? std::string(piece) : ColourOfGround(piece);
    if (end < rest.size()) out += rest[end];
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return out;
}

}  // namespace quillcast::html
