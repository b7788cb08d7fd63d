// Where a link leads that a person types.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::document {

// What a reader's program can follow: "example.org" is meant as a web address, "ada@example.org" as a mail address.
// What names its scheme, and once, stays as it is, and so do a merge tag and a place in the document ("#prices"). Empty
// when there is no address in it, a scheme alone included.
std::string LinkAddress(std::string_view typed);

}  // namespace quillcast::document
