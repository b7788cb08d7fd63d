// The horizontal line that a person asks for, as a piece of HTML.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "platform/complaint.h"

namespace quillcast::document {

inline constexpr std::array<const char*, 3> kLineAlignments = {"Left", "Center", "Right"};
inline constexpr std::array<const char*, 2> kLineUnits = {"Pixels", "Percent"};

// What was typed and chosen.
struct LineChoice {
  std::string width = "100";
  std::string unit = "Percent";  // one of kLineUnits
  std::string height = "2";      // pixels
  std::string align = "Center";  // one of kLineAlignments
  bool is_solid = false;         // without the shade
};

// What is checked.
enum class LineBox { kWidth, kHeight };

// The first thing that is wrong. A width is 100 at most in pixels too.
std::optional<Complaint<LineBox>> CheckLine(const LineChoice& choice);

// Of a choice that passed the checks. What is usual (centred, 100 percent, 2 high) is not written.
std::string LineHtml(const LineChoice& choice);

}  // namespace quillcast::document
