// A stranger's page, cut down to what a plain text view lays out at once.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillcast::html {

struct SimplePage {
  std::string html;     // UTF-8, well formed; tags and attributes of a short list, and nothing that loads but "cid:"
  bool is_cut = false;  // the page went on
  std::size_t pictures_left_out = 0;  // beyond the first 500
};

// A picture that is not the message's own is its alternative text. All else that is displayed stays, in its order, with
// its fonts, colours, lists, links (web, mail and telephone) and tables, up to about `most` bytes. What a text view
// cannot do in time that grows with the page is taken away: its layout takes twice as long for each table within
// another, so tables that only arrange the page become paragraphs, as do those within three others; elements within a
// hundred others stand beside the innermost; words without an end are given places to break; what stands on a ground
// that the view would not paint there is told it, and that of a first block is kept from the rest of its cell; words
// that nobody would see on what is painted, since their own ground is a picture or in a style sheet, are black or
// white; sizes beyond a page, and cells over many rows, are left out. Style sheets, scripts, forms and whatever would
// be fetched are left out. Linear in the page.
SimplePage Simplify(std::string_view html, std::size_t most);

}  // namespace quillcast::html
