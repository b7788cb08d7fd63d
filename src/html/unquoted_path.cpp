#include "html/unquoted_path.h"

#include <algorithm>
#include <array>

#include "html/address_reach.h"
#include "html/characters.h"
#include "html/html_css.h"
#include "html/local_pictures_address.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

bool HasSlash(std::string_view text) { return text.find_first_of(kSlashes) != std::string_view::npos; }
bool HasValue(const HtmlAttribute& attribute) { return attribute.value_begin > attribute.name_end; }

// Quotation marks around it would stand in the source between the name and the value.
bool IsUnquoted(std::string_view source, std::size_t value_begin) {
  return source[value_begin - 1] != '"' && source[value_begin - 1] != '\'';
}

// As the files do that pages lead to. A folder may have a dot in its name too: "/home/ada.love".
bool EndsAsFile(std::string_view address) {
  constexpr std::size_t kLongestEnd = 6;
  constexpr auto kEnds = std::to_array<std::string_view>(
      {".png", ".jpg",  ".jpeg",  ".jpe", ".jfif", ".gif",  ".webp", ".svg", ".bmp", ".ico", ".avif", ".tif", ".tiff",
       ".htm", ".html", ".xhtml", ".php", ".asp",  ".aspx", ".jsp",  ".pdf", ".css", ".js",  ".mp4",  ".webm"});
  const std::string_view path = address.substr(0, address.find_first_of("?#"));
  const std::string end = platform::AsciiLower(path.substr(path.size() - std::min(path.size(), kLongestEnd)));
  return std::any_of(kEnds.begin(), kEnds.end(), [&](std::string_view one) { return end.ends_with(one); });
}

// How many are open at its end: one of "x:url(C:/My".
std::ptrdiff_t OpenBrackets(std::string_view text) {
  return std::count(text.begin(), text.end(), '(') - std::count(text.begin(), text.end(), ')');
}

bool HoldsUrl(std::string_view style) {
  return std::search(style.begin(), style.end(), kUrl.begin(), kUrl.end(),
                     [](char one, char other) { return platform::AsciiLower(one) == other; }) != style.end();
}

}  // namespace

std::size_t LastOfWord(const HtmlTokenizer& page, const HtmlToken& tag, std::size_t index) {
  const std::string_view source = page.Source(tag);
  for (; index + 1 < tag.attributes.size(); ++index) {
    const std::size_t end = tag.attributes[index].name_end;
    const HtmlAttribute& next = tag.attributes[index + 1];
    if (HasValue(tag.attributes[index]) || HasValue(next)) break;
    if (source[end - tag.begin] != '/' || next.name_begin != end + 1) break;
  }
  return index;
}

std::size_t LastOfValue(const HtmlTokenizer& page, const HtmlToken& tag, std::size_t index) {
  const HtmlAttribute& first = tag.attributes[index];
  const std::string_view value = page.RawValue(first);
  const std::string_view source = page.Source(tag);
  if (!HasValue(first) || !HasSlash(value) || !IsUnquoted(source, first.value_begin - tag.begin)) return index;
  const AddressReach reach = ReachOf(value);
  if (reach == AddressReach::kNet) return index;
  std::size_t last = index;
  const bool is_style = HoldsUrl(value);
  std::ptrdiff_t open = OpenBrackets(value);
  bool is_whole = is_style ? open <= 0 : EndsAsFile(value);
  for (std::size_t i = index + 1; i < tag.attributes.size() && !HasValue(tag.attributes[i]); ++i) {
    const std::size_t begin = tag.attributes[i].name_begin;
    i = LastOfWord(page, tag, i);
    const std::string_view word = source.substr(begin - tag.begin, tag.attributes[i].name_end - begin);
    if (ReachOf(word) != AddressReach::kNeither) break;  // an address of its own
    // Such as "{{#if x}}hidden{{/if}}". A folder of a drive may be called so.
    if (HoldsPlaceholder(word) && (is_whole || reach != AddressReach::kFile)) break;
    const bool is_file = last > index && word.find('.') != std::string_view::npos;
    const bool is_end = is_style && OpenBrackets(word) < 0;
    const bool belongs = is_whole ? word.find('\\') != std::string_view::npos : HasSlash(word) || is_file || is_end;
    open += OpenBrackets(word);
    if (belongs) last = i;
    if (is_style || belongs) is_whole = is_style ? open <= 0 : EndsAsFile(word);
  }
  return last;
}

std::string_view WholeValue(const HtmlTokenizer& page, const HtmlToken& tag, const HtmlAttribute& attribute) {
  const auto index = static_cast<std::size_t>(&attribute - tag.attributes.data());
  const std::size_t last = LastOfValue(page, tag, index);
  if (last == index) return page.RawValue(attribute);
  const std::size_t end = tag.attributes[last].name_end;
  return page.Source(tag).substr(attribute.value_begin - tag.begin, end - attribute.value_begin);
}

}  // namespace quillcast::html
