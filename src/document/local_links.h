// Links of a letter that lead to files of this computer, for whoever looks over it before it goes out.
#pragma once

#include <string_view>
#include <vector>

#include "platform/cancel.h"
#include "platform/sentence.h"

namespace quillcast::document {

// A sentence for each of them that a reader sees; beyond the first twenty one that counts the others. What a cancel
// cuts short is of no use.
std::vector<Sentence> LocalLinks(std::string_view html, const platform::CancelToken& cancel);

}  // namespace quillcast::document
