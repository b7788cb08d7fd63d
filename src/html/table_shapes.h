// What the tables of a page are like, before they are written.
#pragma once

#include <string_view>
#include <vector>

#include "html/simple_attributes.h"

namespace quillcast::html {

struct TableShape {
  bool is_grid = false;  // any of its rows has two cells: others arrange the page
  Spans spans = Spans::kFew;
};

// Of each table, in the order of their start tags. One of long spans becomes as large as these say, so those of a page
// have 20,000 cells together at the most.
std::vector<TableShape> TableShapesOf(std::string_view html);

}  // namespace quillcast::html
