// Whether the style of an element keeps it out of sight.
#pragma once

#include <optional>
#include <string_view>

namespace quillcast::html {

struct SaidDisplay {
  bool hides = false;            // in one way or another
  std::optional<bool> is_shown;  // by "display" alone, where that is said
};

// Of several declarations of a property the last counts, and one that is marked as important before others; one that no
// reader takes says nothing.
SaidDisplay SaidDisplayOf(std::string_view style);

}  // namespace quillcast::html
