#include "html/style_values.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "html/characters.h"
#include "html/colour_names.h"
#include "html/html_css.h"
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

constexpr double kLeastPoints = 1;
constexpr double kMostPointsRead = 400;
constexpr double kStep = 1.2;  // from a size to a larger one
constexpr double kPixelsOfPoint = 4.0 / 3;
constexpr double kPixelsOfInch = 96;
struct Unit {
  std::string_view name;
  double pixels;
};
constexpr std::array kUnits = {Unit{"px", 1},
                               Unit{"pt", kPixelsOfPoint},
                               Unit{"in", kPixelsOfInch},
                               Unit{"cm", kPixelsOfInch / 2.54},
                               Unit{"mm", kPixelsOfInch / 25.4},
                               Unit{"pc", kPixelsOfInch / 6}};
constexpr std::string_view kUnitsOfHue = "d, ";  // degrees, by name or none
constexpr std::size_t kLongestGround = 4000;     // bytes
constexpr double kLeastCover = 0.5;              // of what is behind

// A number at the beginning, and what follows it; nothing where there is none.
std::optional<double> TakeNumber(std::string_view& text) {
  double number = 0;
  const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  if (failed != std::errc() || !std::isfinite(number)) return {};
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

// Of one of a fixed length; 0 for another.
double PixelsOf(std::string_view unit) {
  const auto* const known = std::ranges::find(kUnits, unit, &Unit::name);
  return known == kUnits.end() ? 0 : known->pixels;
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

// By what follows the three parts of a colour.
bool LetsThrough(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_of("0123456789."), text.size()));
  const auto cover = TakeNumber(text);
  return cover && *cover < (text.starts_with('%') ? kLeastCover * 100 : kLeastCover);
}

std::optional<std::uint32_t> ReadRgb(std::string_view text) {
  std::uint32_t value = 0;
  for (int i = 0; i < 3; ++i) {
    text.remove_prefix(std::min(text.find_first_of("0123456789"), text.size()));
    const auto number = TakeNumber(text);
    if (!number) return {};
    const double share = text.starts_with('%') ? *number * 2.55 : *number;
    value = value << 8 | static_cast<std::uint32_t>(std::lround(std::clamp(share, 0.0, 255.0)));
  }
  return LetsThrough(text) ? std::nullopt : std::optional(value);
}

// CSS Color 4, 7: "hsl(210deg, 50%, 40%)".
std::optional<std::uint32_t> ReadHsl(std::string_view text) {
  std::array<double, 3> parts = {};
  for (double& part : parts) {
    text.remove_prefix(std::min(text.find_first_of("0123456789.-"), text.size()));
    const auto number = TakeNumber(text);
    const bool is_other_angle = &part == parts.data() && kUnitsOfHue.find(text.substr(0, 1)) == std::string_view::npos;
    if (!number || is_other_angle) return {};
    part = *number;
  }
  if (LetsThrough(text)) return {};
  const double light = std::clamp(parts[2] / 100, 0.0, 1.0);
  const double most = std::clamp(parts[1] / 100, 0.0, 1.0) * std::min(light, 1 - light);
  std::uint32_t value = 0;
  for (const double turn : {0.0, 8.0, 4.0}) {
    const double place = std::fmod(std::fmod(turn + parts[0] / 30, 12) + 12, 12);
    const double share = light - most * std::clamp(std::min(place - 3, 9 - place), -1.0, 1.0);
    value = value << 8 | static_cast<std::uint32_t>(std::lround(share * 255));
  }
  return value;
}

using TakeDeclaration = std::function<void(std::string_view property, std::string_view value)>;

// Up to the next blank, which it takes away with the piece.
std::string_view TakePiece(std::string_view& value) {
  value = platform::Trim(value);
  const std::string_view piece = value.substr(0, value.find_first_of(kSpaces));
  value.remove_prefix(piece.size());
  value = platform::Trim(value);
  return piece;
}

// "italic bold 14px/1.5 Arial, serif": itself where it names no size that is read.
void EachOfFont(std::string_view value, const TakeDeclaration& take) {
  const std::string_view all = value;
  std::string_view style = "normal";
  std::string_view weight = "normal";
  while (!value.empty()) {
    const std::string_view piece = TakePiece(value);
    const std::string_view size = piece.substr(0, piece.find('/'));
    if (ReadLetterSize(size, kUsualHalfPoints)) {
      take("font-size", size);
      take("font-style", style);
      take("font-weight", weight);
      if (value.starts_with('/')) TakePiece(value = value.substr(1));
      if (piece.ends_with('/')) TakePiece(value);
      if (!value.empty()) take("font-family", value);
      return;
    }
    const bool is_weight = platform::StartsWithIgnoringAsciiCase(piece, "bold") || platform::ParseWholeNumber(piece);
    if (is_weight) weight = piece;
    if (platform::EqualsIgnoringAsciiCase(piece, "italic")) style = piece;
  }
  take("font", all);
}

// One to four: of what is at the top, right, bottom and left.
void EachOfMargin(std::string_view value, const TakeDeclaration& take) {
  std::array<std::string_view, 4> sides;
  std::size_t count = 0;
  while (!value.empty() && count < sides.size()) sides.at(count++) = TakePiece(value);
  if (count == 0) return;
  if (count == 1) sides[1] = sides[0];
  if (count <= 2) sides[2] = sides[0];
  if (count <= 3) sides[3] = sides[1];
  constexpr std::array<std::string_view, 4> kSides = {"margin-top", "margin-right", "margin-bottom", "margin-left"};
  for (std::size_t i = 0; i < kSides.size(); ++i) take(kSides.at(i), sides.at(i));
}

}  // namespace

void EachDeclaration(std::string_view style, const TakeDeclaration& take) {
  while (!style.empty()) {
    const std::string_view declaration = style.substr(0, style.find(';'));
    style.remove_prefix(std::min(declaration.size() + 1, style.size()));
    const std::size_t colon = declaration.find(':');
    if (colon == std::string_view::npos) continue;
    const std::string property = platform::AsciiLower(platform::Trim(declaration.substr(0, colon)));
    const std::string_view all = declaration.substr(colon + 1);
    const std::string_view value = platform::Trim(all.substr(0, all.find('!')));
    if (property == "font") {
      EachOfFont(value, take);
    } else if (property == "margin") {
      EachOfMargin(value, take);
    } else {
      take(property, value);
    }
  }
}

std::optional<std::uint32_t> ReadColour(std::string_view value) {
  const std::string lower = platform::AsciiLower(platform::Trim(value.substr(0, 100)));
  if (lower.starts_with('#')) return ReadHexadecimal(std::string_view(lower).substr(1));
  if (lower.starts_with("rgb")) return ReadRgb(lower);
  if (lower.starts_with("hsl")) return ReadHsl(lower);
  if (lower == "windowtext") return 0;
  if (const auto named = NamedColour(lower)) return named;
  return lower.size() == 6 ? ReadHexadecimal(lower) : std::nullopt;
}

std::string_view GroundIn(std::string_view value) {
  value = value.substr(0, kLongestGround);
  while (!value.empty()) {
    std::size_t end = 0;
    for (int depth = 0; end < value.size() && (depth > 0 || kSpaces.find(value[end]) == kSpaces.npos); ++end)
      depth += value[end] == '(' ? 1 : value[end] == ')' ? -1 : 0;
    if (ReadColour(value.substr(0, end))) return value.substr(0, end);
    value.remove_prefix(std::min(end + 1, value.size()));
  }
  return {};
}

bool NamesPicture(std::string_view value) {
  const std::string lower = platform::AsciiLower(value.substr(0, kLongestGround));
  return lower.find(kUrl) != std::string::npos || lower.find("gradient(") != std::string::npos;
}

std::optional<double> ReadPoints(std::string_view value, double current, double usual) {
  const std::string lower = platform::AsciiLower(platform::Trim(value.substr(0, 100)));
  const auto* const named = std::ranges::find(kSizes, std::string_view(lower), &Size::name);
  if (named != kSizes.end()) return usual * named->half_points / kUsualHalfPoints;
  if (lower == "larger") return std::min(current * kStep, kMostPointsRead);
  if (lower == "smaller") return std::max(current / kStep, kLeastPoints);
  std::string_view unit = lower;
  const auto number = TakeNumber(unit);
  if (!number || *number <= 0) return {};
  double points = *number * PixelsOf(unit) / kPixelsOfPoint;
  if (unit == "em" || unit == "rem") points = *number * (unit == "em" ? current : usual);
  if (unit == "%") points = *number * current / 100;
  if (points == 0) return {};
  return std::clamp(points, kLeastPoints, kMostPointsRead);
}

std::optional<int> ReadLetterSize(std::string_view value, int current) {
  const auto points = ReadPoints(value, current / 2.0, kUsualHalfPoints / 2.0);
  return points ? std::optional(static_cast<int>(std::lround(*points * 2))) : std::nullopt;
}

std::optional<double> ReadLength(std::string_view value, double current, double usual) {
  const std::string lower = platform::AsciiLower(platform::Trim(value.substr(0, 100)));
  std::string_view unit = lower;
  const auto number = TakeNumber(unit);
  if (!number) return {};
  if (unit.empty() && *number == 0) return 0;
  if (const double pixels = PixelsOf(unit); pixels > 0) return *number * pixels;
  if (unit == "em" || unit == "rem") return *number * kPixelsOfPoint * (unit == "em" ? current : usual);
  return {};
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
