#include "net/dns/socket_watch.h"

#include <ares.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>

#include "platform/result.h"

namespace quillcast::net {
namespace {

constexpr std::size_t kHeader = 12;  // octets (RFC 1035 4.1.1)

template <typename Number>
Number Noted(Number result, void* watch) {
  if (result < 0) static_cast<SocketWatch*>(watch)->NoteError(errno);
  return result;
}

ares_socket_t Open(int family, int type, int protocol, void* watch) {
  return Noted(::socket(family, type | SOCK_NONBLOCK | SOCK_CLOEXEC, protocol), watch);
}

int Close(ares_socket_t socket, void* /*watch*/) { return ::close(socket); }

int Connect(ares_socket_t socket, const sockaddr* address, ares_socklen_t length, void* watch) {
  return Noted(::connect(socket, address, length), watch);
}

ares_ssize_t Receive(ares_socket_t socket, void* room, std::size_t size, int flags, sockaddr* from,
                     ares_socklen_t* length, void* watch) {
  const ares_ssize_t count = Noted(::recvfrom(socket, room, size, flags, from, length), watch);
  if (count > 0) {  // the library asks for the sender of a datagram alone
    static_cast<SocketWatch*>(watch)->NoteRead(static_cast<const std::uint8_t*>(room), static_cast<std::size_t>(count),
                                               from != nullptr);
  }
  return count;
}

// Not writev(2): a server that has gone would end the program by a signal.
ares_ssize_t Send(ares_socket_t socket, const iovec* pieces, int count, void* watch) {
  msghdr message{};
  message.msg_iov = const_cast<iovec*>(pieces);  // NOLINT(cppcoreguidelines-pro-type-const-cast): it only reads
  message.msg_iovlen = static_cast<std::size_t>(count);
  const ares_ssize_t sent = Noted(::sendmsg(socket, &message, MSG_NOSIGNAL), watch);
  if (sent >= 0 || errno != ECONNREFUSED) return sent;
  // That was said of the datagram before, and would be lost with its question still open: the library has to hear it
  // when it reads. Sent again, this one brings it there.
  const ares_ssize_t again = ::sendmsg(socket, &message, MSG_NOSIGNAL);
  if (again < 0) errno = ECONNREFUSED;
  return again;
}

}  // namespace

void SocketWatch::Attach(ares_channeldata* channel) {
  static constexpr ares_socket_functions kFunctions{Open, Close, Connect, Receive, Send};
  ares_set_socket_functions(channel, &kFunctions, this);
}

void SocketWatch::Claim() {
  if (last_counts_) --unclaimed_;
  last_counts_ = false;
}

void SocketWatch::NoteError(int error) {
  if (error != EAGAIN && error != EINPROGRESS && error != EINTR) error_number_ = error;
  errno = error;  // the library looks at it next
}

void SocketWatch::NoteRead(const std::uint8_t* message, std::size_t size, bool datagram) {
  last_counts_ = false;
  if (!datagram) return;  // a piece of a message, as much as came
  const bool whole = size >= kHeader;
  const unsigned code = whole ? message[3] & 15U : 0;
  const bool cut = whole && (message[2] & 2U) != 0;  // fetched over TCP next
  if (code != 0) passed_over_code_ = code;
  last_counts_ = !cut && (code == 0 || code == 3);  // with any other the library may go on by itself
  if (last_counts_) ++unclaimed_;
}

}  // namespace quillcast::net
