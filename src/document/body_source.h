// Cuts the source of an HTML document at its body, so that an edited body can go back between what was never touched.
#pragma once

#include <string>
#include <string_view>

#include "platform/result.h"

namespace quillcast::document {

// What the editor puts an edited body between.
struct BodySource {
  // Up to the body's start tag, or to what a parser puts into the body before it; the document type alone where there
  // is no body tag.
  std::string head;
  std::string tail;       // from the body's end tag on; empty where content stands behind it, which belongs to the body
  bool has_body = false;  // there is a start tag
};

// A tag in a comment, a script or an attribute is none. With several start tags the first counts, as in browsers; of
// end tags the last one.
BodySource CutAtBody(std::string_view html);

// Whether the editor can take a document: its time grows with the square of how deep elements stand in each other.
// kBadData where that would be seconds.
Result<void> CheckEditable(std::string_view html);

}  // namespace quillcast::document
