#include "html/html_to_text.h"

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "html/hidden_words.h"
#include "html/html_elements.h"
#include "html/html_link.h"
#include "html/html_list.h"
#include "html/html_tokenizer.h"
#include "html/shown_tokens.h"
#include "html/text_layout.h"
#include "html/text_links.h"
#include "html/word_list.h"

namespace quillcast::html {
namespace {

using Margin = TextLayout::Margin;

// What is nested deeper stands beside the innermost instead, as in browsers.
constexpr std::size_t kMostOpenInText = 500;

// A line of a page's arrangement that is longer is a paragraph, not a line of an address or of a list of facts.
constexpr std::size_t kLongestFact = 60;

class ReaderToText {
 public:
  ReaderToText(std::string_view html, std::size_t columns)
      : tokenizer_(html), layout_(html.size(), columns), hidden_words_(html) {}

  std::string Run() {
    HtmlToken token;
    while (shown_.Next(token)) {
      if (token.kind == HtmlTokenKind::kStartTag) {
        Start(token);
      } else if (token.kind == HtmlTokenKind::kEndTag) {
        dropping_ = false;
        hidden_words_.Take(tokenizer_, token);
        if (!word_list_.End(token)) End(token);
      } else if (!dropping_ && token.kind == HtmlTokenKind::kText) {
        if (!hidden_words_.Hold(tokenizer_.Source(token))) AddEncoded(tokenizer_.Source(token));
      } else if (!dropping_ && token.kind == HtmlTokenKind::kRawText) {
        AddText(tokenizer_.Source(token));
      }
      after_pre_ = token.kind == HtmlTokenKind::kStartTag && token.name == "pre";
    }
    links_.Close();
    return std::move(layout_).Finish();
  }

 private:
  // An element that is closed by its end tag or by that of one around it.
  struct Open {
    HtmlRole role;
    std::size_t line_before = 0;   // the number of the line above it
    std::size_t cells = 0;         // of a row, so far; of a table, in its last row
    std::size_t filled = 0;        // of those of a row, how many hold something
    std::size_t size_before = 0;   // of the text, before the last cell
    bool has_headings = false;     // of a row; of a table, when a row of its own holds them: then it holds facts
    bool has_border = false;       // of a table
    std::int64_t next_number = 1;  // of a numbered list
    std::string numerals = {};     // its "type"
  };

  void AddText(std::string_view text) {
    if (word_list_.Text(text)) return;
    links_.Text(text);
    // "10^3" is not 103.
    const bool raised = std::exchange(is_raised_, false) && !text.empty() && text.front() >= '0' && text.front() <= '9';
    if (raised && layout_.ends_with_digit()) layout_.AddText("^");
    if (OpenCount(HtmlRole::kPreformatted) == 0) return layout_.AddText(text);
    // A line end right after <pre> is not part of its text.
    if (after_pre_ && text.starts_with("\r\n")) text.remove_prefix(1);
    if (after_pre_ && text.starts_with('\n')) text.remove_prefix(1);
    layout_.AddPreformatted(text);
  }

  void AddEncoded(std::string_view text) {
    text.find('&') == std::string_view::npos ? AddText(text) : AddText(DecodeCharacterReferences(text));
  }

  // A picture is no part of the words beside it.
  void AddDescription(const HtmlToken& token) {
    const std::string description = ReadableDescription(tokenizer_.Value(token, "alt"));
    if (description.empty()) return;
    layout_.EndWord();
    AddText(description);
    layout_.EndWord();
  }

  std::size_t OpenCount(HtmlRole role) const { return open_counts_[static_cast<std::size_t>(role)]; }

  void Push(HtmlRole role) {
    while (role != HtmlRole::kRow && open_.size() >= kMostOpenInText) Pop();  // a row stays with its table
    open_.push_back({.role = role, .line_before = layout_.line_number(), .size_before = layout_.size()});
    ++open_counts_[static_cast<std::size_t>(role)];
  }

  void Pop() {
    Open closed = std::move(open_.back());
    const std::size_t lines = layout_.line_number() - closed.line_before;
    open_.pop_back();
    --open_counts_[static_cast<std::size_t>(closed.role)];
    if (closed.role == HtmlRole::kItem || closed.role == HtmlRole::kQuotation ||
        closed.role == HtmlRole::kDescription) {
      layout_.PopPrefix();
    }
    if (closed.role == HtmlRole::kItem && lines == 1) layout_.CloseUp();
    if (closed.role == HtmlRole::kRow) return EndRow(std::move(closed), lines);
    layout_.ReleaseBlocks();
    layout_.Block(closed.role == HtmlRole::kTable && lines > 1 ? Margin::kBlankLine : MarginOf(closed.role));
  }

  // A row of several lines arranges the page, and so does a single long one that is not one of a table of facts.
  void EndRow(Open row, std::size_t lines) {
    Open& table = open_.back();  // rows are in tables
    CountCell(row);
    table.cells = row.cells;
    if (row.cells > 1 && lines == 1) layout_.CloseUp();
    if (row.has_headings && row.filled > 1 && lines == 1) table.has_headings = true;
    layout_.ReleaseBlocks();
    const bool has_facts = table.has_headings || table.has_border;
    const bool is_paragraph = lines == 1 && row.filled == 1 && !has_facts && layout_.line_size() > kLongestFact;
    if (is_paragraph) layout_.SetLineApart();
    layout_.Block(lines > 1 || is_paragraph ? Margin::kBlankLine : Margin::kLine);
  }

  void CountCell(Open& row) {
    if (layout_.size() > row.size_before) ++row.filled;
    row.size_before = layout_.size();
  }

  // Each element is popped once, so that all these searches together take linear time.
  void PopThrough(HtmlRole role) {
    if (OpenCount(role) == 0) return;
    while (open_.back().role != role) Pop();
    Pop();
  }

  void PopIfInnermost(HtmlRole role) {
    if (!open_.empty() && open_.back().role == role) Pop();
  }

  Margin MarginOf(HtmlRole role) const {
    const bool list = role == HtmlRole::kBulleted || role == HtmlRole::kNumbered;
    if (list) return OpenCount(HtmlRole::kItem) == 0 ? Margin::kBlankLine : Margin::kLine;
    const bool apart = role == HtmlRole::kQuotation || role == HtmlRole::kPreformatted ||
                       role == HtmlRole::kParagraph || role == HtmlRole::kHeading || role == HtmlRole::kRule;
    return apart ? Margin::kBlankLine : Margin::kLine;
  }

  void Start(const HtmlToken& token) {
    const HtmlRole role = RoleOf(token.name);
    dropping_ = role == HtmlRole::kDropped;
    if (dropping_) return;
    hidden_words_.Take(tokenizer_, token);
    if (word_list_.Start(tokenizer_, token)) return;
    is_raised_ = token.name == "sup";
    if (IsStacked(role)) return StartStacked(role, token);
    if (role == HtmlRole::kCell) return StartCell(token);
    if (role == HtmlRole::kBreak) return IsAmongFacts() ? layout_.AddText(" ") : layout_.Break();
    if (role == HtmlRole::kPicture) return AddDescription(token);
    if (role == HtmlRole::kQuote) return AddText("\"");
    if (role == HtmlRole::kLink) return links_.Open(token);
    if (role == HtmlRole::kArea) return StartArea(token);
    if (!IsBlock(role) && role != HtmlRole::kRule) return;
    if (token.name == "dt") PopIfInnermost(HtmlRole::kDescription);
    if (role == HtmlRole::kHeading || role == HtmlRole::kRule) layout_.ReleaseBlocks();
    layout_.Block(MarginOf(role));
    if (role != HtmlRole::kRule) return;
    layout_.AddText("----");
    layout_.Block(MarginOf(role));
  }

  void StartStacked(HtmlRole role, const HtmlToken& token) {
    if (role == HtmlRole::kRow) return StartRow();
    if (role == HtmlRole::kItem || role == HtmlRole::kDescription) PopIfInnermost(role);
    const bool is_list = role == HtmlRole::kBulleted || role == HtmlRole::kNumbered;
    if (is_list && IsItemOfOneLine()) layout_.CloseUp();
    const bool has_border = role == HtmlRole::kTable && HasBorder(token);
    const bool stands_apart = has_border || (role == HtmlRole::kTable && BeginsRowBelowOthers());
    layout_.ReleaseBlocks();
    layout_.Block(stands_apart ? Margin::kBlankLine : MarginOf(role));
    if (role == HtmlRole::kItem) PushItemPrefix(token);
    if (role == HtmlRole::kQuotation) layout_.PushPrefix("> ", "> ");
    if (role == HtmlRole::kDescription) layout_.PushPrefix("  ", "  ");
    Push(role);
    open_.back().has_border = has_border;
    if (role == HtmlRole::kItem) layout_.HoldBlocks();
    if (role == HtmlRole::kNumbered) {
      open_.back().next_number = ListNumber(tokenizer_.Value(token, "start"), 1);
      open_.back().numerals = tokenizer_.Value(token, "type").substr(0, 2);
    }
  }

  // In a cell of a table of facts, whose rows are lines.
  bool IsAmongFacts() const {
    return !open_.empty() && open_.back().role == HtmlRole::kRow && open_[open_.size() - 2].has_headings;
  }

  // Nothing stands in this row of a table yet, and something in the rows above it.
  bool BeginsRowBelowOthers() const {
    if (open_.empty() || open_.back().role != HtmlRole::kRow) return false;
    const Open& row = open_.back();
    const Open& table = open_[open_.size() - 2];
    return row.filled == 0 && layout_.size() == row.size_before && layout_.size() > table.size_before;
  }

  bool HasBorder(const HtmlToken& token) const {
    const HtmlAttribute* const border = tokenizer_.Find(token, "border");
    return border != nullptr && tokenizer_.RawValue(*border) != "0";
  }

  // A list within an item follows its line at once.
  bool IsItemOfOneLine() const {
    return !open_.empty() && open_.back().role == HtmlRole::kItem &&
           layout_.line_number() - open_.back().line_before == 1;
  }

  void PushItemPrefix(const HtmlToken& token) {
    const std::string marker = Marker(token);
    layout_.PushPrefix(marker, std::string(marker.size(), ' '));
  }

  // What stands before a list item.
  std::string Marker(const HtmlToken& token) {
    if (open_.empty() || open_.back().role != HtmlRole::kNumbered) return "- ";
    Open& list = open_.back();
    list.next_number = ListNumber(tokenizer_.Value(token, "value"), list.next_number);
    return ListNumeral(list.next_number++, list.numerals) + ". ";
  }

  void StartRow() {
    layout_.Block(Margin::kLine);
    if (OpenCount(HtmlRole::kTable) == 0) return;
    while (open_.back().role != HtmlRole::kTable) Pop();
    Push(HtmlRole::kRow);
  }

  void StartCell(const HtmlToken& token) {
    if (OpenCount(HtmlRole::kTable) == 0) return layout_.Block(Margin::kLine);
    while (open_.back().role != HtmlRole::kRow && open_.back().role != HtmlRole::kTable) Pop();
    if (open_.back().role == HtmlRole::kTable) StartRow();
    Open& row = open_.back();
    CountCell(row);
    const Open& table = open_[open_.size() - 2];
    if (token.name == "th") row.has_headings = true;
    const std::size_t lines = layout_.line_number() - row.line_before;
    // Cells of one line share it. One that is longer, as in a table that only arranges the page, stays a block.
    if (row.cells > 0 && lines == 1) layout_.CellGap();
    if (row.cells > 0 && lines > 1) layout_.Block(Margin::kBlankLine);
    if (row.cells > 0 ? lines == 1 : table.cells > 1) layout_.HoldBlocks();
    ++row.cells;
  }

  void End(const HtmlToken& token) {
    is_raised_ = false;
    const HtmlRole role = RoleOf(token.name);
    if (role == HtmlRole::kLink) return links_.Close();
    if (role == HtmlRole::kQuote) return AddText("\"");
    if (token.name == "p" || token.name == "br")
      return token.name == "p" ? layout_.Block(Margin::kBlankLine) : layout_.Break();
    if (token.name == "div") layout_.EndFiller();
    if (token.name == "dl") PopIfInnermost(HtmlRole::kDescription);
    if (IsStacked(role)) return PopThrough(role);
    if (IsBlock(role) && role != HtmlRole::kCell) layout_.Block(MarginOf(role));
  }

  // A part of a picture that is a link of its own.
  void StartArea(const HtmlToken& token) {
    layout_.Block(Margin::kLine);
    links_.Open(token);
    AddDescription(token);
    links_.Close();
    layout_.Block(Margin::kLine);
  }

  HtmlTokenizer tokenizer_;
  ShownTokens shown_{tokenizer_};
  TextLayout layout_;
  TextLinks links_{tokenizer_, layout_};
  WordList word_list_{layout_};
  HiddenWords hidden_words_;
  std::vector<Open> open_;
  std::array<std::size_t, kStackedRoles> open_counts_{};
  bool dropping_ = false;
  bool after_pre_ = false;
  bool is_raised_ = false;  // between <sup> and its text
};

}  // namespace

std::string HtmlToText(std::string_view html, std::size_t columns) { return ReaderToText(html, columns).Run(); }

}  // namespace quillcast::html
