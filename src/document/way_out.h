// Whether a letter tells its readers how to get no more of them.
#pragma once

#include <string_view>

namespace quillcast::document {

// Whether the text, words or an address, speaks of leaving a list, in one of some twenty languages. Linear in the text.
bool SpeaksOfLeaving(std::string_view text);

}  // namespace quillcast::document
