// How well one colour is told from another.
#pragma once

#include <cstdint>

namespace quillcast::html {

// From 1, of the same, to 21, of black and white (WCAG 2.1, "contrast ratio"). Colours are 0xRRGGBB.
double ContrastOf(std::uint32_t one, std::uint32_t other);

// Whether letters are seen on what is written behind them. Over a picture of the page, which is not written, it is not
// known what they stood on: then they have to be read.
bool AreSeen(std::uint32_t letters, std::uint32_t ground, bool are_over_picture);

}  // namespace quillcast::html
