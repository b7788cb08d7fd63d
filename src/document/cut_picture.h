// Whether a picture file ends too early. Decoders make grey of what is missing and say nothing.
#pragma once

#include <string_view>

namespace quillcast::document {

// Of a JPEG, PNG, GIF or WebP file by its structure alone, its pixels are not looked at. False for every other kind,
// and where what is there is no picture at all.
bool IsCutShort(std::string_view bytes);

}  // namespace quillcast::document
