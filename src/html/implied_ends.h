// Which elements end without an end tag of their own, by what begins behind them.
#pragma once

#include <string_view>

namespace quillcast::html {

// Whether an element ends where `start` begins, as an item does at the next one (WHATWG HTML 13.1.2.4).
bool EndsAt(std::string_view open, std::string_view start);
// Whether what begins within `open` is nobody's affair further out: an item of a list within an item does not end that.
bool KeepsWithin(std::string_view open, std::string_view start);

// A cell, a row, a group of rows or columns, or a caption.
bool IsPartOfTable(std::string_view name);

}  // namespace quillcast::html
