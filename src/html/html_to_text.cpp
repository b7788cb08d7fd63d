#include "html/html_to_text.h"

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "html/hidden_element.h"
#include "html/html_elements.h"
#include "html/html_link.h"
#include "html/html_list.h"
#include "html/html_tokenizer.h"
#include "html/text_layout.h"

namespace quillcast::html {
namespace {

using Margin = TextLayout::Margin;

// What is nested deeper stands beside the innermost instead, as in browsers.
constexpr std::size_t kMostOpen = 500;

class Reader {
 public:
  explicit Reader(std::string_view html) : tokenizer_(html), layout_(html.size()) {}

  std::string Run() {
    HtmlToken token;
    while (tokenizer_.Next(token)) {
      if (hidden_.active() && !hidden_.Skip(token)) continue;
      if (token.kind == HtmlTokenKind::kStartTag) {
        Start(token);
      } else if (token.kind == HtmlTokenKind::kEndTag) {
        End(token);
      } else if (!dropping_ && token.kind == HtmlTokenKind::kText) {
        AddEncoded(tokenizer_.Source(token));
      } else if (!dropping_ && token.kind == HtmlTokenKind::kRawText) {
        AddText(tokenizer_.Source(token));
      }
      after_pre_ = token.kind == HtmlTokenKind::kStartTag && token.name == "pre";
    }
    CloseLink();
    return std::move(layout_).Finish();
  }

 private:
  // An element that is closed by its end tag or by that of one around it.
  struct Open {
    HtmlRole role;
    std::size_t line_before = 0;   // the number of the line above it
    std::size_t cells = 0;         // of a row, so far; of a table, in its last row
    std::int64_t next_number = 1;  // of a numbered list
    std::string numerals = {};     // its "type"
  };

  void AddText(std::string_view text) {
    if (in_link_) link_text_ += text;
    if (OpenCount(HtmlRole::kPreformatted) == 0) return layout_.AddText(text);
    // A line end right after <pre> is not part of its text.
    if (after_pre_ && text.starts_with("\r\n")) text.remove_prefix(1);
    if (after_pre_ && text.starts_with('\n')) text.remove_prefix(1);
    layout_.AddPreformatted(text);
  }

  void AddEncoded(std::string_view text) {
    text.find('&') == std::string_view::npos ? AddText(text) : AddText(DecodeCharacterReferences(text));
  }

  void AddDescription(const HtmlToken& token) { AddText(ReadableDescription(tokenizer_.Value(token, "alt"))); }

  std::size_t OpenCount(HtmlRole role) const { return open_counts_[static_cast<std::size_t>(role)]; }

  void Push(HtmlRole role) {
    while (role != HtmlRole::kRow && open_.size() >= kMostOpen) Pop();  // a row stays with its table
    open_.push_back({role, layout_.line_number()});
    ++open_counts_[static_cast<std::size_t>(role)];
  }

  void Pop() {
    const Open closed = std::move(open_.back());
    const bool one_line = layout_.line_number() - closed.line_before == 1;
    open_.pop_back();
    --open_counts_[static_cast<std::size_t>(closed.role)];
    if (closed.role == HtmlRole::kItem || closed.role == HtmlRole::kQuotation ||
        closed.role == HtmlRole::kDescription) {
      layout_.PopPrefix();
    }
    if (closed.role == HtmlRole::kRow) {
      open_.back().cells = closed.cells;  // rows are in tables
      if (closed.cells > 1 && one_line) layout_.CloseUp();
    }
    if (closed.role == HtmlRole::kItem && one_line) layout_.CloseUp();
    layout_.ReleaseBlocks();
    layout_.Block(MarginOf(closed.role));
    // A row of several lines arranges the page.
    if (closed.role == HtmlRole::kRow && layout_.line_number() - closed.line_before > 1) {
      layout_.Block(Margin::kBlankLine);
    }
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
    if (IsHidden(tokenizer_, token)) {
      if (!HasNoContent(token.name)) hidden_.Begin(token);
      return;
    }
    if (IsStacked(role)) return StartStacked(role, token);
    if (role == HtmlRole::kCell) return StartCell();
    if (role == HtmlRole::kBreak) return layout_.Break();
    if (role == HtmlRole::kPicture) return AddDescription(token);
    if (role == HtmlRole::kQuote) return AddText("\"");
    if (role == HtmlRole::kLink) return OpenLink(token);
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
    layout_.ReleaseBlocks();
    layout_.Block(MarginOf(role));
    if (role == HtmlRole::kItem) PushItemPrefix(token);
    if (role == HtmlRole::kQuotation) layout_.PushPrefix("> ", "> ");
    if (role == HtmlRole::kDescription) layout_.PushPrefix("  ", "  ");
    Push(role);
    if (role == HtmlRole::kItem) layout_.HoldBlocks();
    if (role == HtmlRole::kNumbered) {
      open_.back().next_number = ListNumber(tokenizer_.Value(token, "start"), 1);
      open_.back().numerals = tokenizer_.Value(token, "type").substr(0, 2);
    }
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

  void PopToTable() {
    while (open_.back().role != HtmlRole::kTable) Pop();
  }

  void StartRow() {
    layout_.Block(Margin::kLine);
    if (OpenCount(HtmlRole::kTable) == 0) return;
    PopToTable();
    Push(HtmlRole::kRow);
  }

  void StartCell() {
    if (OpenCount(HtmlRole::kTable) == 0) return layout_.Block(Margin::kLine);
    while (open_.back().role != HtmlRole::kRow && open_.back().role != HtmlRole::kTable) Pop();
    if (open_.back().role == HtmlRole::kTable) StartRow();
    Open& row = open_.back();
    const std::size_t lines = layout_.line_number() - row.line_before;
    // Cells of one line share it. One that is longer, as in a table that only arranges the page, stays a block.
    if (row.cells > 0 && lines == 1) layout_.CellGap();
    if (row.cells > 0 && lines > 1) layout_.Block(Margin::kBlankLine);
    const std::size_t cells_above = open_[open_.size() - 2].cells;
    if (row.cells > 0 ? lines == 1 : cells_above > 1) layout_.HoldBlocks();
    ++row.cells;
  }

  void End(const HtmlToken& token) {
    dropping_ = false;
    const HtmlRole role = RoleOf(token.name);
    if (role == HtmlRole::kLink) return CloseLink();
    if (role == HtmlRole::kQuote) return AddText("\"");
    if (token.name == "p" || token.name == "br")
      return token.name == "p" ? layout_.Block(Margin::kBlankLine) : layout_.Break();
    if (token.name == "dl") PopIfInnermost(HtmlRole::kDescription);
    if (IsStacked(role)) return PopThrough(role);
    if (IsBlock(role) && role != HtmlRole::kCell) layout_.Block(MarginOf(role));
  }

  void OpenLink(const HtmlToken& token) {
    std::string target = ReadableTarget(tokenizer_.Value(token, "href"));
    if (target == link_target_ && NothingOfLink()) in_link_ = false;
    CloseLink();
    link_target_ = std::move(target);
    in_link_ = !link_target_.empty();
    size_before_link_ = layout_.size();
  }

  // A part of a picture that is a link of its own.
  void StartArea(const HtmlToken& token) {
    layout_.Block(Margin::kLine);
    OpenLink(token);
    AddDescription(token);
    CloseLink();
    layout_.Block(Margin::kLine);
  }

  bool NothingOfLink() const { return layout_.size() == size_before_link_; }

  void CloseLink() {
    if (!in_link_) return;
    in_link_ = false;
    const std::string text = std::exchange(link_text_, {});
    if (NothingOfLink()) {
      if (link_target_ == shown_target_ || NextLinkLeadsToo()) return;
      layout_.AddText('<' + link_target_ + '>');
    } else if (!SaysTarget(text, link_target_)) {
      layout_.AppendToLine(" <" + link_target_ + '>');
    }
    shown_target_ = link_target_;
  }

  // Whether the next link leads to the same place, as the headline below a picture. Looks no further than that link, so
  // that no part of the source is looked at more than twice.
  bool NextLinkLeadsToo() const {
    HtmlTokenizer ahead = tokenizer_;
    HtmlToken token;
    while (ahead.Next(token)) {
      if (token.kind != HtmlTokenKind::kStartTag || (token.name != "a" && token.name != "area")) continue;
      return ReadableTarget(ahead.Value(token, "href")) == link_target_;
    }
    return false;
  }

  HtmlTokenizer tokenizer_;
  TextLayout layout_;
  HiddenElement hidden_;
  std::vector<Open> open_;
  std::array<std::size_t, kStackedRoles> open_counts_{};
  std::string link_target_;
  std::string link_text_;
  std::string shown_target_;  // the last one
  std::size_t size_before_link_ = 0;
  bool in_link_ = false;
  bool dropping_ = false;
  bool after_pre_ = false;
};

}  // namespace

std::string HtmlToText(std::string_view html) { return Reader(html).Run(); }

}  // namespace quillcast::html
