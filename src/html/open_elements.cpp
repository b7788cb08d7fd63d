#include "html/open_elements.h"

#include <algorithm>
#include <array>

#include "html/html_elements.h"

namespace quillcast::html {
namespace {

using Kind = OpenElements::Kind;

constexpr std::size_t kMostOpenElements = 1000;
constexpr std::size_t kMostInLines = 750;  // so that there is room for the blocks that end them
constexpr std::size_t kMostOuter = 500;

struct Known {
  std::string_view name;
  Kind kind;
};
// In the order of the names, for a binary search. What is not here is a block, or stands in lines, by its role.
constexpr auto kKnown = std::to_array<Known>({{"a", Kind::kLink},
                                              {"address", Kind::kPlain},
                                              {"applet", Kind::kWall},
                                              {"b", Kind::kFormatting},
                                              {"big", Kind::kFormatting},
                                              {"br", Kind::kBreaking},
                                              {"button", Kind::kButton},
                                              {"caption", Kind::kCaption},
                                              {"code", Kind::kFormatting},
                                              {"colgroup", Kind::kColumns},
                                              {"dd", Kind::kTerm},
                                              {"desc", Kind::kWall},
                                              {"dialog", Kind::kBlock},
                                              {"dir", Kind::kBlock},
                                              {"div", Kind::kPlain},
                                              {"dl", Kind::kTerms},
                                              {"dt", Kind::kTerm},
                                              {"em", Kind::kFormatting},
                                              {"embed", Kind::kBreaking},
                                              {"font", Kind::kFormatting},
                                              {"foreignobject", Kind::kWall},
                                              {"h1", Kind::kHeading},
                                              {"h2", Kind::kHeading},
                                              {"h3", Kind::kHeading},
                                              {"h4", Kind::kHeading},
                                              {"h5", Kind::kHeading},
                                              {"h6", Kind::kHeading},
                                              {"hgroup", Kind::kBlock},
                                              {"hr", Kind::kBlock},
                                              {"i", Kind::kFormatting},
                                              {"img", Kind::kBreaking},
                                              {"li", Kind::kItem},
                                              {"listing", Kind::kBlock},
                                              {"marquee", Kind::kWall},
                                              {"math", Kind::kDrawing},
                                              {"menu", Kind::kBlock},
                                              {"nobr", Kind::kFormatting},
                                              {"noscript", Kind::kBlock},
                                              {"object", Kind::kWall},
                                              {"ol", Kind::kList},
                                              {"optgroup", Kind::kOptions},
                                              {"option", Kind::kOption},
                                              {"p", Kind::kParagraph},
                                              {"rp", Kind::kRubyPart},
                                              {"rt", Kind::kRubyPart},
                                              {"ruby", Kind::kRuby},
                                              {"s", Kind::kFormatting},
                                              {"search", Kind::kBlock},
                                              {"select", Kind::kSelect},
                                              {"small", Kind::kFormatting},
                                              {"span", Kind::kBreaking},
                                              {"strike", Kind::kFormatting},
                                              {"strong", Kind::kFormatting},
                                              {"sub", Kind::kBreaking},
                                              {"sup", Kind::kBreaking},
                                              {"svg", Kind::kDrawing},
                                              {"table", Kind::kTable},
                                              {"tbody", Kind::kRowGroup},
                                              {"td", Kind::kCell},
                                              {"template", Kind::kWall},
                                              {"tfoot", Kind::kRowGroup},
                                              {"th", Kind::kCell},
                                              {"thead", Kind::kRowGroup},
                                              {"tr", Kind::kRow},
                                              {"tt", Kind::kFormatting},
                                              {"u", Kind::kFormatting},
                                              {"ul", Kind::kList},
                                              {"var", Kind::kBreaking},
                                              {"xmp", Kind::kBlock}});
static_assert(std::ranges::is_sorted(kKnown, {}, &Known::name));

Kind KindOf(std::string_view name) {
  const auto* const found = std::ranges::lower_bound(kKnown, name, {}, &Known::name);
  if (found != kKnown.end() && found->name == name) return found->kind;
  return IsBlock(RoleOf(name)) ? Kind::kBlock : Kind::kInline;
}

using Kinds = std::uint32_t;
template <typename... All>
constexpr Kinds Bits(All... kinds) {
  return ((Kinds{1} << static_cast<unsigned>(kinds)) | ...);
}
constexpr bool IsIn(Kinds kinds, Kind kind) { return (kinds & Bits(kind)) != 0; }

using enum OpenElements::Kind;
constexpr Kinds kPartsOfTable = Bits(kRowGroup, kRow, kCell, kCaption, kColumns);
constexpr Kinds kWalls = Bits(kTable, kCell, kCaption, kWall);
constexpr Kinds kBlocks =
    Bits(kParagraph, kPlain, kBlock, kHeading, kList, kItem, kTerms, kTerm, kTable) | kPartsOfTable;
constexpr Kinds kRows = Bits(kRow, kCell, kCaption, kColumns);

struct Rule {
  Kinds starts;
  Kinds ends;
  Kinds stops;  // no further out than these
};
constexpr auto kRules = std::to_array<Rule>({
    {kBlocks & ~kPartsOfTable, Bits(kParagraph), kWalls | Bits(kButton)},
    {Bits(kItem), Bits(kItem), kWalls | Bits(kBlock, kHeading, kList, kTerms, kTerm, kButton)},
    {Bits(kTerm), Bits(kTerm), kWalls | Bits(kBlock, kHeading, kList, kTerms, kItem, kButton)},
    {Bits(kCell), Bits(kCell, kCaption, kColumns), Bits(kTable)},
    {Bits(kRow), kRows, Bits(kTable)},
    {Bits(kRowGroup), kRows | Bits(kRowGroup), Bits(kTable)},
    {Bits(kCaption, kColumns), Bits(kCaption, kColumns), Bits(kTable)},
    {Bits(kOption), Bits(kOption), kWalls | Bits(kSelect)},
    {Bits(kOptions), Bits(kOption, kOptions), kWalls | Bits(kSelect)},
    {Bits(kRubyPart), Bits(kRubyPart), kWalls | Bits(kRuby)},
    {Bits(kLink), Bits(kLink), kWalls},
    {Bits(kButton), Bits(kButton), Bits(kTable, kCell, kCaption, kWall)},
    {(kBlocks & ~kPartsOfTable) | Bits(kFormatting, kBreaking, kRuby), Bits(kDrawing), Bits(kWall)},
});

bool IsOfPage(std::string_view name) { return name == "html" || name == "head" || name == "body"; }

// How far out the element of an end tag is looked for.
Kinds StopsOf(Kind ended) {
  if (IsIn(kPartsOfTable, ended)) return Bits(kTable);
  if (ended == kTable) return Bits(kWall);
  if (ended == kWall) return 0;
  if (ended == kItem) return kWalls | Bits(kList);
  const bool goes_beyond_blocks = IsIn(kBlocks | Bits(kFormatting, kLink, kWall, kButton), ended);
  return goes_beyond_blocks ? kWalls : kWalls | kBlocks;
}

}  // namespace

void OpenElements::EndBefore(const HtmlToken& start) {
  const Kind kind = KindOf(start.name);
  for (const Rule& rule : kRules) {
    if (!IsIn(rule.starts, kind)) continue;
    for (std::size_t i = open_.size(); i-- > 0;) {
      if (IsIn(rule.ends, open_[i].kind)) {
        Cut(i);
      } else if (IsIn(rule.stops, open_[i].kind)) {
        break;
      }
    }
  }
  if (kind == kHeading && !open_.empty() && open_.back().kind == kHeading) Cut(open_.size() - 1);
}

void OpenElements::Cut(std::size_t size) {
  open_.resize(size);
  too_deep_ = 0;
}

bool OpenElements::IsInDrawing() const {
  for (std::size_t i = open_.size(); i-- > 0;) {
    if (open_[i].kind == kDrawing || open_[i].kind == kWall) return open_[i].kind == kDrawing;
  }
  return false;
}

bool OpenElements::IsIgnored(std::string_view name, Kind kind) const {
  if (IsIn(kPartsOfTable, kind)) {
    return std::ranges::none_of(open_, [](const Element& open) { return open.kind == kTable; });
  }
  return IsOfPage(name) && std::ranges::any_of(open_, [](const Element& open) { return !IsOfPage(open.name); });
}

bool OpenElements::MayHold(const HtmlTokenizer& page, const HtmlToken& start) const {
  if (HasNoContent(start.name)) return false;
  const Kind kind = KindOf(start.name);
  if (IsIgnored(start.name, kind)) return false;
  const bool may_be_empty = kind == kDrawing || (kind == kInline && IsInDrawing());
  return !may_be_empty || !page.Source(start).ends_with("/>");
}

void OpenElements::Open(const std::string& name) {
  const bool is_drawn = name == "template" && IsInDrawing();  // which is none there
  const Kind kind = is_drawn ? kInline : KindOf(name);
  if (open_.size() < (IsIn(kBlocks, kind) ? kMostOpenElements : kMostInLines)) return open_.push_back({name, kind});
  if (IsIn(kBlocks, kind)) ++too_deep_;
}

// But the innermost of those that are tables, with its row and its cell: what ends there is told by it.
void OpenElements::ForgetOuter() {
  if (open_.size() < kMostOuter) return;
  const auto end = open_.begin() + kMostOuter / 2;
  const auto is_table = [](const Element& open) { return open.kind == kTable; };
  const auto behind_table = std::find_if(std::make_reverse_iterator(end), open_.rend(), is_table).base();
  const auto table = behind_table == open_.begin() ? end : behind_table - 1;
  const auto is_other = [](const Element& open) { return !IsIn(kPartsOfTable | Bits(kTable), open.kind); };
  open_.erase(std::remove_if(table, end, is_other), end);
  open_.erase(open_.begin(), table);
}

OpenElements::Ended OpenElements::End(std::string_view name) {
  const Kind kind = KindOf(name);
  if (too_deep_ > 0) {
    if (IsIn(kBlocks, kind)) --too_deep_;
    return {};
  }
  const Kinds stops = StopsOf(kind);
  bool has_block = false;
  for (std::size_t i = open_.size(); i-- > 0;) {
    if (open_[i].name == name || (kind == kHeading && open_[i].kind == kHeading)) {
      const bool stays_in = has_block && IsIn(Bits(kFormatting, kLink), kind);
      if (stays_in) open_.erase(open_.begin() + static_cast<std::ptrdiff_t>(i));
      if (!stays_in) Cut(i);
      return {.place = i, .with_inner = !stays_in};
    }
    if (IsIn(stops, open_[i].kind)) return {.is_of_wall = open_[i].kind == kWall};
    has_block = has_block || IsIn(kBlocks, open_[i].kind);
  }
  return {};
}

}  // namespace quillcast::html
