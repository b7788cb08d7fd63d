// The colours and the picture that the body element of a page names. The rest of the page stays as it is, byte for
// byte.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/complaint.h"

namespace quillcast::document {

// Empty for what the page leaves to the reader.
struct BodyColours {
  std::string text = {};
  std::string link = {};
  std::string visited = {};
  std::string active = {};
  std::string background = {};
  std::string picture = {};  // an address, decoded

  bool operator==(const BodyColours&) const = default;
};

enum class BodyBox : std::uint8_t { kText, kLink, kVisited, kActive, kBackground };

// As the page has them, also names ("navy") and what is no colour at all. Of two body elements the first counts.
BodyColours ReadBodyColours(std::string_view html);

// What a colour looks like, in words for those who type one.
Sentence WantedColour();

// The first colour that is not "#" and six hexadecimal digits. One that stands as it was `found` passes.
std::optional<Complaint<BodyBox>> CheckBodyColours(const BodyColours& chosen, const BodyColours& found);

// The page with these in its body element; only attributes that differ are written, and what became empty is taken
// out. A page without the element gets one where its body begins.
std::string WithBodyColours(std::string_view html, const BodyColours& chosen);

}  // namespace quillcast::document
