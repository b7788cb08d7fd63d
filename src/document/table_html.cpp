#include "document/table_html.h"

#include <fmt/format.h>

#include "document/number_rules.h"
#include "platform/text.h"

namespace quillcast::document {
namespace {

constexpr std::int64_t kHighest = 99;
constexpr auto kTableRules = std::to_array<NumberRule<TableChoice, TableBox>>({
    {&TableChoice::border, "border", TableBox::kBorder, 1, kHighest, Digits::kWithFraction},
    {&TableChoice::spacing, "spacing", TableBox::kSpacing, 0, kHighest, Digits::kWithFraction},
    {&TableChoice::padding, "padding", TableBox::kPadding, 0, kHighest, Digits::kWithFraction},
    {&TableChoice::rows, "row", TableBox::kRows, 1, kHighest, Digits::kWhole},
    {&TableChoice::columns, "column", TableBox::kColumns, 1, kHighest, Digits::kWhole},
});

std::string Repeated(const std::string& text, const std::string& times) {
  std::string repeated;
  for (auto left = platform::WholeNumberBetween(times, 1, kHighest).value_or(0); left > 0; --left) repeated += text;
  return repeated;
}

}  // namespace

std::optional<Complaint<TableBox>> CheckTable(const TableChoice& choice) {
  return CheckNumbers<TableChoice, TableBox>(choice, kTableRules);
}

std::string TableHtml(const TableChoice& choice) {
  std::string html = "<Table";
  if (!choice.align.empty()) html += fmt::format(" align=\"{}\"", choice.align);
  html += fmt::format(" cellspacing=\"{}\" cellpadding=\"{}\" border=\"{}\" width={}{}>\r\n", choice.spacing,
                      choice.padding, choice.border, choice.width, choice.in_percent ? "%" : "");
  const std::string cells = Repeated("      <TD>&nbsp;</TD>\r\n", choice.columns);
  html += Repeated("   <TR>\r\n" + cells + "   </TR>\r\n", choice.rows);
  return html + "</Table>\r\n";
}

}  // namespace quillcast::document
