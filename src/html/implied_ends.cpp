#include "html/implied_ends.h"

#include <algorithm>
#include <array>

#include "html/html_elements.h"

namespace quillcast::html {
namespace {

// Words between blanks.
struct Row {
  std::string_view open;
  std::string_view starts;
};
constexpr auto kEnds = std::to_array<Row>({
    {" li ", " li "},
    {" dt dd ", " dt dd "},
    {" td th ", " td th tr tbody thead tfoot "},
    {" tr ", " tr tbody thead tfoot "},
    {" tbody thead tfoot ", " tbody thead tfoot "},
    {" caption colgroup ", " caption colgroup td th tr tbody thead tfoot "},
    {" option ", " option optgroup "},
    {" optgroup ", " optgroup "},
    {" rt rp ", " rt rp "},
    {" a ", " a "},
    {" h1 h2 h3 h4 h5 h6 ", " h1 h2 h3 h4 h5 h6 "},
});
constexpr auto kKeep = std::to_array<Row>({
    {" ul ol menu dir ", " li "},
    {" dl ", " dt dd "},
    {" select ", " option optgroup "},
    {" ruby ", " rt rp "},
});
constexpr std::string_view kWalls = " td th caption button object ";

bool IsAmong(std::string_view words, std::string_view name) {
  for (std::size_t at = words.find(name); at != std::string_view::npos; at = words.find(name, at + 1)) {
    if (at > 0 && words[at - 1] == ' ' && words[at + name.size()] == ' ') return true;
  }
  return false;
}

template <typename Rows>
bool Has(const Rows& rows, std::string_view open, std::string_view start) {
  return std::ranges::any_of(rows,
                             [&](const Row& row) { return IsAmong(row.open, open) && IsAmong(row.starts, start); });
}

}  // namespace

bool EndsAt(std::string_view open, std::string_view start) {
  if (open == "p") return IsBlock(RoleOf(start)) && !IsPartOfTable(start);
  return Has(kEnds, open, start);
}

bool KeepsWithin(std::string_view open, std::string_view start) {
  if (open == "table") return true;
  return Has(kKeep, open, start) || (!IsPartOfTable(start) && IsAmong(kWalls, open));
}

bool IsPartOfTable(std::string_view name) { return IsAmong(" td th tr tbody thead tfoot caption colgroup col ", name); }

}  // namespace quillcast::html
