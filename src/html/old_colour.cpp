#include "html/old_colour.h"

#include <algorithm>

#include "html/colour_names.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::size_t kLongest = 128;
constexpr std::size_t kLongestOfOne = 8;  // digits of red, green or blue

bool IsHex(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); }

}  // namespace

std::string OldColour(std::string_view value) {
  std::string text = platform::AsciiLower(platform::Trim(value));
  if (text.empty() || text == "transparent") return {};
  if (NamedColour(text)) return text;
  if (text.size() == 4 && text[0] == '#' && std::all_of(text.begin() + 1, text.end(), IsHex)) return text;
  text.resize(std::min(text.size(), kLongest));
  if (text[0] == '#') text.erase(0, 1);
  std::replace_if(
      text.begin(), text.end(), [](char c) { return !IsHex(c); }, '0');
  while (text.empty() || text.size() % 3 != 0) text += '0';
  std::size_t length = text.size() / 3;
  std::size_t from = length > kLongestOfOne ? length - kLongestOfOne : 0;
  length -= from;
  const auto all_begin_with_none = [&] {
    return text[from] == '0' && text[text.size() / 3 + from] == '0' && text[text.size() / 3 * 2 + from] == '0';
  };
  for (; length > 2 && all_begin_with_none(); --length) ++from;
  std::string colour = "#";
  for (std::size_t part = 0; part < 3; ++part) {
    const std::string digits = text.substr(text.size() / 3 * part + from, std::min<std::size_t>(length, 2));
    colour.append(2 - digits.size(), '0').append(digits);
  }
  return colour;
}

}  // namespace quillcast::html
