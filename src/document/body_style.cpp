#include "document/body_style.h"

#include "html/style_values.h"

namespace quillcast::document {
namespace {

// Where the declaration has the colour, a part of the style; a whole background may have a picture beside it.
std::string_view ColourOf(StyledColour which, std::string_view property, std::string_view value) {
  if (which == StyledColour::kText) return property == "color" ? value : std::string_view();
  if (property == "background-color") return value;
  return property == "background" ? html::GroundIn(value) : std::string_view();
}

}  // namespace

std::optional<std::string> StyleColour(std::string_view style, StyledColour which) {
  std::optional<std::string> found;
  html::EachDeclaration(style, [&](std::string_view property, std::string_view value) {
    const std::string_view colour = ColourOf(which, property, value);
    if (!colour.empty()) found = html::ReadColour(colour) ? std::string(colour) : std::string();
  });
  return found;
}

std::string WithStyleColour(std::string_view style, StyledColour which, std::string_view colour) {
  const std::string_view none = which == StyledColour::kText ? "inherit" : "transparent";
  std::string out;
  std::size_t at = 0;
  html::EachDeclaration(style, [&](std::string_view property, std::string_view value) {
    const std::string_view old = ColourOf(which, property, value);
    if (old.empty()) return;
    const auto begin = static_cast<std::size_t>(old.data() - style.data());
    out += style.substr(at, begin - at);
    out += colour.empty() ? none : colour;
    at = begin + old.size();
  });
  out += style.substr(at);
  return out;
}

}  // namespace quillcast::document
