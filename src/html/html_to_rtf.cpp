#include "html/html_to_rtf.h"

#include <algorithm>
#include <utility>

#include "html/hidden_words.h"
#include "html/html_elements.h"
#include "html/html_list.h"
#include "html/html_tokenizer.h"
#include "html/rtf_body.h"
#include "html/rtf_style.h"
#include "html/safe_page.h"
#include "html/shown_tokens.h"
#include "html/style_values.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::size_t kMostOpenInRtf = 500;
constexpr std::size_t kLongestLink = 2000;  // bytes
constexpr int kItemIndent = 720;            // twips
constexpr int kQuotationIndent = 567;
constexpr int kWidestIndent = 9 * kItemIndent;
constexpr int kTwipsOfPixel = 15;

bool IsTablePart(HtmlRole role) {
  return role == HtmlRole::kTable || role == HtmlRole::kRow || role == HtmlRole::kCell;
}
bool IsList(HtmlRole role) { return role == HtmlRole::kBulleted || role == HtmlRole::kNumbered; }

// How many columns the first row of a table has, whose start tag was the last token: cells are as wide as that says
// before the row is read. Tables in it are passed over.
std::size_t ColumnsAhead(HtmlTokenizer tokenizer) {
  std::size_t columns = 0;
  std::size_t depth = 0;
  HtmlToken token;
  while (columns < RtfBody::kMostCells && tokenizer.Next(token)) {
    const bool is_start = token.kind == HtmlTokenKind::kStartTag;
    if (!is_start && token.kind != HtmlTokenKind::kEndTag) continue;
    const HtmlRole role = RoleOf(token.name);
    if (role == HtmlRole::kTable) {
      if (!is_start && depth == 0) break;
      depth += is_start ? 1 : std::size_t(-1);
    } else if (depth == 0 && role == HtmlRole::kRow && columns > 0) {
      break;
    } else if (depth == 0 && role == HtmlRole::kCell && is_start) {
      columns += SpanOf(tokenizer, token);
    }
  }
  return columns;
}

class ReaderToRtf {
 public:
  ReaderToRtf(std::string_view html, const FindRtfPicture& find_picture)
      : tokenizer_(html), find_picture_(find_picture), hidden_words_(html), link_room_(4 * html.size() + 65'536) {}

  RtfPage Run() {
    HtmlToken token;
    while (shown_.Next(token)) {
      if (token.kind == HtmlTokenKind::kStartTag) {
        Start(token);
      } else if (token.kind == HtmlTokenKind::kEndTag) {
        dropping_ = false;
        hidden_words_.Take(tokenizer_, token);
        End(token.name);
      } else if (!dropping_ && token.kind == HtmlTokenKind::kText) {
        if (!hidden_words_.Hold(tokenizer_.Source(token))) AddText(DecodeCharacterReferences(tokenizer_.Source(token)));
      } else if (!dropping_ && token.kind == HtmlTokenKind::kRawText) {
        AddText(tokenizer_.Source(token));
      }
    }
    while (!open_.empty()) Pop();
    page_.text = std::move(body_).Finish();
    return std::move(page_);
  }

 private:
  struct Open {
    std::string name;
    HtmlRole role = HtmlRole::kInline;
    bool is_table_part = false;  // that the body has begun
    RtfStyle before = {};        // to go back to
    std::string link_before = {};
    std::size_t list = 0;  // of a list, once an item was met
    RtfNumbering numbering = RtfNumbering::kBullets;
    std::int64_t next_number = 1;
  };

  void Start(const HtmlToken& token) {
    const HtmlRole role = RoleOf(token.name);
    dropping_ = role == HtmlRole::kDropped;
    if (dropping_) return;
    hidden_words_.Take(tokenizer_, token);
    if (role == HtmlRole::kPicture) {
      AddPicture(token);
    } else if (role == HtmlRole::kBreak) {
      AddLineBreak();
    } else if (role == HtmlRole::kRule) {
      EndParagraph();
      if (HasPlace()) {
        SetParagraph();
        body_.AddRule();
      }
    } else if (role == HtmlRole::kArea) {
      AddArea(token);
    } else if (IsTablePart(role)) {
      StartTablePart(role, token);
    } else if (IsRowGroup(token.name)) {
      StartRowGroup(role, token);
    } else if (!HasNoContent(token.name)) {
      StartElement(role, token);
    }
  }

  void StartElement(HtmlRole role, const HtmlToken& token) {
    if (IsBlock(role)) StartBlock(role, token);
    Push(role, token);
    if (role == HtmlRole::kItem) StartItem(token);
    if (IsList(role) || role == HtmlRole::kQuotation || role == HtmlRole::kDescription) {
      const int step = IsList(role) ? kItemIndent : kQuotationIndent;
      style_.paragraph.indent = std::min(style_.paragraph.indent + step, kWidestIndent);
    }
    if (role == HtmlRole::kNumbered) StartNumbers(token);
    if (role == HtmlRole::kQuote) AddText("\"");
  }

  // What the start of a block ends where it stands.
  void StartBlock(HtmlRole role, const HtmlToken& token) {
    EndParagraph();
    const auto pop_innermost = [this](HtmlRole which) {
      if (!open_.empty() && open_.back().role == which) Pop();
    };
    pop_innermost(HtmlRole::kParagraph);
    if (role == HtmlRole::kItem) pop_innermost(HtmlRole::kItem);
    if (role == HtmlRole::kDescription || token.name == "dt") pop_innermost(HtmlRole::kDescription);
  }

  void Push(HtmlRole role, const HtmlToken& token) {
    while (open_.size() >= kMostOpenInRtf) Pop();
    open_.push_back({.name = token.name, .role = role, .before = style_, .link_before = link_});
    const bool leads = (role == HtmlRole::kLink || token.name == "area") && StartLink(token);
    ApplyElement(style_, role, tokenizer_, token, leads);
  }

  void Pop() {
    const Open closed = std::move(open_.back());
    open_.pop_back();
    if (IsBlock(closed.role)) EndParagraph();
    if (closed.role == HtmlRole::kQuote) AddText("\"");
    if (closed.role == HtmlRole::kItem) pending_item_ = 0;
    if (closed.is_table_part) EndTablePart(closed.role);
    style_ = closed.before;
    SetLink(closed.link_before);
  }

  void EndTablePart(HtmlRole role) {
    if (role == HtmlRole::kCell) body_.EndCell();
    if (role == HtmlRole::kRow) body_.EndRow();
    if (role == HtmlRole::kTable) body_.EndTable();
    after_blank_ = true;
  }

  // An end tag closes nothing beyond its cell, or that of a part of a table nothing beyond its table.
  void End(const std::string& name) {
    if (name == "br") return AddLineBreak();
    const HtmlRole role = RoleOf(name);
    for (std::size_t i = open_.size(); i > 0; --i) {
      const Open& candidate = open_[i - 1];
      if (candidate.name == name) {
        while (open_.size() >= i) Pop();
        return;
      }
      if (role != HtmlRole::kTable && candidate.role == HtmlRole::kTable) return;
      if (!IsTablePart(role) && !IsRowGroup(name) && candidate.role == HtmlRole::kCell) return;
    }
  }

  // The place of the innermost table in the list of what is open, behind it; 0 for none.
  std::size_t InnermostTable() const {
    const auto table =
        std::find_if(open_.rbegin(), open_.rend(), [](const Open& open) { return open.role == HtmlRole::kTable; });
    return static_cast<std::size_t>(open_.rend() - table);
  }

  void StartTablePart(HtmlRole role, const HtmlToken& token) {
    EndParagraph();
    if (role == HtmlRole::kTable) return StartTable(token);
    const std::size_t table = InnermostTable();
    // Outside tables, and in one that is too deep, each is a line.
    if (table == 0 || !open_[table - 1].is_table_part) return Push(HtmlRole::kLine, token);
    const std::size_t rows = open_.size() > table && IsRowGroup(open_[table].name) ? table + 1 : table;
    while (open_.size() > rows && (role == HtmlRole::kRow || open_.back().role != HtmlRole::kRow)) Pop();
    if (role == HtmlRole::kRow) {
      Push(role, token);
      open_.back().is_table_part = true;
      return body_.BeginRow();
    }
    if (!body_.is_in_row()) body_.BeginRow();
    Push(role, token);
    open_.back().is_table_part = true;
    body_.BeginCell(SpanOf(tokenizer_, token), RowsOf(tokenizer_, token), style_.ground);
    after_blank_ = true;
  }

  // It is no part of the document, but its rows look as it says.
  void StartRowGroup(HtmlRole role, const HtmlToken& token) {
    const std::size_t table = InnermostTable();
    if (table > 0) EndParagraph();
    while (table > 0 && open_.size() > table) Pop();
    if (table > 0 && open_[table - 1].is_table_part) body_.EndRow();
    Push(role, token);
  }

  void StartTable(const HtmlToken& token) {
    MakePlace();
    const bool has_begun =
        body_.MayBeginTable() && body_.BeginTable(HasBorder(tokenizer_, token), ColumnsAhead(tokenizer_));
    Push(HtmlRole::kTable, token);
    open_.back().is_table_part = has_begun;
    style_.paragraph = {};
    after_blank_ = true;
  }

  void StartNumbers(const HtmlToken& token) {
    open_.back().next_number = ListNumber(tokenizer_.Value(token, "start"), 1);
    open_.back().numbering = NumberingOf(tokenizer_.Value(token, "type"));
  }

  // Its paragraph has the sign or number; where there are too many lists for that it is a letter of the text.
  void StartItem(const HtmlToken& token) {
    const auto found =
        std::find_if(open_.rbegin() + 1, open_.rend(), [](const Open& open) { return IsList(open.role); });
    if (found == open_.rend()) return;
    Open& list = *found;
    const std::int64_t number = ListNumber(tokenizer_.Value(token, "value"), list.next_number);
    if (list.list == 0 || number != list.next_number)
      list.list = body_.AddList(list.numbering, number, style_.paragraph.indent);
    list.next_number = number + 1;
    pending_item_ = list.list;
    if (list.list == 0) AddText(list.numbering == RtfNumbering::kBullets ? "• " : std::to_string(number) + ". ");
  }

  // Whether it leads somewhere. Whatever there are of long ones, the document stays within a few times of the page.
  bool StartLink(const HtmlToken& token) {
    const std::string address{platform::Trim(tokenizer_.Value(token, "href"))};
    const bool leads = !address.starts_with('#') && address.size() <= kLongestLink && MayBeFollowed(address);
    SetLink(leads ? address : std::string());
    return leads;
  }

  void SetLink(const std::string& address) {
    link_ = address;
    body_.SetLink(address);
  }

  // Between the rows and cells of a table nothing can stand.
  bool HasPlace() const { return !body_.is_in_table() || body_.is_in_cell(); }
  void MakePlace() {
    if (HasPlace()) return;
    if (!body_.is_in_row()) body_.BeginRow();
    body_.BeginCell(1, 1, style_.ground);
  }

  void EndParagraph() {
    body_.EndParagraph();
    after_blank_ = true;
  }

  void BeginParagraph() {
    MakePlace();
    if (!body_.is_in_paragraph()) SetParagraph();
    if (link_.empty()) return;
    link_room_ -= std::min(link_room_, link_.size());
    if (link_room_ == 0) SetLink({});
  }

  // Of what is begun next.
  void SetParagraph() {
    RtfParagraph paragraph = style_.paragraph;
    paragraph.ground = style_.ground;
    paragraph.list = std::exchange(pending_item_, 0);
    body_.SetParagraph(paragraph);
  }

  void AddLineBreak() {
    if (!HasPlace()) return;
    if (!body_.is_in_paragraph()) SetParagraph();
    body_.AddLineBreak();
    after_blank_ = true;
  }

  void AddText(std::string_view text) {
    if (style_.is_preformatted) return AddLines(text);
    std::string words;
    for (const char c : text) {
      const bool is_blank = c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
      if (!is_blank || !after_blank_) words += is_blank ? ' ' : c;
      after_blank_ = is_blank;
    }
    if (words.empty()) return;
    BeginParagraph();
    body_.AddText(words, style_.letters);
  }

  void AddLines(std::string_view text) {
    while (!text.empty()) {
      const std::size_t end = std::min(text.find('\n'), text.size());
      BeginParagraph();
      if (end > 0) body_.AddText(text.substr(0, end), style_.letters);
      if (end < text.size()) body_.AddLineBreak();
      text.remove_prefix(std::min(end + 1, text.size()));
    }
    after_blank_ = true;
  }

  void AddPicture(const HtmlToken& token) {
    std::string address = tokenizer_.Value(token, "src");
    const auto size = find_picture_ && !address.empty() ? find_picture_(address) : std::nullopt;
    if (!size) return AddText(tokenizer_.Value(token, "alt"));
    BeginParagraph();
    body_.AddPicture(page_.pictures.size());
    page_.pictures.push_back({std::move(address), ShownSize(token, *size)});
    after_blank_ = false;
  }

  // A part of a picture that is a link of its own.
  void AddArea(const HtmlToken& token) {
    EndParagraph();
    Push(HtmlRole::kLine, token);
    AddText(tokenizer_.Value(token, "alt"));
    Pop();
  }

  // As the page says, one side after the other where it names one alone, and no wider than there is room.
  RtfPictureSize ShownSize(const HtmlToken& token, RtfPictureSize natural) const {
    const auto width = ReadPixels(tokenizer_.Value(token, "width"));
    const auto height = ReadPixels(tokenizer_.Value(token, "height"));
    const double ratio = static_cast<double>(natural.height) / natural.width;
    double shown = width ? *width : height ? *height / ratio : natural.width;
    double high = height ? *height : shown * ratio;
    shown *= kTwipsOfPixel;
    high *= kTwipsOfPixel;
    const double fit = std::min(1.0, body_.room() / shown);
    return {std::max(static_cast<int>(shown * fit), 15), std::clamp(static_cast<int>(high * fit), 15, 30'000)};
  }

  HtmlTokenizer tokenizer_;
  ShownTokens shown_{tokenizer_};
  const FindRtfPicture& find_picture_;
  RtfBody body_;
  RtfPage page_;
  HiddenWords hidden_words_;
  std::vector<Open> open_;
  RtfStyle style_;
  std::string link_;
  std::size_t link_room_;  // bytes of addresses that may still be written
  std::size_t pending_item_ = 0;
  bool dropping_ = false;
  bool after_blank_ = true;  // where a blank says nothing
};

}  // namespace

RtfPage HtmlToRtf(std::string_view html, const FindRtfPicture& find_picture) {
  return ReaderToRtf(html, find_picture).Run();
}

}  // namespace quillcast::html
