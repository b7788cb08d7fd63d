#include "net/tls_socket.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace quillcast::net {

// The library's own way to write raises SIGPIPE when the other side is gone.
ssize_t TlsSocket::Write(const char* bytes, std::size_t size) {
  if (!gathers_) return ::send(socket_, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT);
  gathered_.append(bytes, size);
  return static_cast<ssize_t>(size);
}

ssize_t TlsSocket::Read(char* buffer, std::size_t size) {
  if (allowed_ == 0) {
    errno = EAGAIN;
    return -1;
  }
  const ssize_t count = ::recv(socket_, buffer, std::min(size, allowed_), MSG_DONTWAIT);
  if (count > 0) allowed_ -= static_cast<std::size_t>(count);
  return count;
}

bool TlsSocket::Send(std::size_t& out) {
  const ssize_t count = ::send(socket_, gathered_.data() + at_, gathered_.size() - at_, MSG_NOSIGNAL | MSG_DONTWAIT);
  if (count < 0) return false;
  at_ += static_cast<std::size_t>(count);
  for (; next_ < records_.size() && records_[next_].end <= at_; ++next_) out += records_[next_].bytes;
  if (at_ < gathered_.size()) return true;
  gathered_.clear();
  records_.clear();
  at_ = next_ = 0;
  return true;
}

}  // namespace quillcast::net
