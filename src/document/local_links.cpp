#include "document/local_links.h"

#include <cstdint>
#include <string>

#include "document/link_trouble.h"
#include "document/page_walk.h"

namespace quillcast::document {

std::vector<Sentence> LocalLinks(std::string_view html, const platform::CancelToken& cancel) {
  constexpr std::int64_t kMostTold = 20;
  std::vector<Sentence> told;
  std::int64_t more = 0;
  const auto look = [&](const std::string& target, const std::string& text) {
    if (!LeadsToFile(target)) return;
    const auto trouble = LinkTrouble(target, text);
    if (trouble && std::ssize(told) < kMostTold) {
      told.push_back(*trouble);
    } else {
      ++more;
    }
  };
  WalkPage(html, look, cancel);
  if (more > 0) {
    told.push_back(SayOf(more, "And {} more link leads to a file of this computer.",
                         "And {} more links lead to files of this computer."));
  }
  return told;
}

}  // namespace quillcast::document
