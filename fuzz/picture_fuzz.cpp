// Any bytes taken for a picture file: what is whole is so with rubbish behind it, but for a GIF, whose last byte ends
// it.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "document/cut_picture.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const bool is_cut = quillcast::document::IsCutShort(bytes);
  if (!is_cut && size > 2 && !bytes.starts_with("GIF8") &&
      quillcast::document::IsCutShort(bytes + std::string(64, '\0')))
    std::abort();
  return 0;
}
