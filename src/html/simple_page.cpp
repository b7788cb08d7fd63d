#include "html/simple_page.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "html/characters.h"
#include "html/hidden_words.h"
#include "html/html_elements.h"
#include "html/html_tokenizer.h"
#include "html/said_colours.h"
#include "html/shown_tokens.h"
#include "html/simple_attributes.h"
#include "html/simple_colours.h"
#include "html/table_shapes.h"

namespace quillcast::html {
namespace {

constexpr std::size_t kMostOpenInSimplePage = 100;  // elements
constexpr std::size_t kMostTables = 3;              // within each other
constexpr std::size_t kMostItems = 1000;            // of a list; more are another list
constexpr std::size_t kMostPictures = 500;
constexpr std::size_t kLongestWord = 100;  // bytes without a place to break

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

constexpr std::string_view kNothingSeen = "<span style=\"font-size:1pt\">&#8203;</span>";  // a very low line

constexpr std::string_view kLoose = "(loose)";  // what stands behind a block and in none

// What the view knows under the same name.
constexpr auto kKept = std::to_array<std::string_view>(
    {"a",    "b",  "big",  "blockquote", "center", "cite",   "code", "dd",  "dfn", "dl", "dt", "em",
     "font", "h1", "h2",   "h3",         "h4",     "h5",     "h6",   "i",   "kbd", "li", "ol", "p",
     "pre",  "s",  "samp", "small",      "span",   "strong", "sub",  "sup", "tt",  "u",  "ul", "var"});

bool IsCell(std::string_view written) { return written == "td" || written == "th"; }

class SimpleWriter {
 public:
  SimpleWriter(std::string_view html, std::size_t most)
      : page_(html),
        shapes_(TableShapesOf(html)),
        most_(most),
        hidden_words_(html, HiddenWords::Transparency::kMayBeDrawn) {}

  SimplePage Write();

 private:
  // What is open, and how its end is written; empty where it is not.
  struct Open {
    std::string name;
    std::string_view written;
    std::size_t items = 0;      // of a list
    Spans spans = Spans::kFew;  // of a table
    LetterSize size = {};
    WordColours colours = {};
    std::size_t begins = 0;  // of a cell, what is in it, as long as all of that stands on one ground; else 0
    std::optional<std::uint32_t> first_ground = {};
    // That the view would paint behind these words alone, and not behind all that is in it.
    std::optional<std::uint32_t> ground = {};
  };

  void Take(const HtmlToken& token);
  void Text(std::string_view text);
  void Start(const HtmlToken& token);
  void StartTable(const HtmlToken& token);
  void StartRows(const HtmlToken& token);
  void StartRow(const HtmlToken* token);
  void StartCell(const HtmlToken* token);
  void StartItem();
  void End(const std::string& name);
  void Push(const std::string& name, std::string_view written, const HtmlToken* token);
  void CloseTo(std::size_t open);
  void ComeIntoCell();
  void CloseBefore(const std::string& name);
  void LeaveBlock(bool is_text);
  void CloseLoose();
  std::size_t Last(std::string_view name) const;
  bool IsInGrid() const;
  bool IsBetweenCells() const;
  bool HasLook(const HtmlToken& token) const;
  std::optional<std::uint32_t> Ground() const { return open_.empty() ? std::nullopt : open_.back().ground; }
  void KeepGroundsApart();
  std::size_t PicturesLeftOut() const { return pictures_ - std::min(pictures_, kMostPictures); }

  HtmlTokenizer page_;
  std::vector<TableShape> shapes_;
  std::size_t most_;            // bytes
  std::size_t tables_ = 0;      // that began
  std::size_t open_grids_ = 0;  // written as tables
  std::size_t pictures_ = 0;
  std::vector<Open> open_;
  HiddenWords hidden_words_;
  bool has_body_ = false;
  bool begins_pre_ = false;  // just now
  bool drops_text_ = false;  // of a title, which is not the page's
  std::size_t word_ = 0;     // bytes since the last place to break
  std::string_view behind_;  // the block that ended just now, as it was written
  std::string out_;
};

// The place of the innermost that is open in this cell, and for what a table consists of in this table.
std::size_t SimpleWriter::Last(std::string_view name) const {
  const bool is_of_table = name == "table" || name == "tbody" || name == "tr" || name == "td";
  for (std::size_t i = open_.size(); i-- > 0;) {
    if (open_[i].name == name) return i;
    if (open_[i].name == "table" || (!is_of_table && open_[i].name == "td")) return kNone;
  }
  return kNone;
}

void SimpleWriter::CloseTo(std::size_t open) {
  for (; open_.size() > open; open_.pop_back()) {
    const std::string_view written = open_.back().written;
    if (written == "table") --open_grids_;
    if (!written.empty()) out_.append("</").append(written).append(">");
    if (written == "div" || written == "p") word_ = 0;
    if (IsBlock(RoleOf(written))) behind_ = written;
  }
}

// The view paints the ground of what is first in a cell behind all of the cell: where something follows on another
// one, nothing that has a ground is the first. Something seen comes here.
void SimpleWriter::KeepGroundsApart() {
  const auto cell = std::find_if(open_.rbegin(), open_.rend(), [](const Open& open) { return IsCell(open.written); });
  if (cell == open_.rend() || cell->begins == 0) return;
  const auto ground = Ground();
  if (ground && ground == cell->first_ground.value_or(*ground)) {
    cell->first_ground = ground;
    return;
  }
  if (cell->first_ground) out_.insert(cell->begins, kNothingSeen);
  cell->begins = 0;
}

// The view paints the ground of a table or cell behind all that is in it, and of other blocks behind their own words:
// what stands in those is told it.
void SimpleWriter::Push(const std::string& name, std::string_view written, const HtmlToken* token) {
  const bool is_cell = IsCell(written);
  const bool paints_all = is_cell || written == "table" || written == "tr" || written == "body";
  const bool is_block = IsBlock(RoleOf(written)) || IsRowGroup(written);
  const bool is_shown = token != nullptr && !written.empty();
  const auto around = Ground();
  const Open outer = open_.empty() ? Open() : open_.back();
  const SaidColours said =
      is_shown ? SaidColoursOf(page_, *token, paints_all || written == "div" || IsRowGroup(written)) : SaidColours();
  const WordColours colours = ColoursWithin(said, outer.colours, written == "a");
  LetterSize size = is_shown ? SizeWithin(page_, *token, outer.size) : outer.size;
  Told told{.ground = is_block && !said.ground && around ? ColourInWords(*around) : "",
            .letters = written == "a" && said.has_letters_of_around ? ColourInWords(colours.letters) : "",
            .size = size.value == outer.size.value ? "" : size.value,
            .points = size.points};
  const auto ground = is_block && said.ground ? said.ground : around;
  open_.push_back({.name = name,
                   .written = written,
                   .size = std::move(size),
                   .colours = colours,
                   .ground = paints_all ? std::nullopt : ground});
  if (written.empty()) return;
  begins_pre_ = written == "pre";
  if (is_block) behind_ = {};
  out_.append("<").append(written);
  const std::size_t table = name == "td" ? Last("table") : kNone;
  const Spans spans = table == kNone ? Spans::kFew : open_[table].spans;
  out_ += token != nullptr ? SimpleAttributes(page_, *token, written, told, spans) : ToldAttributes(written, told);
  out_ += '>';
  if (is_cell) open_.back().begins = out_.size();
}

// Whether the innermost table is written as one.
bool SimpleWriter::IsInGrid() const {
  const std::size_t table = Last("table");
  return table != kNone && open_[table].written == "table";
}

void SimpleWriter::StartTable(const HtmlToken& token) {
  const bool is_grid = shapes_[tables_++].is_grid && open_grids_ < kMostTables;
  if (open_.size() >= kMostOpenInSimplePage) return;
  ComeIntoCell();
  CloseBefore("p");
  CloseLoose();
  open_grids_ += is_grid ? 1 : 0;
  if (is_grid) KeepGroundsApart();
  Push("table", is_grid ? "table" : "div", &token);
  open_.back().spans = shapes_[tables_ - 1].spans;
}

bool SimpleWriter::HasLook(const HtmlToken& token) const {
  return !page_.Value(token, "style").empty() || !page_.Value(token, "bgcolor").empty();
}

// Never a head, which the view would print anew on each page.
void SimpleWriter::StartRows(const HtmlToken& token) {
  CloseTo(Last("table") + 1);
  if (HasLook(token) && open_.size() < kMostOpenInSimplePage) Push("tbody", IsInGrid() ? "tbody" : "div", &token);
}

void SimpleWriter::StartRow(const HtmlToken* token) {
  const std::size_t table = Last("table");
  if (table == kNone) return;
  const bool is_in_rows = open_.size() > table + 1 && open_[table + 1].name == "tbody";
  CloseTo(table + (is_in_rows ? 2 : 1));
  const bool has_look = token != nullptr && HasLook(*token);
  Push("tr", IsInGrid() ? "tr" : has_look ? "div" : "", token);
}

void SimpleWriter::StartCell(const HtmlToken* token) {
  if (Last("table") == kNone) return;
  if (Last("tr") == kNone) StartRow(nullptr);
  CloseTo(Last("tr") + 1);
  Push("td", !IsInGrid() ? "div" : token != nullptr && token->name == "th" ? "th" : "td", token);
  word_ = 0;
}

bool SimpleWriter::IsBetweenCells() const {
  if (open_.empty()) return false;
  const std::string& name = open_.back().name;
  return name == "table" || name == "tbody" || name == "tr";
}

// What stands in a table and in no cell of it is shown in one.
void SimpleWriter::ComeIntoCell() {
  if (IsBetweenCells()) StartCell(nullptr);
}

// A paragraph or an item ends where the next one begins.
void SimpleWriter::CloseBefore(const std::string& name) {
  const std::size_t before = Last(name);
  if (before == kNone) return;
  if (name == "li" && std::any_of(open_.begin() + static_cast<std::ptrdiff_t>(before), open_.end(),
                                  [](const Open& open) { return open.name == "ul" || open.name == "ol"; }))
    return;
  CloseTo(before);
}

// The view would go on in the line of the block before, with pictures and behind a "div" with words too; and it would
// paint no ground behind them.
void SimpleWriter::LeaveBlock(bool is_text) {
  const bool goes_on = is_text && behind_ != "div" && !Ground();
  if (behind_.empty() || goes_on || open_.size() >= kMostOpenInSimplePage) return;
  Push(std::string(kLoose), "div", nullptr);
}

void SimpleWriter::CloseLoose() {
  if (!open_.empty() && open_.back().name == kLoose) CloseTo(open_.size() - 1);
}

void SimpleWriter::StartItem() {
  CloseBefore("li");
  if (open_.empty() || (open_.back().written != "ul" && open_.back().written != "ol")) return;
  if (++open_.back().items % kMostItems != 0) return;
  const Open list = open_.back();
  CloseTo(open_.size() - 1);
  Push(list.name, list.written, nullptr);
}

void SimpleWriter::Start(const HtmlToken& token) {
  const std::string& name = token.name;
  if (name == "table") return StartTable(token);
  if (IsRowGroup(name) && Last("table") != kNone) return StartRows(token);
  if (name == "tr") return StartRow(&token);
  if (name == "td" || name == "th") return StartCell(&token);
  const bool is_block = IsBlock(RoleOf(name));
  const bool is_void = name == "br" || name == "hr" || name == "img";
  if (!is_void && !is_block && !IsAmong(name, kKept)) return;
  ComeIntoCell();
  if (is_block || name == "hr") CloseLoose();
  if (is_void) {
    const std::string attributes = SimpleAttributes(page_, token, name);
    const bool is_away = name == "img" && attributes.find(" src=\"") == std::string::npos;
    if (is_away || (name == "img" && ++pictures_ > kMostPictures)) return Text(page_.Value(token, "alt"));
    const bool has_ground = Ground().has_value();
    if (name == "img" || (name == "br" && has_ground)) LeaveBlock(false);
    behind_ = name == "hr" && has_ground ? "hr" : "";
    if (name == "img") KeepGroundsApart();
    out_.append("<").append(name).append(attributes).append(">");
    word_ = 0;
    return;
  }
  if (is_block) {
    CloseBefore("p");
    word_ = 0;
  }
  if (!is_block) LeaveBlock(false);
  if (name == "li") StartItem();
  if (open_.size() >= kMostOpenInSimplePage) return;
  const auto kept = std::find(kKept.begin(), kKept.end(), name);
  // The view paints the ground of what is a body in its eyes behind all of the page, tables too.
  const std::string_view block = name == "body" && open_.empty() && !has_body_ ? "body" : "div";
  has_body_ = has_body_ || block == "body";
  Push(name, kept != kKept.end() ? *kept : block, &token);
}

void SimpleWriter::End(const std::string& name) {
  const std::size_t open = Last(name == "th" ? "td" : IsRowGroup(name) ? "tbody" : name);
  if (open != kNone) CloseTo(open);
}

void SimpleWriter::Text(std::string_view text) {
  if (std::exchange(begins_pre_, false)) {  // a line end there is none
    if (text.starts_with('\r')) text.remove_prefix(1);
    if (text.starts_with('\n')) text.remove_prefix(1);
  }
  const bool is_blank = text.find_first_not_of(kSpaces) == std::string_view::npos;
  if (is_blank && IsBetweenCells()) return;
  ComeIntoCell();
  if (!is_blank) LeaveBlock(true);
  if (!is_blank) behind_ = {};
  if (!is_blank) KeepGroundsApart();
  const auto ink = is_blank || open_.empty() ? std::nullopt : InkInstead(open_.back().colours);
  if (ink) out_.append("<span style=\"color:").append(ColourInWords(*ink)).append("\">");
  bool in_reference = false;
  for (const char c : text) {
    if (out_.size() > most_) break;
    const bool is_break = c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
    const bool begins = (static_cast<unsigned char>(c) & 0xC0) != 0x80;  // a character
    in_reference = (in_reference || c == '&') && c != ';' && !is_break;
    if (is_break) word_ = 0;
    if (++word_ > kLongestWord && begins && (!in_reference || c == '&' || word_ > 2 * kLongestWord)) {
      out_ += "&#8203;";
      word_ = 1;
    }
    if (c == '<') {
      out_ += "&lt;";
    } else if (c == '>') {
      out_ += "&gt;";
    } else if (c != '\0') {
      out_ += c;
    }
  }
  if (ink) out_ += "</span>";
}

void SimpleWriter::Take(const HtmlToken& token) {
  switch (token.kind) {
    case HtmlTokenKind::kText:
      if (!drops_text_ && !hidden_words_.Hold(page_.Source(token))) Text(page_.Source(token));
      break;
    case HtmlTokenKind::kStartTag:
      hidden_words_.Take(page_, token);
      drops_text_ = RoleOf(token.name) == HtmlRole::kDropped;
      if (!drops_text_) Start(token);
      break;
    case HtmlTokenKind::kEndTag:
      drops_text_ = false;
      hidden_words_.Take(page_, token);
      End(token.name);
      break;
    case HtmlTokenKind::kRawText:
    case HtmlTokenKind::kComment:
    case HtmlTokenKind::kDoctype:
      break;
  }
}

SimplePage SimpleWriter::Write() {
  ShownTokens shown(page_);
  HtmlToken token;
  while (shown.Next(token)) {
    Take(token);
    if (out_.size() > most_) {
      CloseTo(0);
      return {std::move(out_), true, PicturesLeftOut()};
    }
  }
  CloseTo(0);
  return {std::move(out_), false, PicturesLeftOut()};
}

}  // namespace

SimplePage Simplify(std::string_view html, std::size_t most) { return SimpleWriter(html, most).Write(); }

}  // namespace quillcast::html
