#include "document/line_html.h"

#include <fmt/format.h>

#include "document/number_rules.h"
#include "platform/text.h"

namespace quillcast::document {
namespace {

constexpr auto kLineRules = std::to_array<NumberRule<LineChoice, LineBox>>({
    {&LineChoice::width, "width", LineBox::kWidth, 0, 100, Digits::kWhole},
    {&LineChoice::height, "height", LineBox::kHeight, 0, 100, Digits::kWithFraction},
});

}  // namespace

std::optional<Complaint<LineBox>> CheckLine(const LineChoice& choice) {
  return CheckNumbers<LineChoice, LineBox>(choice, kLineRules);
}

std::string LineHtml(const LineChoice& choice) {
  std::string html = "<hr";
  if (choice.align == "Left" || choice.align == "Right") {
    html += fmt::format(" align=\"{}\"", platform::AsciiLower(choice.align));
  }
  if (choice.is_solid) html += " noshade";
  if (choice.unit == "Pixels") {
    html += fmt::format(" width=\"{}\"", choice.width);
  } else if (choice.width != "100") {
    html += fmt::format(" width=\"{}%\"", choice.width);
  }
  if (choice.height != "2") html += fmt::format(" size=\"{}\"", choice.height);
  return html + ">";
}

}  // namespace quillcast::document
