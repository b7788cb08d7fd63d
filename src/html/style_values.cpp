#include "html/style_values.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "html/colour_names.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

struct Size {
  std::string_view name;
  int half_points;
};
constexpr std::array kSizes = {Size{"xx-small", 14}, Size{"x-small", 16}, Size{"small", 20},   Size{"medium", 24},
                               Size{"large", 28},    Size{"x-large", 36}, Size{"xx-large", 48}};
constexpr std::array kFontSizes = {16, 20, 24, 28, 36, 48, 72};  // of <font size=1> to 7

struct Family {
  std::string_view generic;
  std::string_view font;
};
constexpr std::array kFamilies = {Family{"sans-serif", "Arial"}, Family{"serif", "Times New Roman"},
                                  Family{"monospace", "Courier New"}};

constexpr int kSmallest = 2;
constexpr int kLargest = 800;
constexpr std::string_view kBlanks = " \t\r\n\f";
constexpr std::size_t kLongestGround = 4000;  // bytes
constexpr double kLeastCover = 0.5;           // of what is behind

// A number at the beginning, and what follows it; nothing where there is none.
std::optional<double> TakeNumber(std::string_view& text) {
  double number = 0;
  const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  if (failed != std::errc() || !std::isfinite(number)) return {};
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

std::optional<std::uint32_t> ReadHexadecimal(std::string_view digits) {
  std::uint32_t value = 0;
  const auto [end, failed] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (failed != std::errc() || end != digits.data() + digits.size()) return {};
  const bool is_short = digits.size() <= 4;
  if (digits.size() == 4 || digits.size() == 8) {  // with how much it covers
    const std::uint32_t most = is_short ? 15 : 255;
    if ((value & most) < most * kLeastCover) return {};
    value >>= is_short ? 4 : 8;
    digits.remove_suffix(is_short ? 1 : 2);
  }
  if (digits.size() == 6) return value;
  if (digits.size() != 3) return {};
  return (value >> 8) * 0x110000 + (value >> 4 & 15) * 0x1100 + (value & 15) * 0x11;
}

std::optional<std::uint32_t> ReadRgb(std::string_view text) {
  std::uint32_t value = 0;
  for (int i = 0; i < 3; ++i) {
    text.remove_prefix(std::min(text.find_first_of("0123456789"), text.size()));
    const auto number = TakeNumber(text);
    if (!number) return {};
    value = value << 8 | static_cast<std::uint32_t>(std::clamp(*number, 0.0, 255.0));
  }
  text.remove_prefix(std::min(text.find_first_of("0123456789."), text.size()));
  const auto cover = TakeNumber(text);
  if (cover && *cover < (text.starts_with('%') ? kLeastCover * 100 : kLeastCover)) return {};
  return value;
}

}  // namespace

void EachDeclaration(std::string_view style, const std::function<void(std::string_view, std::string_view)>& take) {
  while (!style.empty()) {
    const std::string_view declaration = style.substr(0, style.find(';'));
    style.remove_prefix(std::min(declaration.size() + 1, style.size()));
    const std::size_t colon = declaration.find(':');
    if (colon == std::string_view::npos) continue;
    const std::string property = platform::AsciiLower(platform::Trim(declaration.substr(0, colon)));
    const std::string_view value = declaration.substr(colon + 1);
    take(property, platform::Trim(value.substr(0, value.find('!'))));
  }
}

std::optional<std::uint32_t> ReadColour(std::string_view value) {
  const std::string lower = platform::AsciiLower(platform::Trim(value.substr(0, 100)));
  if (lower.starts_with('#')) return ReadHexadecimal(std::string_view(lower).substr(1));
  if (lower.starts_with("rgb")) return ReadRgb(lower);
  if (lower == "windowtext") return 0;
  if (const auto named = NamedColour(lower)) return named;
  return lower.size() == 6 ? ReadHexadecimal(lower) : std::nullopt;
}

std::string_view GroundIn(std::string_view value) {
  value = value.substr(0, kLongestGround);
  while (!value.empty()) {
    std::size_t end = 0;
    for (int depth = 0; end < value.size() && (depth > 0 || kBlanks.find(value[end]) == kBlanks.npos); ++end)
      depth += value[end] == '(' ? 1 : value[end] == ')' ? -1 : 0;
    if (ReadColour(value.substr(0, end))) return value.substr(0, end);
    value.remove_prefix(std::min(end + 1, value.size()));
  }
  return {};
}

bool NamesPicture(std::string_view value) {
  const std::string lower = platform::AsciiLower(value.substr(0, kLongestGround));
  return lower.find("url(") != std::string::npos || lower.find("gradient(") != std::string::npos;
}

std::optional<int> ReadLetterSize(std::string_view value, int current) {
  const std::string lower = platform::AsciiLower(platform::Trim(value.substr(0, 100)));
  const auto* const named = std::ranges::find(kSizes, std::string_view(lower), &Size::name);
  if (named != kSizes.end()) return named->half_points;
  std::string_view unit = lower;
  const auto number = TakeNumber(unit);
  if (!number || *number <= 0) return {};
  double half_points = 0;
  if (unit == "pt") half_points = *number * 2;
  if (unit == "px") half_points = *number * 1.5;
  if (unit == "em" || unit == "rem") half_points = *number * (unit == "em" ? current : 24);
  if (unit == "%") half_points = *number * current / 100;
  if (half_points == 0) return {};
  return static_cast<int>(std::lround(std::clamp(half_points, double{kSmallest}, double{kLargest})));
}

std::optional<int> ReadFontSize(std::string_view value) {
  value = platform::Trim(value.substr(0, 20));
  const bool is_relative = value.starts_with('+') || value.starts_with('-');
  const bool is_less = value.starts_with('-');
  const auto number = platform::ParseWholeNumber(is_relative ? value.substr(1) : value);
  if (!number) return {};
  const std::int64_t step = std::min<std::int64_t>(*number, 10);
  const std::int64_t size = is_relative ? 3 + (is_less ? -step : step) : step;
  return kFontSizes.at(static_cast<std::size_t>(std::clamp<std::int64_t>(size, 1, 7) - 1));
}

std::optional<int> ReadPixels(std::string_view value) {
  value = platform::Trim(value.substr(0, 20));
  const auto number = TakeNumber(value);
  const bool is_pixels = value.empty() || platform::EqualsIgnoringAsciiCase(value, "px");
  if (!number || !is_pixels || *number < 1 || *number > 100'000) return {};
  return static_cast<int>(*number);
}

std::string ReadFontFamily(std::string_view value) {
  std::string family;
  for (const char c : value.substr(0, value.find(','))) {
    if (platform::AsciiIsAlnum(c) || c == ' ' || c == '-') family += c;
  }
  family = platform::Trim(std::string_view(family).substr(0, 40));
  const auto* const generic = std::ranges::find_if(
      kFamilies, [&](const Family& row) { return platform::EqualsIgnoringAsciiCase(row.generic, family); });
  return generic == kFamilies.end() ? family : std::string(generic->font);
}

}  // namespace quillcast::html
