#include "html/table_shapes.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>

#include "html/html_tokenizer.h"
#include "html/safe_page.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::int64_t kLongestSpan = 1000;  // columns or rows
constexpr std::size_t kMostCells = 20'000;

// The largest of that name: the view takes the last of several.
std::size_t SpanOf(const HtmlTokenizer& page, const HtmlToken& token, std::string_view name) {
  std::int64_t span = 1;
  for (const HtmlAttribute& attribute : token.attributes) {
    if (!platform::EqualsIgnoringAsciiCase(page.RawName(attribute), name)) continue;
    const std::string value = DecodeCharacterReferences(page.RawValue(attribute), true);
    span = std::max(span, platform::WholeNumberBetween(platform::Trim(value), 1, kLongestSpan).value_or(1));
  }
  return static_cast<std::size_t>(span);
}

class ShapeFinder {
 public:
  std::vector<TableShape> Find(std::string_view html) {
    HtmlTokenizer page(html);
    HtmlToken token;
    while (page.Next(token)) {
      if (token.kind == HtmlTokenKind::kEndTag && token.name == "table" && !open_.empty()) Close();
      if (token.kind == HtmlTokenKind::kStartTag) Start(page, token);
    }
    while (!open_.empty()) Close();
    return std::move(shapes_);
  }

 private:
  struct Open {
    std::size_t table;
    std::size_t rows = 1;
    std::size_t cells = 0;  // of the row
    std::size_t width = 0;  // of the row, in columns, with those that cells of earlier rows reach into
    std::size_t widest = 0;
    std::size_t claimed = 0;                                  // that cells say they take, also below the last row
    std::size_t reaching = 0;                                 // columns of the next row that are taken
    std::unordered_map<std::size_t, std::size_t> ended = {};  // of those, by the row before which they end
    bool has_long_spans = false;
  };

  void Start(const HtmlTokenizer& page, const HtmlToken& token) {
    if (token.name == "table") {
      open_.push_back({shapes_.size()});
      shapes_.emplace_back();
    } else if (!open_.empty() && token.name == "tr") {
      StartRow(open_.back());
    } else if (!open_.empty() && (token.name == "td" || token.name == "th")) {
      AddCell(page, token, open_.back());
    }
  }

  static void StartRow(Open& table) {
    ++table.rows;
    if (const auto ended = table.ended.find(table.rows); ended != table.ended.end()) table.reaching -= ended->second;
    table.cells = 0;
    table.width = table.reaching;
  }

  void AddCell(const HtmlTokenizer& page, const HtmlToken& token, Open& table) {
    if (++table.cells > 1) shapes_[table.table].is_grid = true;
    const std::size_t columns = SpanOf(page, token, "colspan");
    const std::size_t rows = SpanOf(page, token, "rowspan");
    table.width += columns;
    table.claimed += columns * rows;
    if (rows > 1) {
      table.reaching += columns;
      table.ended[table.rows + rows] += columns;
    }
    table.widest = std::max(table.widest, table.width);
    table.has_long_spans = table.has_long_spans ||
                           std::any_of(token.attributes.begin(), token.attributes.end(),
                                       [&](const HtmlAttribute& attribute) { return IsLongSpan(page, attribute); });
  }

  void Close() {
    const Open& table = open_.back();
    const std::size_t cells = std::max(table.rows * table.widest, table.claimed);
    if (table.has_long_spans && cells <= room_) {
      shapes_[table.table].spans = Spans::kMany;
      room_ -= cells;
    }
    open_.pop_back();
  }

  std::vector<TableShape> shapes_;
  std::vector<Open> open_;
  std::size_t room_ = kMostCells;
};

}  // namespace

std::vector<TableShape> TableShapesOf(std::string_view html) { return ShapeFinder().Find(html); }

}  // namespace quillcast::html
