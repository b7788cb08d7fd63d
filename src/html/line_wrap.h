// Breaks the long lines of bodies that go out without a transfer encoding, where a break changes least. Lines end in
// "\n"; existing line ends stay. A line that is too long stays so only where no place to break it exists.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillcast::html {

// Lines of at most `width` display columns, 32 to 128.
//
// A line breaks at blanks, which the line end replaces, and between two East Asian wide characters, except before what
// closes or continues (brackets, stops, small kana) and after what opens. A word that alone is wider than a line is
// broken within, between two characters as a reader sees them. Not broken at all: a word that holds "://" (a broken
// address is worse than a long line) and between indentation and the first word. Blanks at the end of a line that do
// not fit are dropped. A tab reaches to the next multiple of eight.
//
// kKept: such a word stays whole on a line of its own, and so does one of Korean letters, for texts that nothing forces
// into a width.
enum class LongWords { kCut, kKept };
std::string WrapText(std::string_view utf8, std::size_t width, LongWords long_words = LongWords::kCut);

// Breaks only at blanks that HTML takes for line ends as well: in running text outside pre, textarea, script, style and
// comments, and between the attributes of a tag; never in a word or a quoted value. Where the source sets white-space
// so that blanks count (which elements that reaches is not worked out), text stays as it is. Nothing but such blanks
// changes.
std::string WrapHtml(std::string_view html, std::size_t width);

// The columns a character takes in a font of fixed width: two when it is wide or fullwidth, none when it combines with
// others or does not show, else one.
std::size_t DisplayColumns(char32_t code);

}  // namespace quillcast::html
