#include "html/rtf_style.h"

#include <algorithm>
#include <array>

#include "html/said_colours.h"
#include "html/style_values.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr const char* kFixedFont = "Courier New";
constexpr std::uint32_t kLinkColour = 0x0000EE;
constexpr std::array kHeadingSizes = {48, 36, 28, 24, 20, 16};  // half points, of h1 to h6 among usual letters
constexpr int kBelowParagraph = 160;                            // twips
constexpr int kAboveHeading = 240;
constexpr int kBelowHeading = 120;

struct LettersRow {
  std::string_view name;
  void (*apply)(RtfLetters& letters);
};
constexpr std::array kLetters = {
    LettersRow{"b", [](RtfLetters& l) { l.bold = true; }},
    LettersRow{"strong", [](RtfLetters& l) { l.bold = true; }},
    LettersRow{"th", [](RtfLetters& l) { l.bold = true; }},
    LettersRow{"i", [](RtfLetters& l) { l.italic = true; }},
    LettersRow{"em", [](RtfLetters& l) { l.italic = true; }},
    LettersRow{"cite", [](RtfLetters& l) { l.italic = true; }},
    LettersRow{"address", [](RtfLetters& l) { l.italic = true; }},
    LettersRow{"u", [](RtfLetters& l) { l.underlined = true; }},
    LettersRow{"ins", [](RtfLetters& l) { l.underlined = true; }},
    LettersRow{"s", [](RtfLetters& l) { l.struck = true; }},
    LettersRow{"strike", [](RtfLetters& l) { l.struck = true; }},
    LettersRow{"del", [](RtfLetters& l) { l.struck = true; }},
    LettersRow{"sup", [](RtfLetters& l) { l.raised = 1; }},
    LettersRow{"sub", [](RtfLetters& l) { l.raised = -1; }},
    LettersRow{"mark", [](RtfLetters& l) { l.ground = 0xFFFF00; }},
    LettersRow{"small", [](RtfLetters& l) { l.size = std::max(l.size * 5 / 6, 2); }},
    LettersRow{"big", [](RtfLetters& l) { l.size = std::min(l.size * 6 / 5, 800); }},
    LettersRow{"code", [](RtfLetters& l) { l.font = kFixedFont; }},
    LettersRow{"kbd", [](RtfLetters& l) { l.font = kFixedFont; }},
    LettersRow{"samp", [](RtfLetters& l) { l.font = kFixedFont; }},
    LettersRow{"tt", [](RtfLetters& l) { l.font = kFixedFont; }},
    LettersRow{"pre", [](RtfLetters& l) { l.font = kFixedFont; }},
};

std::optional<RtfAlignment> AlignmentOf(std::string_view value) {
  struct NamedAlignment {
    std::string_view name;
    RtfAlignment alignment;
  };
  constexpr std::array kAlignments = {
      NamedAlignment{"left", RtfAlignment::kLeft}, NamedAlignment{"center", RtfAlignment::kCentred},
      NamedAlignment{"middle", RtfAlignment::kCentred}, NamedAlignment{"right", RtfAlignment::kRight},
      NamedAlignment{"justify", RtfAlignment::kJustified}};
  const auto* const row = std::ranges::find_if(kAlignments, [&](const NamedAlignment& candidate) {
    return platform::EqualsIgnoringAsciiCase(candidate.name, value);
  });
  return row == kAlignments.end() ? std::nullopt : std::optional(row->alignment);
}

template <typename Value>
void SetIfRead(Value& value, const auto& read) {
  if (read) value = *read;
}

void ApplyWeight(RtfLetters& letters, std::string_view value) {
  letters.bold =
      platform::StartsWithIgnoringAsciiCase(value, "bold") || platform::ParseWholeNumber(value).value_or(0) >= 600;
}

// In the place of what the element has by itself; what is round it is drawn through it, whatever it says.
void ApplyDecoration(RtfLetters& letters, const RtfLetters& around, std::string_view value) {
  const std::string lower = platform::AsciiLower(value);
  letters.underlined = around.underlined || lower.find("underline") != std::string::npos;
  letters.struck = around.struck || lower.find("line-through") != std::string::npos;
}

void ApplyDeclaration(RtfStyle& style, const RtfLetters& around, std::string_view property, std::string_view value) {
  RtfLetters& letters = style.letters;
  if (property == "font-size") SetIfRead(letters.size, ReadLetterSize(value, around.size));
  if (property == "font-family") letters.font = ReadFontFamily(value);
  if (property == "font-weight") ApplyWeight(letters, value);
  if (property == "font-style") letters.italic = platform::EqualsIgnoringAsciiCase(value, "italic");
  if (property == "text-decoration") ApplyDecoration(letters, around, value);
  if (property == "text-align") SetIfRead(style.paragraph.alignment, AlignmentOf(value));
}

void ApplyColours(RtfStyle& style, const RtfLetters& around, const SaidColours& said, bool is_of_lines) {
  if (said.letters || said.has_letters_of_around)
    style.letters.colour = said.has_letters_of_around ? around.colour : said.letters;
  if (!said.ground && !said.has_picture) return;
  style.letters.are_over_picture = !said.ground;
  if (is_of_lines) {
    if (said.ground) style.ground = said.ground;
    style.letters.ground.reset();
  } else if (said.ground) {
    style.letters.ground = said.ground;
  }
}

void ApplyBlock(RtfStyle& style, HtmlRole role, const HtmlToken& token) {
  RtfParagraph& paragraph = style.paragraph;
  if (role == HtmlRole::kCell) paragraph.indent = 0;
  paragraph.above = 0;
  paragraph.below = role == HtmlRole::kParagraph ? kBelowParagraph : 0;
  if (role == HtmlRole::kHeading) {
    paragraph.above = kAboveHeading;
    paragraph.below = kBelowHeading;
    style.letters.bold = true;
    const int usual = kHeadingSizes.at(static_cast<std::size_t>(token.name[1] - '1'));
    style.letters.size = std::clamp(style.letters.size * usual / kUsualHalfPoints, 2, 800);
  }
  if (role == HtmlRole::kPreformatted) style.is_preformatted = true;
  if (token.name == "center" || token.name == "th") paragraph.alignment = RtfAlignment::kCentred;
}

void ApplyAttributes(RtfStyle& style, const RtfLetters& around, HtmlRole role, const HtmlTokenizer& tokenizer,
                     const HtmlToken& token) {
  if (token.name == "font") {
    SetIfRead(style.letters.size, ReadFontSize(tokenizer.Value(token, "size")));
    const std::string family = ReadFontFamily(tokenizer.Value(token, "face"));
    if (!family.empty()) style.letters.font = family;
  }
  const bool has_lines = IsBlock(role) || IsRowGroup(token.name) || token.name == "html";
  if (has_lines && role != HtmlRole::kTable)
    SetIfRead(style.paragraph.alignment, AlignmentOf(tokenizer.Value(token, "align")));
  if (const std::string direction = tokenizer.Value(token, "dir"); !direction.empty())
    style.paragraph.is_right_to_left = platform::EqualsIgnoringAsciiCase(direction, "rtl");
  EachDeclaration(tokenizer.Value(token, "style"), [&](std::string_view property, std::string_view value) {
    ApplyDeclaration(style, around, property, value);
  });
  ApplyColours(style, around, SaidColoursOf(tokenizer, token, has_lines), has_lines);
}

}  // namespace

void ApplyElement(RtfStyle& style, HtmlRole role, const HtmlTokenizer& tokenizer, const HtmlToken& token,
                  bool leads_somewhere) {
  const RtfLetters around = style.letters;
  if (leads_somewhere) style.letters.colour = kLinkColour;
  if (leads_somewhere) style.letters.underlined = true;
  const auto* const letters = std::ranges::find(kLetters, std::string_view(token.name), &LettersRow::name);
  if (letters != kLetters.end()) letters->apply(style.letters);
  if (IsBlock(role)) ApplyBlock(style, role, token);
  if (!token.attributes.empty()) ApplyAttributes(style, around, role, tokenizer, token);
}

std::size_t SpanOf(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
  const auto span = platform::WholeNumberBetween(tokenizer.Value(token, "colspan"), 1,
                                                 static_cast<std::int64_t>(RtfBody::kMostCells));
  return static_cast<std::size_t>(span.value_or(1));
}

std::size_t RowsOf(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
  const auto most = static_cast<std::int64_t>(RtfBody::kMostRows);
  const auto rows = platform::WholeNumberBetween(tokenizer.Value(token, "rowspan"), 0, 65534).value_or(1);
  return static_cast<std::size_t>(rows == 0 ? most : std::min(rows, most));
}

bool HasBorder(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
  const HtmlAttribute* const border = tokenizer.Find(token, "border");
  return border != nullptr && tokenizer.RawValue(*border) != "0";
}

RtfNumbering NumberingOf(std::string_view type) {
  if (type == "a") return RtfNumbering::kLowerLetters;
  if (type == "A") return RtfNumbering::kUpperLetters;
  if (type == "i") return RtfNumbering::kLowerRoman;
  return type == "I" ? RtfNumbering::kUpperRoman : RtfNumbering::kDigits;
}

}  // namespace quillcast::html
