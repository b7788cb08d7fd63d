// What words of a simple page stand in and on.
#pragma once

#include <cstdint>
#include <optional>

#include "html/said_colours.h"

namespace quillcast::html {

// What the view is to show links in that say no colour, as 0xRRGGBB.
inline constexpr std::uint32_t kLinkInk = 0x0B57D0;

// 0xRRGGBB; black on paper where nothing is said.
struct WordColours {
  std::uint32_t letters = 0;
  std::uint32_t ground = 0xFFFFFF;
  bool are_over_picture = false;  // of the page, which is not painted
};

// In an element, of those around it.
WordColours ColoursWithin(const SaidColours& said, const WordColours& around, bool is_link);

// Black or white, for words that nobody would see where they stand; nothing where they are seen.
std::optional<std::uint32_t> InkInstead(const WordColours& colours);

}  // namespace quillcast::html
