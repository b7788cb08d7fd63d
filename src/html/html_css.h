// The addresses in CSS, of a style element or of a style attribute as HTML writes it. Linear in time on any input.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillcast::html {

// Begins an address.
inline constexpr std::string_view kUrl = "url(";

// A style element has no character references; an attribute has, so that its quotes may be written "&quot;".
enum class CssPlace { kElement, kAttribute };

// Of an address as written, without quotes.
struct CssRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};

// What stands in url(...), in the order of the source: not in comments, in strings or after @import, and not what is
// never closed.
std::vector<CssRange> FindCssAddresses(std::string_view css, CssPlace place);

// What @import names, by url(...) or as a string, in the order of the source.
std::vector<CssRange> FindCssImports(std::string_view css, CssPlace place);

// The address with its character references, where there are any, and its escapes ("\20", "\)") resolved. A path of
// Windows that was put there as it is ("C:\x", "\\server\x") keeps its backslashes: they part folders.
std::string DecodeCssAddress(std::string_view written, CssPlace place);

// Any text with its escapes resolved.
std::string UnescapedCss(std::string_view text);

}  // namespace quillcast::html
