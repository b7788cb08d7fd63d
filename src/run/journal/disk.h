// What has to survive a loss of power, behind a port so that tests see when that is known.
#pragma once

#include <filesystem>

#include "platform/result.h"

namespace quillcast::run {

class Disk {
 public:
  virtual ~Disk() = default;
  // What was written to the file until now is on the disk when this returns well.
  virtual Result<void> Sync(int fd, const std::filesystem::path& path) = 0;
};

// fdatasync(2).
class SystemDisk final : public Disk {
 public:
  Result<void> Sync(int fd, const std::filesystem::path& path) override;
};

}  // namespace quillcast::run
