#include "html/hidden_words.h"

#include <algorithm>
#include <array>

#include "html/characters.h"
#include "html/html_elements.h"
#include "html/style_values.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::size_t kMostOpenKept = 100;
constexpr double kPointsOfReaders = 12;  // of letters of which nothing is said

bool IsOfAround(std::string_view value) {
  constexpr auto kWords = std::to_array<std::string_view>({"inherit", "unset", "currentcolor", "smaller", "larger"});
  const auto is_value = [&](std::string_view word) { return platform::EqualsIgnoringAsciiCase(word, value); };
  return value.ends_with('%') || std::ranges::any_of(kWords, is_value);
}

// Nothing for one that is no more than that around it, or many times nothing. One that is not read may be any: what it
// is said of is seen.
std::optional<bool> SaysTooSmall(std::string_view size, bool has_none_around) {
  const auto pixels = ReadLength(size, kPointsOfReaders, kPointsOfReaders);
  const bool is_of_around = pixels != ReadLength(size, 0, kPointsOfReaders);
  if (pixels && *pixels < 0) return {};
  if (pixels && !is_of_around) return *pixels <= 1;
  const auto points = ReadPoints(size, kPointsOfReaders, kPointsOfReaders);
  const bool is_larger = points && *points > kPointsOfReaders;
  return (is_of_around || IsOfAround(size)) && (has_none_around || !is_larger) ? std::nullopt : std::optional(false);
}

bool SaysNone(std::string_view size) { return ReadLength(size, kPointsOfReaders, kPointsOfReaders) == 0.0; }

}  // namespace

// Of several declarations any that would show them counts: a mark of importance may stand at each.
HiddenWords::Letters HiddenWords::LettersWithin(const HtmlTokenizer& page, const HtmlToken& tag, Letters letters) {
  const std::string style = page.Value(tag, "style");
  const bool has_its_own =
      tag.name == "button" || tag.name == "select" || tag.name == "mark";  // by what readers bring along
  if (has_its_own || style.find("/*") != std::string::npos) return {};
  bool is_seen = false;
  bool shines_through = false;
  bool has_picture = false;  // that may be cut to the letters
  if (tag.name == "font") {
    if (ReadFontSize(page.Value(tag, "size"))) letters.are_too_small = false;
    if (page.Find(tag, "color") != nullptr) letters.are_transparent = false;
  }
  EachDeclaration(style, [&](std::string_view property, std::string_view value) {
    if (property == "font-size") {
      letters.are_too_small = SaysTooSmall(value, letters.have_no_size).value_or(letters.are_too_small);
      letters.have_no_size = letters.are_too_small && (letters.have_no_size || SaysNone(value));
      is_seen = is_seen || !letters.are_too_small;
    } else if (property == "color" && !IsOfAround(value)) {
      letters.are_transparent = platform::EqualsIgnoringAsciiCase(value, "transparent");
      shines_through = shines_through || !letters.are_transparent;
    } else if (property == "font") {  // whose size is not read
      is_seen = is_seen || !IsOfAround(value);
    } else if (property == "all") {
      is_seen = shines_through = true;
    } else if (property == "background" || property == "background-image") {
      has_picture = has_picture || NamesPicture(value);
    }
  });
  letters.are_too_small = letters.are_too_small && !is_seen;
  letters.are_transparent = letters.are_transparent && !shines_through && !has_picture;
  return letters;
}

HiddenWords::Sheets HiddenWords::ReadSheets(std::string_view page) {
  const std::string lower = platform::AsciiLower(page);
  Sheets sheets;
  const std::string_view all = lower;
  // Letters without a colour of their own, of which something else is seen.
  constexpr auto kDrawn =
      std::to_array<std::string_view>({"background-clip", "text-fill", "text-stroke", "text-shadow"});
  for (const auto what : kDrawn) sheets.say_colours = sheets.say_colours || all.find(what) != std::string_view::npos;
  for (std::size_t at = all.find("<style"); at != std::string_view::npos; at = all.find("<style", at)) {
    const std::string_view sheet = all.substr(at, all.find("</style", at) - at);
    const auto says = [&](std::string_view what) { return sheet.find(what) != std::string_view::npos; };
    sheets.say_sizes = sheets.say_sizes || says("font-size") || says("font:") || says("font :");
    sheets.say_colours = sheets.say_colours || says("color");
    at += sheet.size();
  }
  return sheets;
}

void HiddenWords::Start(const HtmlTokenizer& page, const HtmlToken& tag) {
  if (HasNoContent(tag.name)) return;
  const HtmlRole role = RoleOf(tag.name);
  if (IsBlock(role)) open_.clear();
  if (tag.attributes.empty() && open_.empty()) return;
  const bool may_differ =
      role == HtmlRole::kLink || page.Find(tag, "class") != nullptr || page.Find(tag, "id") != nullptr;
  Letters letters = LettersWithin(page, tag, may_differ || open_.empty() ? Letters() : open_.back().letters);
  if (letters.are_too_small || letters.are_transparent) {
    if (!sheets_) sheets_ = ReadSheets(page_);
    letters.are_too_small = letters.are_too_small && !sheets_->say_sizes;
    letters.are_transparent = letters.are_transparent && !sheets_->say_colours && transparency_ == Transparency::kHides;
  }
  const bool counts = !open_.empty() || letters.are_too_small || letters.are_transparent;
  if (!counts) return;
  if (open_.size() == kMostOpenKept) return open_.clear();  // what is not kept count of hides nothing
  open_.push_back({tag.name, letters});
}

// One of an element that began before ends all of these.
void HiddenWords::End(const std::string& name) {
  const auto last = std::find_if(open_.rbegin(), open_.rend(), [&](const Open& open) { return open.name == name; });
  if (last == open_.rend()) return open_.clear();
  open_.erase(last.base() - 1, open_.end());
}

void HiddenWords::Take(const HtmlTokenizer& page, const HtmlToken& tag) {
  if (tag.kind == HtmlTokenKind::kStartTag) Start(page, tag);
  if (tag.kind == HtmlTokenKind::kEndTag && !open_.empty()) End(tag.name);
}

bool HiddenWords::Hold(std::string_view text) const {
  if (open_.empty()) return false;
  const Letters& letters = open_.back().letters;
  if (!letters.are_too_small && !letters.are_transparent) return false;
  const std::string words = platform::ReplaceAll(DecodeCharacterReferences(text), "\u00A0", "");
  return words.find_first_not_of(kSpaces) != std::string::npos;
}

}  // namespace quillcast::html
