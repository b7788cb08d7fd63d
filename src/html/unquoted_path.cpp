#include "html/unquoted_path.h"

#include "html/address_reach.h"

namespace quillcast::html {
namespace {

constexpr std::string_view kSlashes = "/\\";

bool HasSlash(std::string_view text) { return text.find_first_of(kSlashes) != std::string_view::npos; }
bool HasValue(const HtmlAttribute& attribute) { return attribute.value_begin > attribute.name_end; }

// Quotation marks around it would stand in the source between the name and the value.
bool IsUnquoted(std::string_view source, std::size_t value_begin) {
  return source[value_begin - 1] != '"' && source[value_begin - 1] != '\'';
}

}  // namespace

std::size_t LastOfValue(const HtmlTokenizer& page, const HtmlToken& tag, std::size_t index) {
  const HtmlAttribute& first = tag.attributes[index];
  const std::string_view value = page.RawValue(first);
  const std::string_view source = page.Source(tag);
  if (!HasValue(first) || !HasSlash(value) || !IsUnquoted(source, first.value_begin - tag.begin) ||
      ReachOf(value) == AddressReach::kNet) {
    return index;
  }
  std::size_t last = index;
  for (std::size_t i = index + 1; i < tag.attributes.size() && !HasValue(tag.attributes[i]); ++i) {
    const HtmlAttribute& word = tag.attributes[i];
    const std::string_view name = page.RawName(word);
    // A name ends at a plain slash; behind the one of a last name there is no other word.
    const bool goes_on = i + 1 < tag.attributes.size() && !HasValue(tag.attributes[i + 1]) &&
                         source[word.name_end - tag.begin] == '/' &&
                         tag.attributes[i + 1].name_begin == word.name_end + 1;
    const bool is_file = last > index && name.find('.') != std::string_view::npos;
    if (HasSlash(name) || is_file) last = i;
    if (goes_on) last = i + 1;
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
