#include "platform/cancel.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

namespace quillcast::platform {

CancelToken::CancelToken() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void CancelToken::Request() {
  int level = level_.load();
  while (level < static_cast<int>(Stop::kAbandon) && !level_.compare_exchange_weak(level, level + 1)) {
  }
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto written = ::write(event_.get(), &one, sizeof one);
}

void CancelToken::Drain() const {
  std::uint64_t count = 0;
  [[maybe_unused]] const auto read = ::read(event_.get(), &count, sizeof count);
}

}  // namespace quillcast::platform
