#include "html/said_colours.h"

#include "html/old_colour.h"
#include "html/style_values.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

void Hear(SaidColours& said, std::string_view property, std::string_view value) {
  if (property == "color") {
    const auto colour = ReadColour(value);
    const bool is_of_around = platform::EqualsIgnoringAsciiCase(value, "inherit");
    if (colour || is_of_around) said.letters = colour;
    if (colour || is_of_around) said.has_letters_of_around = is_of_around;
    return;
  }
  const bool is_whole = property == "background";
  if (is_whole || property == "background-color") {
    if (const auto colour = ReadColour(GroundIn(value))) said.ground = colour;
  }
  if (is_whole || property == "background-image") said.has_picture = said.has_picture || NamesPicture(value);
}

}  // namespace

std::optional<std::uint32_t> ReadAttributeColour(std::string_view value) {
  value = platform::Trim(value);
  const auto colour = ReadColour(value);
  return colour || !value.starts_with('#') ? colour : ReadColour(OldColour(value));
}

SaidColours SaidColoursOf(const HtmlTokenizer& page, const HtmlToken& tag, bool hears_ground) {
  SaidColours said;
  if (tag.attributes.empty()) return said;
  if (tag.name == "font") said.letters = ReadAttributeColour(page.Value(tag, "color"));
  if (tag.name == "body") said.letters = ReadAttributeColour(page.Value(tag, "text"));
  if (hears_ground) {
    said.ground = ReadAttributeColour(page.Value(tag, "bgcolor"));
    said.has_picture = !page.Value(tag, "background").empty();
  }
  EachDeclaration(page.Value(tag, "style"),
                  [&](std::string_view property, std::string_view value) { Hear(said, property, value); });
  return said;
}

}  // namespace quillcast::html
