#include "html/table_shapes.h"

#include <algorithm>
#include <utility>

#include "html/html_tokenizer.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::int64_t kLongestSpan = 1000;  // columns
constexpr std::size_t kMostCells = 20'000;

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
    std::size_t width = 0;  // of the row, in columns
    std::size_t widest = 0;
    bool has_long_spans = false;
  };

  void Start(const HtmlTokenizer& page, const HtmlToken& token) {
    if (token.name == "table") {
      open_.push_back({shapes_.size()});
      shapes_.emplace_back();
    } else if (!open_.empty() && token.name == "tr") {
      ++open_.back().rows;
      open_.back().cells = open_.back().width = 0;
    } else if (!open_.empty() && (token.name == "td" || token.name == "th")) {
      AddCell(page, token, open_.back());
    }
  }

  void AddCell(const HtmlTokenizer& page, const HtmlToken& token, Open& table) {
    if (++table.cells > 1) shapes_[table.table].is_grid = true;
    const auto span = platform::WholeNumberBetween(page.Value(token, "colspan"), 1, kLongestSpan);
    table.width += static_cast<std::size_t>(span.value_or(1));
    table.widest = std::max(table.widest, table.width);
    table.has_long_spans = table.has_long_spans ||
                           std::any_of(token.attributes.begin(), token.attributes.end(),
                                       [&](const HtmlAttribute& attribute) { return IsLongSpan(page, attribute); });
  }

  void Close() {
    const Open& table = open_.back();
    const std::size_t cells = table.rows * table.widest;
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
