// "tag=value; tag=value", the form of the records that DKIM and DMARC publish (RFC 6376 3.2).
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/result.h"

namespace quillcast::domain {

class TagList {
 public:
  // Fails with kBadData for a piece without "=", a tag that is no name, and a tag that stands twice.
  static Result<TagList> Parse(std::string_view text);

  // The same of those who pass over what they cannot read: what is no tag with a value. Names are taken in any case.
  static TagList Read(std::string_view text);

  std::size_t CountOf(std::string_view tag) const;
  // Of the first that is there. Without blanks around it; nothing in it is unfolded. `fallback` where the tag is not
  // there.
  std::string_view ValueOf(std::string_view tag, std::string_view fallback = "") const;
  // The tag that stands first, as "v" has to; empty where there is none.
  std::string_view FirstTag() const { return rows_.empty() ? std::string_view() : rows_.front().first; }

 private:
  std::vector<std::pair<std::string, std::string>> rows_;
};

}  // namespace quillcast::domain
