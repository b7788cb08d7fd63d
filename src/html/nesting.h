// How deep the elements of a page stand in each other.
#pragma once

#include <cstddef>
#include <string_view>

namespace quillcast::html {

// Whether more than so many elements are open at once anywhere, about as browsers count: of paragraphs, items, cells
// and others whose end tag may be left out the next one closes the one before, with the bold and the fonts left open in
// it. Linear in the page; memory for `levels` names.
bool IsNestedDeeperThan(std::string_view html, std::size_t levels);

}  // namespace quillcast::html
