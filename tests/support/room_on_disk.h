// A disk on which files may grow to so many octets, or as large as they like, as long as this lives.
#pragma once

#include <sys/resource.h>

#include <csignal>
#include <optional>

namespace quillcast::test {

class RoomOnDisk {
 public:
  explicit RoomOnDisk(std::optional<rlim_t> octets) : before_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &limit_);
    const rlimit smaller{octets.value_or(limit_.rlim_cur), limit_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &smaller);
  }
  RoomOnDisk(const RoomOnDisk&) = delete;
  RoomOnDisk& operator=(const RoomOnDisk&) = delete;
  ~RoomOnDisk() {
    ::setrlimit(RLIMIT_FSIZE, &limit_);
    std::signal(SIGXFSZ, before_);
  }

 private:
  void (*before_)(int);
  rlimit limit_{};
};

}  // namespace quillcast::test
