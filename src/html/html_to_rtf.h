// HTML as rich text (RTF), which programs for texts open.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillcast::html {

struct RtfPictureSize {
  int width = 0;
  int height = 0;
};

struct RtfPicture {
  std::string address;   // as the page has it, decoded
  RtfPictureSize twips;  // as it is to be shown, no wider than there is room
};

struct RtfPage {
  std::string text;                  // the document, with RtfBody::kPictureMark round the number of each picture
  std::vector<RtfPicture> pictures;  // by their numbers
};

// The size in pixels of the picture with an address; nothing where there is none to show, whose description then stands
// in its place.
using FindRtfPicture = std::function<std::optional<RtfPictureSize>(std::string_view address)>;

// Paragraphs, headings, lists, quotations, letters with their fonts, sizes and colours, links, rules, pictures, and
// tables down to eight in each other, of at most sixty cells a row, all on their grounds; of styles those in the
// elements themselves. Left out: what is not displayed, style sheets, pictures behind words, with the colours that need
// one. The HTML is UTF-8. Linear in time and space, and
// does not recurse: what lies deeper than 500 stands beside the innermost.
RtfPage HtmlToRtf(std::string_view html, const FindRtfPicture& find_picture = {});

}  // namespace quillcast::html
