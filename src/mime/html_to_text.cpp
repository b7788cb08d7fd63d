#include "mime/html_to_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "mime/html_tokenizer.h"
#include "mime/text_layout.h"
#include "platform/text.h"

namespace quillcast::mime {
namespace {

using Margin = TextLayout::Margin;

// What an element does to the text. The order of the kinds that are counted as open comes first.
enum class Role : std::uint8_t {
  kBulleted,
  kNumbered,
  kItem,
  kQuotation,
  kDescription,
  kPreformatted,
  kTable,
  kRow,  // stay on the stack until closed
  kCell,
  kLine,
  kParagraph,
  kHeading,
  kLink,
  kBreak,
  kRule,
  kPicture,
  kDropped,
  kInline
};
constexpr std::size_t kStackedRoles = static_cast<std::size_t>(Role::kRow) + 1;

struct ElementRow {
  std::string_view name;
  Role role;
};
// In the order of the names, for a binary search. What is not here is inline.
constexpr ElementRow kElements[] = {
    {"a", Role::kLink},
    {"address", Role::kLine},
    {"article", Role::kLine},
    {"aside", Role::kLine},
    {"blockquote", Role::kQuotation},
    {"body", Role::kLine},
    {"br", Role::kBreak},
    {"caption", Role::kLine},
    {"center", Role::kLine},
    {"dd", Role::kDescription},
    {"dir", Role::kBulleted},
    {"div", Role::kLine},
    {"dl", Role::kParagraph},
    {"dt", Role::kLine},
    {"fieldset", Role::kLine},
    {"figcaption", Role::kLine},
    {"figure", Role::kParagraph},
    {"footer", Role::kLine},
    {"form", Role::kLine},
    {"h1", Role::kHeading},
    {"h2", Role::kHeading},
    {"h3", Role::kHeading},
    {"h4", Role::kHeading},
    {"h5", Role::kHeading},
    {"h6", Role::kHeading},
    {"header", Role::kLine},
    {"hr", Role::kRule},
    {"iframe", Role::kDropped},
    {"img", Role::kPicture},
    {"legend", Role::kLine},
    {"li", Role::kItem},
    {"main", Role::kLine},
    {"menu", Role::kBulleted},
    {"nav", Role::kLine},
    {"noembed", Role::kDropped},
    {"noframes", Role::kDropped},
    {"ol", Role::kNumbered},
    {"p", Role::kParagraph},
    {"pre", Role::kPreformatted},
    {"script", Role::kDropped},
    {"section", Role::kLine},
    {"style", Role::kDropped},
    {"table", Role::kTable},
    {"td", Role::kCell},
    {"textarea", Role::kDropped},
    {"th", Role::kCell},
    {"title", Role::kDropped},
    {"tr", Role::kRow},
    {"ul", Role::kBulleted},
};

static_assert(std::is_sorted(std::begin(kElements), std::end(kElements),
                             [](const ElementRow& a, const ElementRow& b) { return a.name < b.name; }));

Role RoleOf(std::string_view name) {
  const auto* const found =
      std::lower_bound(std::begin(kElements), std::end(kElements), name,
                       [](const ElementRow& row, std::string_view wanted) { return row.name < wanted; });
  return found != std::end(kElements) && found->name == name ? found->role : Role::kInline;
}

bool IsStacked(Role role) { return static_cast<std::size_t>(role) < kStackedRoles; }
bool IsBlock(Role role) { return role <= Role::kHeading; }

bool HasNoContent(std::string_view name) {
  constexpr std::array<std::string_view, 13> kVoid = {"area",  "base", "br",   "col",   "embed",  "hr", "img",
                                                      "input", "link", "meta", "param", "source", "wbr"};
  return std::find(kVoid.begin(), kVoid.end(), name) != kVoid.end();
}

bool IsHidden(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
  if (token.name == "template") return true;
  if (token.attributes.empty()) return false;
  if (tokenizer.Find(token, "hidden") != nullptr) return true;
  std::string style = platform::AsciiLower(tokenizer.Value(token, "style"));
  std::erase_if(style, [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
  return style.find("display:none") != std::string::npos;
}

// The part of a link that is worth reading; empty when there is none.
std::string ReadableTarget(std::string target) {
  std::erase_if(target, [](char c) { return static_cast<std::uint8_t>(c) < 0x20; });
  std::string_view rest = platform::Trim(target);
  if (rest.starts_with('#') || platform::StartsWithIgnoringAsciiCase(rest, "javascript:")) return {};
  if (platform::StartsWithIgnoringAsciiCase(rest, "mailto:")) {
    rest.remove_prefix(std::string_view("mailto:").size());
    rest = rest.substr(0, rest.find('?'));
  } else if (platform::StartsWithIgnoringAsciiCase(rest, "tel:")) {
    rest.remove_prefix(std::string_view("tel:").size());
  }
  return std::string(rest);
}

std::string WithoutBlanks(std::string_view text) {
  std::string out = platform::ReplaceAll(text, "\xC2\xA0", "");
  std::erase_if(out, [](char c) { return c == ' ' || static_cast<std::uint8_t>(c) < 0x20; });
  return out;
}

// "https://example.org/" and "example.org" tell the reader the same.
std::string_view WithoutSchemeAndSlash(std::string_view address) {
  for (const std::string_view scheme : {"https://", "http://"}) {
    if (platform::StartsWithIgnoringAsciiCase(address, scheme)) address.remove_prefix(scheme.size());
  }
  if (address.ends_with('/')) address.remove_suffix(1);
  return address;
}

// Skips an element that is not displayed, up to its end tag; to the end tag of an element around it when that is
// missing.
class HiddenElement {
 public:
  bool active() const { return active_; }
  void Begin(const HtmlToken& token) {
    active_ = true;
    name_ = token.name;
    depth_ = 1;
    blocks_ = 0;
  }
  // True when the token is to be read after all, because the element ended before it.
  bool Skip(const HtmlToken& token) {
    const bool start = token.kind == HtmlTokenKind::kStartTag;
    if (!start && token.kind != HtmlTokenKind::kEndTag) return false;
    const bool block = IsBlock(RoleOf(token.name)) && token.name != "p";
    if (start && name_ == "p" && depth_ == 1 && blocks_ == 0 && (block || token.name == "p"))
      return active_ = false, true;
    if (token.name == name_) {
      depth_ = start ? depth_ + 1 : depth_ - 1;
      active_ = depth_ > 0;
    } else if (block && start) {
      ++blocks_;
    } else if (block && blocks_ > 0) {
      --blocks_;
    } else if (block) {
      return active_ = false, true;
    }
    return false;
  }

 private:
  bool active_ = false;
  std::string name_;
  std::size_t depth_ = 0;   // open elements of the name
  std::size_t blocks_ = 0;  // open blocks of other names
};

class Reader {
 public:
  explicit Reader(std::string_view html) : tokenizer_(html) {}

  std::string Run() {
    HtmlToken token;
    while (tokenizer_.Next(token)) {
      if (hidden_.active() && !hidden_.Skip(token)) continue;
      if (token.kind == HtmlTokenKind::kStartTag) {
        Start(token);
      } else if (token.kind == HtmlTokenKind::kEndTag) {
        End(token);
      } else if (!dropping_ && token.kind == HtmlTokenKind::kText) {
        AddText(DecodeCharacterReferences(tokenizer_.Source(token)));
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
    Role role;
    std::int64_t next_number = 1;  // of a numbered list
    std::size_t cells = 0;         // of a row, so far; of a table, in its last row
    std::size_t line_before = 0;   // of a row: the number of the line above it
  };

  void AddText(std::string_view text) {
    if (in_link_) link_text_ += text;
    if (OpenCount(Role::kPreformatted) == 0) return layout_.AddText(text);
    // A line end right after <pre> is not part of its text.
    if (after_pre_ && text.starts_with("\r\n")) text.remove_prefix(1);
    if (after_pre_ && text.starts_with('\n')) text.remove_prefix(1);
    layout_.AddPreformatted(text);
  }

  std::size_t OpenCount(Role role) const { return open_counts_[static_cast<std::size_t>(role)]; }

  void Push(Role role) {
    open_.push_back({role});
    ++open_counts_[static_cast<std::size_t>(role)];
  }

  void Pop() {
    const Open closed = open_.back();
    open_.pop_back();
    --open_counts_[static_cast<std::size_t>(closed.role)];
    if (closed.role == Role::kItem || closed.role == Role::kQuotation || closed.role == Role::kDescription) {
      layout_.PopPrefix();
    }
    if (closed.role == Role::kRow) {
      open_.back().cells = closed.cells;  // rows are in tables
      if (closed.cells > 1 && layout_.line_number() - closed.line_before == 1) layout_.CloseUp();
    }
    layout_.ReleaseBlocks();
    layout_.Block(MarginOf(closed.role));
  }

  // Each element is popped once, so that all these searches together take linear time.
  void PopThrough(Role role) {
    if (OpenCount(role) == 0) return;
    while (open_.back().role != role) Pop();
    Pop();
  }

  void PopIfInnermost(Role role) {
    if (!open_.empty() && open_.back().role == role) Pop();
  }

  Margin MarginOf(Role role) const {
    const bool list = role == Role::kBulleted || role == Role::kNumbered;
    if (list) return OpenCount(Role::kItem) == 0 ? Margin::kBlankLine : Margin::kLine;
    const bool apart = role == Role::kQuotation || role == Role::kPreformatted || role == Role::kParagraph ||
                       role == Role::kHeading || role == Role::kRule;
    return apart ? Margin::kBlankLine : Margin::kLine;
  }

  void Start(const HtmlToken& token) {
    const Role role = RoleOf(token.name);
    dropping_ = role == Role::kDropped;
    if (dropping_) return;
    if (IsHidden(tokenizer_, token)) {
      if (!HasNoContent(token.name)) hidden_.Begin(token);
      return;
    }
    if (IsStacked(role)) return StartStacked(role, token);
    if (role == Role::kCell) return StartCell();
    if (role == Role::kBreak) return layout_.Break();
    if (role == Role::kPicture) return AddText(tokenizer_.Value(token, "alt"));
    if (role == Role::kLink) {
      CloseLink();
      link_target_ = ReadableTarget(tokenizer_.Value(token, "href"));
      in_link_ = !link_target_.empty();
      size_before_link_ = layout_.size();
    }
    if (!IsBlock(role) && role != Role::kRule) return;
    if (token.name == "dt") PopIfInnermost(Role::kDescription);
    if (role == Role::kHeading || role == Role::kRule) layout_.ReleaseBlocks();
    layout_.Block(MarginOf(role));
    if (role != Role::kRule) return;
    layout_.AddText("----");
    layout_.Block(MarginOf(role));
  }

  void StartStacked(Role role, const HtmlToken& token) {
    if (role == Role::kRow) return StartRow();
    if (role == Role::kItem || role == Role::kDescription) PopIfInnermost(role);
    layout_.ReleaseBlocks();
    layout_.Block(MarginOf(role));
    if (role == Role::kItem) PushItemPrefix(token);
    if (role == Role::kQuotation) layout_.PushPrefix("> ", "> ");
    if (role == Role::kDescription) layout_.PushPrefix("  ", "  ");
    Push(role);
    if (role == Role::kItem) layout_.HoldBlocks();
    if (role == Role::kNumbered) {
      open_.back().next_number = platform::ParseWholeNumber(tokenizer_.Value(token, "start")).value_or(1);
    }
  }

  void PushItemPrefix(const HtmlToken& token) {
    const std::string marker = Marker(token);
    layout_.PushPrefix(marker, std::string(marker.size(), ' '));
  }

  // What stands before a list item.
  std::string Marker(const HtmlToken& token) {
    if (open_.empty() || open_.back().role != Role::kNumbered) return "- ";
    Open& list = open_.back();
    const std::string given = tokenizer_.Value(token, "value");
    list.next_number = platform::ParseWholeNumber(given).value_or(list.next_number);
    return std::to_string(list.next_number++) + ". ";
  }

  void PopToTable() {
    while (open_.back().role != Role::kTable) Pop();
  }

  void StartRow() {
    layout_.Block(Margin::kLine);
    if (OpenCount(Role::kTable) == 0) return;
    PopToTable();
    Push(Role::kRow);
    open_.back().line_before = layout_.line_number();
  }

  void StartCell() {
    if (OpenCount(Role::kTable) == 0) return layout_.Block(Margin::kLine);
    while (open_.back().role != Role::kRow && open_.back().role != Role::kTable) Pop();
    if (open_.back().role == Role::kTable) StartRow();
    Open& row = open_.back();
    const std::size_t lines = layout_.line_number() - row.line_before;
    // Cells of one line share it. One that is longer, as in a table that only arranges the page, stays a block.
    if (row.cells > 0 && lines == 1) layout_.CellGap();
    if (row.cells > 0 && lines > 1) layout_.Block(Margin::kLine);
    const std::size_t cells_above = open_[open_.size() - 2].cells;
    if (row.cells > 0 ? lines == 1 : cells_above > 1) layout_.HoldBlocks();
    ++row.cells;
  }

  void End(const HtmlToken& token) {
    dropping_ = false;
    const Role role = RoleOf(token.name);
    if (role == Role::kLink) return CloseLink();
    if (token.name == "p" || token.name == "br")
      return token.name == "p" ? layout_.Block(Margin::kBlankLine) : layout_.Break();
    if (token.name == "dl") PopIfInnermost(Role::kDescription);
    if (IsStacked(role)) return PopThrough(role);
    if (IsBlock(role) && role != Role::kCell) layout_.Block(MarginOf(role));
  }

  void CloseLink() {
    if (!in_link_) return;
    in_link_ = false;
    const std::string text = WithoutBlanks(link_text_);
    link_text_.clear();
    if (layout_.size() == size_before_link_) return layout_.AddText('<' + link_target_ + '>');
    if (WithoutSchemeAndSlash(text) == WithoutSchemeAndSlash(WithoutBlanks(link_target_))) return;
    layout_.AppendToLine(" <" + link_target_ + '>');
  }

  HtmlTokenizer tokenizer_;
  TextLayout layout_;
  HiddenElement hidden_;
  std::vector<Open> open_;
  std::array<std::size_t, kStackedRoles> open_counts_{};
  std::string link_target_;
  std::string link_text_;
  std::size_t size_before_link_ = 0;
  bool in_link_ = false;
  bool dropping_ = false;
  bool after_pre_ = false;
};

}  // namespace

std::string HtmlToText(std::string_view html) { return Reader(html).Run(); }

}  // namespace quillcast::mime
