#include "html/rtf_body.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "html/colour_contrast.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::html {
namespace {

constexpr int kCellGap = 108;  // twips, at either side
constexpr int kHanging = 360;  // twips that the sign of an item stands before it
constexpr std::size_t kMostFonts = 200;
constexpr std::size_t kMostColours = 5000;

void AppendUnit(std::string& out, char32_t unit) {
  fmt::format_to(std::back_inserter(out), "\\u{}?", static_cast<std::int16_t>(unit));
}

void AppendRtfCharacter(std::string& out, char32_t code) {
  if (code == '\\' || code == '{' || code == '}') {
    out += '\\';
    out += static_cast<char>(code);
  } else if (code == '\t') {
    out += "\\tab ";
  } else if (code == 0xA0) {
    out += "\\~";
  } else if (code == 0xAD) {
    out += "\\-";
  } else if (code == 0x2011) {
    out += "\\_";
  } else if (code >= 0x20 && code < 0x7F) {
    out += static_cast<char>(code);
  } else if (code >= 0x10000 && code != platform::kNotUtf8) {
    AppendUnit(out, 0xD800 + ((code - 0x10000) >> 10));
    AppendUnit(out, 0xDC00 + ((code - 0x10000) & 0x3FF));
  } else if (code >= 0xA0) {
    AppendUnit(out, code == platform::kNotUtf8 ? 0xFFFD : code);
  }
}

}  // namespace

void AppendRtfText(std::string& out, std::string_view utf8) {
  while (!utf8.empty()) {
    const auto [code, length] = platform::DecodeUtf8(utf8);
    AppendRtfCharacter(out, code);
    utf8.remove_prefix(length);
  }
}

std::size_t RtfBody::FontNumber(const std::string& name) {
  if (name.empty()) return 0;
  const auto [known, is_new] = font_numbers_.try_emplace(name, fonts_.size());
  if (is_new && fonts_.size() >= kMostFonts) known->second = 0;
  if (is_new && known->second != 0) fonts_.push_back(name);
  return known->second;
}

// 0 is the reader's own.
std::size_t RtfBody::ColourNumber(std::uint32_t colour) {
  const auto known = colour_numbers_.find(colour);
  if (known != colour_numbers_.end()) return known->second;
  if (colours_.size() >= kMostColours) return 0;
  colours_.push_back(colour);
  return colour_numbers_[colour] = colours_.size();
}

bool RtfBody::IsReadable(const RtfLetters& letters) const {
  return AreSeen(*letters.colour, letters.ground.value_or(ground_), letters.are_over_picture);
}

void RtfBody::AppendLetters(const RtfLetters& letters) {
  std::string& to = out();
  if (letters.bold) to += "\\b";
  if (letters.italic) to += "\\i";
  if (letters.underlined) to += "\\ul";
  if (letters.struck) to += "\\strike";
  if (letters.raised != 0) to += letters.raised > 0 ? "\\super" : "\\sub";
  if (const std::size_t font = FontNumber(letters.font); font != 0) to += fmt::format("\\f{}", font);
  if (letters.size != 24) to += fmt::format("\\fs{}", letters.size);
  if (letters.colour && IsReadable(letters)) to += fmt::format("\\cf{}", ColourNumber(*letters.colour));
  if (letters.ground) to += fmt::format("\\chshdng0\\chcbpat{0}\\cb{0}", ColourNumber(*letters.ground));
}

void RtfBody::AppendTableMark() {
  if (tables_.empty()) return;
  out() += "\\intbl";
  if (tables_.size() > 1) out() += fmt::format("\\itap{}", tables_.size());
}

void RtfBody::BeginParagraph() {
  if (is_open_) return;
  Place& place = places_.back();
  if (place.has_paragraph) place.text += "\\par\n";
  place.text += "\\pard";
  AppendTableMark();
  constexpr std::string_view kAlignments[] = {"", "\\qc", "\\qr", "\\qj"};
  place.text += kAlignments[static_cast<std::size_t>(next_.alignment)];
  if (next_.is_right_to_left) place.text += "\\rtlpar";
  if (next_.list != 0) place.text += fmt::format("\\ls{}\\ilvl0\\fi-{}", next_.list, kHanging);
  if (next_.indent != 0) place.text += fmt::format("\\li{}", next_.indent);
  if (next_.above != 0) place.text += fmt::format("\\sb{}", next_.above);
  if (next_.below != 0) place.text += fmt::format("\\sa{}", next_.below);
  ground_ = next_.ground.value_or(Behind());
  if (ground_ != Behind()) place.text += fmt::format("\\cbpat{}", ColourNumber(ground_));
  place.text += ' ';
  place.has_paragraph = true;
  is_open_ = true;
}

void RtfBody::EndParagraph() {
  CloseLink();
  is_open_ = false;
}

void RtfBody::SetLink(std::string_view address) {
  if (address == link_) return;
  CloseLink();
  link_ = address;
}

void RtfBody::CloseLink() {
  if (link_is_open_) out() += "}}";
  link_is_open_ = false;
}

void RtfBody::AddText(std::string_view utf8, const RtfLetters& letters) {
  BeginParagraph();
  if (!link_.empty() && !link_is_open_) {
    out() += "{\\field{\\*\\fldinst{HYPERLINK \"";
    // Neither may end the address, or begin a switch of the field.
    AppendRtfText(out(), platform::ReplaceAll(platform::ReplaceAll(link_, "\\", "%5C"), "\"", "%22"));
    out() += "\"}}{\\fldrslt ";
    link_is_open_ = true;
  }
  out() += '{';
  const std::size_t before = out().size();
  AppendLetters(letters);
  if (out().size() > before) out() += ' ';
  AppendRtfText(out(), utf8);
  out() += '}';
}

void RtfBody::AddLineBreak() {
  BeginParagraph();
  out() += "\\line\n";
}

void RtfBody::AddPicture(std::size_t number) {
  BeginParagraph();
  out() += kPictureMark + std::to_string(number) + kPictureMark;
}

void RtfBody::AddRule() {
  EndParagraph();
  BeginParagraph();
  out() += "\\brdrb\\brdrs\\brdrw10 ";
  EndParagraph();
}

std::size_t RtfBody::AddList(RtfNumbering numbering, std::int64_t first, int indent) {
  if (lists_ >= kMostLists) return 0;
  ++lists_;
  const bool is_bulleted = numbering == RtfNumbering::kBullets;
  list_table_ += fmt::format(
      "{{\\list\\listtemplateid{0}\\listsimple1{{\\listlevel\\levelnfc{1}\\leveljc0\\levelfollow0\\levelstartat{2}"
      "{3}\\fi-{4}\\li{5}}}\\listid{0}}}\n",
      lists_, static_cast<int>(numbering), std::clamp<std::int64_t>(first, 0, 32767),
      is_bulleted ? "{\\leveltext\\'01\\u8226?;}{\\levelnumbers;}" : "{\\leveltext\\'02\\'00.;}{\\levelnumbers\\'01;}",
      kHanging, indent);
  return lists_;
}

int RtfBody::room() const {
  if (tables_.empty()) return kPageWidth;
  const Table& table = tables_.back();
  const std::size_t span = table.cells.empty() ? 1 : table.cells.back().span;
  return std::max(
      table.width * static_cast<int>(std::min(span, table.columns)) / static_cast<int>(table.columns) - 2 * kCellGap,
      300);
}

std::uint32_t RtfBody::Behind() const {
  if (tables_.empty()) return kPaper;
  return tables_.back().cells.empty() ? tables_.back().behind : tables_.back().cells.back().ground;
}

bool RtfBody::BeginTable(bool has_border, std::size_t columns) {
  if (!MayBeginTable()) return false;
  EndParagraph();
  Place& place = places_.back();
  if (place.has_paragraph) place.text += "\\par\n";
  place.has_paragraph = false;
  tables_.push_back({.has_border = has_border,
                     .columns = std::clamp<std::size_t>(columns, 1, kMostCells),
                     .width = room(),
                     .behind = Behind()});
  return true;
}

void RtfBody::BeginRow() {
  EndRow();
  places_.emplace_back();
  tables_.back().has_row = true;
}

std::size_t RtfBody::NextColumn(const Table& table) {
  std::size_t column = 0;
  for (const Cell& cell : table.cells) column += cell.span;
  return column;
}

// What the long cells of earlier rows take of this one, where the next cell would stand.
void RtfBody::AddLongCells() {
  Table& table = tables_.back();
  for (;;) {
    const auto found = table.long_cells.find(NextColumn(table));
    if (found == table.long_cells.end() || table.cells.size() + 1 >= kMostCells || table.may_go_on == 0) return;
    --table.may_go_on;
    table.cells.push_back(found->second.cell);
    if (--found->second.rows == 0) table.long_cells.erase(found);
    FinishCell();
  }
}

// The last cell that a row can have takes what further ones hold.
void RtfBody::BeginCell(std::size_t span, std::size_t rows, std::optional<std::uint32_t> ground) {
  EndCell();
  AddLongCells();
  Table& table = tables_.back();
  if (table.cells.size() == kMostCells) return;
  Cell cell{std::clamp<std::size_t>(span, 1, kMostCells), ground.value_or(table.behind)};
  if (rows > 1) {
    cell.merge = Merge::kGoesOn;
    table.long_cells[NextColumn(table)] = {std::min(rows, kMostRows) - 1, cell};
    cell.merge = Merge::kBegins;
  }
  table.cells.push_back(cell);
  table.may_go_on += kToGoOnPerCell;
  table.has_cell = true;
}

void RtfBody::EndCell() {
  EndParagraph();
  if (is_in_cell() && tables_.back().cells.size() < kMostCells) FinishCell();
}

void RtfBody::FinishCell() {
  Place& place = places_.back();
  if (!place.has_paragraph) {
    place.text += "\\pard";
    AppendTableMark();
    place.text += ' ';
  }
  place.text += tables_.size() == 1 ? "\\cell\n" : "\\nestcell{\\nonesttables\\par}\n";
  place.has_paragraph = false;
  tables_.back().has_cell = false;
}

std::string RtfBody::RowDefinition(const Table& table) {
  const std::size_t columns = std::max(NextColumn(table), table.columns);
  std::string definition = fmt::format("\\trowd\\trgaph{}\\trleft0", kCellGap);
  std::size_t end = 0;
  for (const Cell& cell : table.cells) {
    end += cell.span;
    if (cell.merge != Merge::kNone) definition += cell.merge == Merge::kBegins ? "\\clvmgf" : "\\clvmrg";
    if (table.has_border) {
      for (const char side : {'t', 'l', 'b', 'r'}) definition += fmt::format("\\clbrdr{}\\brdrs\\brdrw10", side);
    }
    if (cell.ground != table.behind) definition += fmt::format("\\clcbpat{}", ColourNumber(cell.ground));
    // No two cells may end at one place.
    definition +=
        fmt::format("\\cellx{}", std::max<std::size_t>(static_cast<std::size_t>(table.width) * end / columns, end));
  }
  return definition;
}

void RtfBody::EndRow() {
  if (!is_in_row()) return;
  EndParagraph();
  if (is_in_cell()) FinishCell();
  if (!tables_.back().cells.empty()) AddLongCells();
  Table& table = tables_.back();
  const std::string text = std::move(places_.back().text);
  places_.pop_back();
  table.has_row = false;
  if (table.cells.empty()) return;
  const std::string definition = RowDefinition(table);
  table.cells.clear();
  if (tables_.size() == 1) {
    out() += definition + "\n" + text + "\\row\n";
  } else {
    out() += text + "{\\*\\nesttableprops" + definition + "\\nestrow}{\\nonesttables\\par}\n";
  }
}

void RtfBody::EndTable() {
  EndRow();
  tables_.pop_back();
  is_open_ = false;
}

std::string RtfBody::Head() const {
  std::string head = "{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1\n{\\fonttbl";
  for (std::size_t i = 0; i < fonts_.size(); ++i) head += fmt::format("{{\\f{}\\fnil\\fcharset0 {};}}", i, fonts_[i]);
  head += "}\n{\\colortbl;";
  for (const std::uint32_t colour : colours_)
    head += fmt::format("\\red{}\\green{}\\blue{};", colour >> 16, colour >> 8 & 255, colour & 255);
  head += "}\n";
  if (lists_ > 0) {
    head += "{\\*\\listtable\n" + list_table_ + "}\n{\\*\\listoverridetable";
    for (std::size_t i = 1; i <= lists_; ++i)
      head += fmt::format("{{\\listoverride\\listid{0}\\listoverridecount0\\ls{0}}}", i);
    head += "}\n";
  }
  return head + "\\paperw11906\\paperh16838\\margl1440\\margr1440\\margt1440\\margb1440\n";
}

std::string RtfBody::Finish() && {
  while (!tables_.empty()) EndTable();
  EndParagraph();
  std::string document = Head();
  document += places_.front().text;
  if (places_.front().has_paragraph) document += "\\par\n";
  return document + "}";
}

}  // namespace quillcast::html
