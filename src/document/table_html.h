// The table that a person asks for, as a piece of HTML.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "platform/complaint.h"

namespace quillcast::document {

inline constexpr std::array<const char*, 3> kTableAlignments = {"Left", "Center", "Right"};

// What was typed and chosen.
struct TableChoice {
  std::string align = {};  // one of the above, or empty
  std::string border = "1";
  std::string spacing = "0";
  std::string padding = "4";
  std::string rows = "2";
  std::string columns = "2";
  std::string width = "100";
  bool in_percent = true;  // else pixels
};

// What is checked.
enum class TableBox { kBorder, kSpacing, kPadding, kRows, kColumns };

// The first thing that is wrong. A border has to be there; spacing and padding need not. The width is free.
std::optional<Complaint<TableBox>> CheckTable(const TableChoice& choice);

// Of a choice that passed the checks; with CRLF.
std::string TableHtml(const TableChoice& choice);

}  // namespace quillcast::document
