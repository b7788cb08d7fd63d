#include "platform/cancel.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

#include "platform/result.h"

namespace quillcast::platform {

CancelToken::CancelToken() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void CancelToken::Request() {
  int level = level_.load();
  while (level < static_cast<int>(Stop::kAbandon) && !level_.compare_exchange_weak(level, level + 1)) {
  }
  const std::uint64_t one = 1;
  IgnoreErrors(::write(event_.get(), &one, sizeof one));  // it is full, and readable, after 2^64 requests
}

void CancelToken::Drain() const {
  std::uint64_t count = 0;
  IgnoreErrors(::read(event_.get(), &count, sizeof count));  // nothing was there
}

}  // namespace quillcast::platform
