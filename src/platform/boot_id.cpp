#include "platform/boot_id.h"

#include <filesystem>

#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::platform {

// The file says that it is empty, so that it is read to its end.
std::string BootId() {
  const std::filesystem::path file = "/proc/sys/kernel/random/boot_id";
  const auto fd = OpenForReading(file);
  if (!fd) return {};
  std::string boot(100, '\0');
  boot.resize(IgnoreErrors(ReadSome(fd->get(), file, boot.data(), boot.size()), 0));
  return std::string(Trim(boot));
}

}  // namespace quillcast::platform
