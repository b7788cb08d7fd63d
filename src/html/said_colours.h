// What an element says by itself of the colour of its words and of what stands behind them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "html/html_tokenizer.h"

namespace quillcast::html {

// Colours are 0xRRGGBB.
struct SaidColours {
  std::optional<std::uint32_t> letters = {};
  bool has_letters_of_around = false;  // as "inherit" says
  std::optional<std::uint32_t> ground = {};
  bool has_picture = false;  // behind the words
};

// Of an attribute. Browsers make a colour of whatever it says, a nearly black one of "none"; what is no number is none
// here.
std::optional<std::uint32_t> ReadAttributeColour(std::string_view value);

// `hears_ground`: whether what it becomes has a ground by attributes too.
SaidColours SaidColoursOf(const HtmlTokenizer& page, const HtmlToken& tag, bool hears_ground);

}  // namespace quillcast::html
