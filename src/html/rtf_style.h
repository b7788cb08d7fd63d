// How an element of HTML looks as rich text, by its name, its attributes and its own style.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "html/html_elements.h"
#include "html/html_tokenizer.h"
#include "html/rtf_body.h"

namespace quillcast::html {

// What holds in an element.
struct RtfStyle {
  RtfLetters letters = {};
  RtfParagraph paragraph = {};
  std::optional<std::uint32_t> ground = {};  // of the lines and cells in it
  bool is_preformatted = false;
};

// The style within the element that a start tag begins, of the one around it. What leads somewhere looks like a link
// as far as it does not say otherwise.
void ApplyElement(RtfStyle& style, HtmlRole role, const HtmlTokenizer& tokenizer, const HtmlToken& token,
                  bool leads_somewhere);

// Columns that a cell takes; at least 1.
std::size_t SpanOf(const HtmlTokenizer& tokenizer, const HtmlToken& token);
// Rows that a cell reaches over; at least 1, and all that follow where it says 0.
std::size_t RowsOf(const HtmlTokenizer& tokenizer, const HtmlToken& token);
// Whether a table draws lines between its cells.
bool HasBorder(const HtmlTokenizer& tokenizer, const HtmlToken& token);
// By the "type" of a numbered list.
RtfNumbering NumberingOf(std::string_view type);

}  // namespace quillcast::html
