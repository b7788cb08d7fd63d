// Any bytes taken for a message: what is read of its header is not much longer than it was.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "mime/read_header.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view message(reinterpret_cast<const char*>(data), size);
  const std::string subject = quillcast::mime::ReadHeader(message, "Subject");
  if (subject.size() > 4 * size) std::abort();
  if (quillcast::mime::DecodeEncodedWords(message).size() > 4 * size) std::abort();
  return 0;
}
