#include "html/old_colour.h"

#include <algorithm>

#include "platform/text.h"

namespace quillcast::html {
namespace {

// CSS Color 4, 6.1.
constexpr std::string_view kNames =
    " aliceblue antiquewhite aqua aquamarine azure beige bisque black blanchedalmond blue blueviolet brown burlywood "
    "cadetblue chartreuse chocolate coral cornflowerblue cornsilk crimson cyan darkblue darkcyan darkgoldenrod "
    "darkgray "
    "darkgreen darkgrey darkkhaki darkmagenta darkolivegreen darkorange darkorchid darkred darksalmon darkseagreen "
    "darkslateblue darkslategray darkslategrey darkturquoise darkviolet deeppink deepskyblue dimgray dimgrey "
    "dodgerblue "
    "firebrick floralwhite forestgreen fuchsia gainsboro ghostwhite gold goldenrod gray green greenyellow grey "
    "honeydew "
    "hotpink indianred indigo ivory khaki lavender lavenderblush lawngreen lemonchiffon lightblue lightcoral lightcyan "
    "lightgoldenrodyellow lightgray lightgreen lightgrey lightpink lightsalmon lightseagreen lightskyblue "
    "lightslategray lightslategrey lightsteelblue lightyellow lime limegreen linen magenta maroon mediumaquamarine "
    "mediumblue mediumorchid mediumpurple mediumseagreen mediumslateblue mediumspringgreen mediumturquoise "
    "mediumvioletred midnightblue mintcream mistyrose moccasin navajowhite navy oldlace olive olivedrab orange "
    "orangered "
    "orchid palegoldenrod palegreen paleturquoise palevioletred papayawhip peachpuff peru pink plum powderblue purple "
    "rebeccapurple red rosybrown royalblue saddlebrown salmon sandybrown seagreen seashell sienna silver skyblue "
    "slateblue slategray slategrey snow springgreen steelblue tan teal thistle tomato turquoise violet wheat white "
    "whitesmoke yellow yellowgreen ";

constexpr std::size_t kLongest = 128;
constexpr std::size_t kLongestOfOne = 8;  // digits of red, green or blue

bool IsHex(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); }

}  // namespace

std::string OldColour(std::string_view value) {
  std::string text = platform::AsciiLower(platform::Trim(value));
  if (text.empty() || text == "transparent") return {};
  if (text.find(' ') == std::string::npos && kNames.find(" " + text + " ") != std::string_view::npos) return text;
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
