// How well one colour is told from another.
#pragma once

#include <cstdint>

namespace quillcast::html {

// From 1, of the same, to 21, of black and white (WCAG 2.1, "contrast ratio"). Colours are 0xRRGGBB.
double ContrastOf(std::uint32_t one, std::uint32_t other);

}  // namespace quillcast::html
