// What is wrong with a link of a letter, as far as its address and its words tell; nothing is looked up.
#pragma once

#include <optional>
#include <string_view>

#include "platform/sentence.h"

namespace quillcast::document {

// `target` is the link's address, `text` its words, both decoded. A sentence that names the link and says what to do;
// nothing where it is in order. What a merge tag fills in is not judged.
std::optional<Sentence> LinkTrouble(std::string_view target, std::string_view text);

}  // namespace quillcast::document
