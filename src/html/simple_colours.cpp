#include "html/simple_colours.h"

#include "html/colour_contrast.h"

namespace quillcast::html {

WordColours ColoursWithin(const SaidColours& said, const WordColours& around, bool is_link) {
  WordColours colours = around;
  if (is_link && !said.has_letters_of_around) colours.letters = kLinkInk;
  if (said.letters) colours.letters = *said.letters;
  if (said.ground || said.has_picture) colours.are_over_picture = !said.ground;
  if (said.ground) colours.ground = *said.ground;
  return colours;
}

std::optional<std::uint32_t> InkInstead(const WordColours& colours) {
  if (AreSeen(colours.letters, colours.ground, colours.are_over_picture)) return {};
  constexpr std::uint32_t kBlack = 0;
  constexpr std::uint32_t kWhite = 0xFFFFFF;
  const bool is_black = ContrastOf(kBlack, colours.ground) >= ContrastOf(kWhite, colours.ground);
  return is_black ? kBlack : kWhite;
}

}  // namespace quillcast::html
