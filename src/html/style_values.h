// What the attributes and the inline styles of HTML say about colours, sizes and fonts.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quillcast::html {

// Calls `take` with each declaration of a style attribute: the property in small letters, the value without
// "!important". What "font" and "margin" say at once comes as the declarations that it stands for, where
// those are read.
void EachDeclaration(std::string_view style,
                     const std::function<void(std::string_view property, std::string_view value)>& take);

// 0xRRGGBB of "#f00", "#ff0000", "ff0000", "rgb(255, 0, 0)", "hsl(0, 100%, 50%)" or a name; nothing of what lets more
// than half of what is behind it through.
std::optional<std::uint32_t> ReadColour(std::string_view value);

// The colour in the value of "background", as in "#000 url(x.png) no-repeat"; empty where it has none.
std::string_view GroundIn(std::string_view value);
// Whether it has a picture, or colours that run into each other.
bool NamesPicture(std::string_view value);

// A size of letters in points, of "12pt", "16px", "1.5em", "120%", "large" or "smaller"; `current` is what relative
// ones are of, `usual` the size of those that nothing is said of. Within 1 and 400.
std::optional<double> ReadPoints(std::string_view value, double current, double usual);
// The same in half points, where 12 points are usual.
std::optional<int> ReadLetterSize(std::string_view value, int current);
// The same of "1" to "7", "+1", "-2" of a font element.
std::optional<int> ReadFontSize(std::string_view value);
inline constexpr int kUsualHalfPoints = 24;

// A distance in pixels, of "9pt", "12px", "1.5cm", "-2em" or "0"; nothing for one that depends on the room there is.
std::optional<double> ReadLength(std::string_view value, double current, double usual);

// Pixels of "120" or "120px"; nothing for what is relative.
std::optional<int> ReadPixels(std::string_view value);

// The first family of a list, without quotes; generic ones by a font that systems have. Letters, digits, blanks and
// hyphens alone, at most 40; empty when nothing is left.
std::string ReadFontFamily(std::string_view value);

}  // namespace quillcast::html
