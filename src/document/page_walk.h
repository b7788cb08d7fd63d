// A walk over an HTML page that counts what a person sees of it: words, links and pictures.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/cancel.h"

namespace quillcast::document {

struct PageFacts {
  std::int64_t words = 0;           // each Chinese or Japanese character is one
  std::int64_t pictures = 0;        // that are seen: none of a pixel's size
  std::int64_t large_pictures = 0;  // of those, what is not said to be narrow
  std::int64_t without_text = 0;    // pictures without an "alt", not even an empty one
  std::string first_without_text;   // its address
  bool has_described_picture = false;
  bool speaks_of_leaving = false;  // the list, in words or by a link
};

// `link` is told of each link, with its address and its words or those of its picture, both decoded, in one line
// and cut at kLongestLink bytes. What the page hides itself, by its elements' own styles, is passed over. In constant
// memory; a cancel ends it with what it has by then.
inline constexpr std::size_t kLongestLink = 2000;
using LinkVisitor = std::function<void(const std::string& target, const std::string& text)>;
PageFacts WalkPage(std::string_view html, const LinkVisitor& link, const platform::CancelToken& cancel);

}  // namespace quillcast::document
