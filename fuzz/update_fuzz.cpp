// What a server says of the latest version: whatever it is, what becomes of it is safe to show.
#include <cstdint>
#include <cstdlib>

#include "platform/text.h"
#include "update/update_check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace quillcast;
  const auto answer = update::ReadAnswer({reinterpret_cast<const char*>(bytes), size}, {1, 0});
  if (!answer) return 0;
  if (update::ParseVersion(update::TextOf(answer->latest)) != answer->latest) std::abort();
  const std::string said = update::Describe(*answer, {1, 0}).InEnglish();
  if (platform::Printable(said, said.size()) != said) std::abort();
  return 0;
}
