#include "html/word_list.h"

#include <algorithm>

#include "html/html_elements.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::string_view kProperty = "mso-list:";
constexpr std::size_t kLongestSign = 20;  // bytes
constexpr std::size_t kMostLevels = 9;    // that word processors know

// What stands behind "mso-list:" in a style, in lower case; empty where it has none.
std::string ListStyle(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
  if (token.attributes.empty() || tokenizer.Find(token, "style") == nullptr) return {};
  const std::string style = platform::AsciiLower(tokenizer.Value(token, "style"));
  const std::size_t at = style.find(kProperty);
  if (at == std::string::npos) return {};
  const std::string_view rest = std::string_view(style).substr(at + kProperty.size());
  return std::string(platform::Trim(rest.substr(0, rest.find(';'))));
}

// 2 of "l0 level2 lfo1"; 0 where it names none.
std::size_t LevelOf(std::string_view list_style) {
  constexpr std::string_view kLevel = "level";
  const std::size_t at = list_style.find(kLevel);
  if (at == std::string_view::npos || at + kLevel.size() >= list_style.size()) return 0;
  const char digit = list_style[at + kLevel.size()];
  return digit >= '1' && digit <= '9' ? std::min(static_cast<std::size_t>(digit - '0'), kMostLevels) : 0;
}

// Numbers stay; bullets, which are signs of symbol fonts or the letter "o", become that of other lists.
std::string Marker(std::string_view sign) {
  const std::string text = platform::ReplaceAll(sign, "\u00A0", " ");
  const std::string_view trimmed = platform::Trim(text);
  const bool has_number = std::any_of(trimmed.begin(), trimmed.end(), platform::AsciiIsAlnum);
  return has_number && trimmed != "o" ? std::string(trimmed) + ' ' : "- ";
}

}  // namespace

bool WordList::Start(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
  const bool is_block = IsBlock(RoleOf(token.name));
  if (sign_depth_ > 0 && !is_block) {
    if (!HasNoContent(token.name)) ++sign_depth_;
    return true;
  }
  if (level_ > 0 && is_block) EndItem();
  const std::string style = ListStyle(tokenizer, token);
  if (level_ > 0 && !is_marked_ && style == "ignore") {
    sign_depth_ = 1;
    return true;
  }
  if (!is_block) return false;
  const bool follows = follows_item_;
  follows_item_ = false;
  const std::size_t level = LevelOf(style);
  if (token.name != "p" || level == 0) return false;
  if (follows) layout_.CloseUp();
  layout_.Block(follows ? TextLayout::Margin::kLine : TextLayout::Margin::kBlankLine);
  level_ = level;
  return true;
}

bool WordList::Text(std::string_view text) {
  if (sign_depth_ == 0) return false;
  sign_ += text.substr(0, kLongestSign - std::min(kLongestSign, sign_.size()));
  return true;
}

bool WordList::End(const HtmlToken& token) {
  const bool is_block = IsBlock(RoleOf(token.name));
  if (sign_depth_ > 0 && !is_block) {
    if (--sign_depth_ == 0) EndSign();
    return true;
  }
  if (level_ == 0 || !is_block) return false;
  EndItem();
  if (token.name != "p") return false;
  layout_.Block(TextLayout::Margin::kBlankLine);
  return true;
}

void WordList::EndSign() {
  const std::string marker = Marker(sign_);
  const std::string indentation(2 * (level_ - 1), ' ');
  layout_.PushPrefix(indentation + marker, indentation + std::string(marker.size(), ' '));
  is_marked_ = true;
  sign_depth_ = 0;
  sign_.clear();
}

void WordList::EndItem() {
  if (sign_depth_ > 0) EndSign();  // it was never closed
  if (is_marked_) layout_.PopPrefix();
  is_marked_ = false;
  level_ = 0;
  follows_item_ = true;
}

}  // namespace quillcast::html
