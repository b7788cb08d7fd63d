// Which media type a file travels as.
#pragma once

#include <string_view>

namespace quillcast::mime {

// Pictures by how their content begins (some hundred bytes are enough), all else by the extension of the name;
// "application/octet-stream" for what is not known.
std::string_view MediaTypeOf(std::string_view file_name, std::string_view first_bytes);

}  // namespace quillcast::mime
