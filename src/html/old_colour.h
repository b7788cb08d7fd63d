// Colours as attributes have them.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::html {

// The value of an attribute like bgcolor as a style has it, "#ff0000" or "red"; empty for none and "transparent". What
// is no colour is made one, as browsers do (WHATWG HTML 2.3.6).
std::string OldColour(std::string_view value);

}  // namespace quillcast::html
