#include "document/table_html.h"

#include <fmt/format.h>

#include "platform/text.h"

namespace quillcast::document {
namespace {

struct Rule {
  const std::string TableChoice::*field;
  std::int64_t lowest;
  const char* name;
  TableBox box;
};

constexpr auto kRules = std::to_array<Rule>({
    {&TableChoice::border, 1, "border", TableBox::kBorder},
    {&TableChoice::spacing, 0, "spacing", TableBox::kSpacing},
    {&TableChoice::padding, 0, "padding", TableBox::kPadding},
    {&TableChoice::rows, 1, "row", TableBox::kRows},
    {&TableChoice::columns, 1, "column", TableBox::kColumns},
});
constexpr std::int64_t kHighest = 99;

std::string Repeated(const std::string& text, const std::string& times) {
  std::string repeated;
  for (auto left = platform::WholeNumberBetween(times, 1, kHighest).value_or(0); left > 0; --left) repeated += text;
  return repeated;
}

}  // namespace

std::optional<Complaint<TableBox>> CheckTable(const TableChoice& choice) {
  for (const Rule& rule : kRules) {
    const std::string& text = choice.*rule.field;
    if (text.empty()) return Complaint<TableBox>{fmt::format("Please enter your {}.", rule.name), rule.box};
    if (!platform::WholeNumberBetween(text, rule.lowest, kHighest)) {
      return Complaint<TableBox>{fmt::format("Please enter a valid {}.", rule.name), rule.box};
    }
  }
  return {};
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
