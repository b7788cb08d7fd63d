#include "html/hidden_words.h"

#include <algorithm>

#include "html/html_elements.h"
#include "html/style_values.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::size_t kMostOpen = 100;
constexpr double kUsualPoints = 12;

// Nothing where it says none, or one of that around it.
std::optional<bool> SaysTooSmall(std::string_view size) {
  const auto pixels = ReadLength(size, kUsualPoints, kUsualPoints);
  const bool is_of_around = pixels != ReadLength(size, 0, kUsualPoints);
  if (pixels) return is_of_around ? std::nullopt : std::optional(*pixels <= 1);
  const auto points = ReadPoints(size, 0, kUsualPoints);
  return points && *points > 1 ? std::optional(false) : std::nullopt;
}

}  // namespace

HiddenWords::Letters HiddenWords::LettersWithin(const HtmlTokenizer& page, const HtmlToken& tag, Letters letters) {
  bool has_picture = false;  // that may be cut to the letters
  if (tag.name == "font" && ReadFontSize(page.Value(tag, "size"))) letters.are_too_small = false;
  EachDeclaration(page.Value(tag, "style"), [&](std::string_view property, std::string_view value) {
    if (property == "font-size") letters.are_too_small = SaysTooSmall(value).value_or(letters.are_too_small);
    if (property == "color" && platform::EqualsIgnoringAsciiCase(value, "transparent")) letters.are_transparent = true;
    if (property == "color" && ReadColour(value)) letters.are_transparent = false;
    if (property == "background" || property == "background-image") has_picture = has_picture || NamesPicture(value);
  });
  if (has_picture) letters.are_transparent = false;
  return letters;
}

void HiddenWords::Start(const HtmlTokenizer& page, const HtmlToken& tag) {
  if (HasNoContent(tag.name)) return;
  const HtmlRole role = RoleOf(tag.name);
  if (IsBlock(role)) open_.clear();
  if (tag.attributes.empty() && open_.empty()) return;
  const bool may_differ =
      role == HtmlRole::kLink || page.Find(tag, "class") != nullptr || page.Find(tag, "id") != nullptr;
  const Letters letters = LettersWithin(page, tag, may_differ || open_.empty() ? Letters() : open_.back().letters);
  const bool counts = !open_.empty() || letters.are_too_small || letters.are_transparent;
  if (counts && open_.size() < kMostOpen) open_.push_back({tag.name, letters});
}

void HiddenWords::End(const std::string& name) {
  const auto last = std::find_if(open_.rbegin(), open_.rend(), [&](const Open& open) { return open.name == name; });
  if (last != open_.rend()) {
    open_.erase(last.base() - 1, open_.end());
  } else if (IsBlock(RoleOf(name))) {
    open_.clear();
  }
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
  return words.find_first_not_of(" \t\r\n\f") != std::string::npos;
}

}  // namespace quillcast::html
