// The colours that the style attribute of a body element names: readers see them in place of those of its attributes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillcast::document {

enum class StyledColour { kText, kBackground };

// As the style has it, empty for "inherit" and the like; nothing where it says nothing of it. Of two the last counts.
std::optional<std::string> StyleColour(std::string_view style, StyledColour which);

// The style with this colour in each place that names one, or what leaves it to the reader where it is empty. Where
// the style says nothing of it, it stays as it is.
std::string WithStyleColour(std::string_view style, StyledColour which, std::string_view colour);

}  // namespace quillcast::document
