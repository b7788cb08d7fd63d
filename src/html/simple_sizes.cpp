#include "html/simple_sizes.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string_view>

#include "html/style_values.h"

namespace quillcast::html {
namespace {

constexpr double kMostPointsMeant = 75;  // that people mean

struct Step {
  std::string_view name;
  double times;
};
// Of the size around it (WHATWG HTML 15.3.6 and 15.3.4).
constexpr std::array kSteps = {Step{"h1", 2},    Step{"h2", 1.5},  Step{"h3", 1.17},       Step{"h4", 1},
                               Step{"h5", 0.83}, Step{"h6", 0.67}, Step{"small", 5.0 / 6}, Step{"big", 1.2}};

constexpr double kPointsOfPixel = 0.75;

// Whole points where they are, else those of the nearest pixel. Never in pixels: where a size in another unit stands
// around it, the view goes by that one.
std::string InWords(double points) {
  if (points == std::floor(points) && points > 0) return fmt::format("{:.0f}pt", points);
  return fmt::format("{}pt", static_cast<double>(std::max(std::lround(points / kPointsOfPixel), 1L)) * kPointsOfPixel);
}

// By what it is.
std::optional<double> StepOf(const HtmlTokenizer& page, const HtmlToken& tag, double around) {
  const auto* const step = std::ranges::find(kSteps, std::string_view(tag.name), &Step::name);
  if (step != kSteps.end()) return around * step->times;
  const auto size = tag.name == "font" ? ReadFontSize(page.Value(tag, "size")) : std::nullopt;
  return size ? std::optional(kUsualPoints * *size / kUsualHalfPoints) : std::nullopt;
}

}  // namespace

LetterSize SizeWithin(const HtmlTokenizer& page, const HtmlToken& tag, const LetterSize& around) {
  LetterSize size = around;
  const auto step = StepOf(page, tag, around.points);
  const auto set = [&](double points, std::string value) {
    if (points <= kMostPointsMeant) size = {points, std::move(value)};
  };
  if (step) set(*step, around.value.empty() ? "" : InWords(*step));
  EachDeclaration(page.Value(tag, "style"), [&](std::string_view property, std::string_view value) {
    const auto points = property == "font-size" ? ReadPoints(value, around.points, kUsualPoints) : std::nullopt;
    if (!points) return;
    const bool is_usual = around.value.empty() && !step && *points == kUsualPoints;
    set(*points, is_usual ? "" : InWords(*points));
  });
  return size;
}

}  // namespace quillcast::html
