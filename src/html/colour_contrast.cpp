#include "html/colour_contrast.h"

#include <algorithm>
#include <cmath>

namespace quillcast::html {
namespace {

// What letters need to be seen, as the page has it, and to be read (WCAG 2.1, 1.4.3, of large ones).
constexpr double kLeastSeen = 1.2;
constexpr double kLeastRead = 3;

double LightOf(std::uint32_t colour) {
  const auto part = [&](unsigned shift) {
    const double value = (colour >> shift & 255) / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * part(16) + 0.7152 * part(8) + 0.0722 * part(0);
}

}  // namespace

double ContrastOf(std::uint32_t one, std::uint32_t other) {
  const auto [dark, light] = std::minmax({LightOf(one), LightOf(other)});
  return (light + 0.05) / (dark + 0.05);
}

bool AreSeen(std::uint32_t letters, std::uint32_t ground, bool are_over_picture) {
  return ContrastOf(letters, ground) >= (are_over_picture ? kLeastRead : kLeastSeen);
}

}  // namespace quillcast::html
