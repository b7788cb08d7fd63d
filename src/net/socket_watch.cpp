#include "net/socket_watch.h"

#include <ares.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>

#include "net/address.h"
#include "net/ares_channel.h"
#include "platform/result.h"
#include "platform/text.h"

namespace quillcast::net {
namespace {

constexpr std::size_t kHeader = 12;       // octets (RFC 1035 4.1.1)
constexpr unsigned kNoSuchName = 3;       // a code that is an answer
constexpr std::size_t kTypeAndClass = 4;  // octets behind the name of a question

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
  const auto server = FromSystem(address);
  if (!server || server->address.family == Family::kIpv4) return Noted(::connect(socket, address, length), watch);
  const SocketAddress reached = ToSystem({FromLibrary(server->address), server->port});
  return Noted(::connect(socket, reached.get(), reached.length), watch);
}

// The library takes an answer from the address alone that it has of the server.
void KeepForLibrary(sockaddr* from) {
  const auto sender = FromSystem(from);
  if (!sender || sender->address.scope == 0) return;
  const SocketAddress held = ToSystem({ForLibrary(sender->address), sender->port});
  std::memcpy(from, held.get(), held.length);
}

ares_ssize_t Receive(ares_socket_t socket, void* room, std::size_t size, int flags, sockaddr* from,
                     ares_socklen_t* length, void* watch) {
  const ares_ssize_t count = Noted(::recvfrom(socket, room, size, flags, from, length), watch);
  if (count >= 0 && from != nullptr) KeepForLibrary(from);
  if (count > 0) {
    const std::string_view message(static_cast<const char*>(room), static_cast<std::size_t>(count));
    const bool is_datagram = from != nullptr;  // the library asks for the sender of one alone
    static_cast<SocketWatch*>(watch)->NoteRead(message, is_datagram);
  }
  return count;
}

bool IsDatagramSocket(ares_socket_t socket) {
  int type = 0;
  socklen_t size = sizeof type;
  return ::getsockopt(socket, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_DGRAM;
}

// Not writev(2): a server that has gone would end the program by a signal.
ares_ssize_t Send(ares_socket_t socket, const iovec* pieces, int count, void* watch) {
  msghdr message{};
  message.msg_iov = const_cast<iovec*>(pieces);  // NOLINT(cppcoreguidelines-pro-type-const-cast): it only reads
  message.msg_iovlen = static_cast<std::size_t>(count);
  if (count == 1 && IsDatagramSocket(socket)) {
    static_cast<SocketWatch*>(watch)->NoteSent({static_cast<const char*>(pieces->iov_base), pieces->iov_len});
  }
  const ares_ssize_t sent = Noted(::sendmsg(socket, &message, MSG_NOSIGNAL), watch);
  if (sent >= 0 || errno != ECONNREFUSED) return sent;
  // That was said of the datagram before, and would be lost with its question still open: the library has to hear it
  // when it reads. Sent again, this one brings it there.
  const ares_ssize_t again = ::sendmsg(socket, &message, MSG_NOSIGNAL);
  if (again < 0) errno = ECONNREFUSED;
  return again;
}

// The identifier and the question, its name in small letters, as an answer has to repeat them (RFC 1035 4.1.1, 4.1.2,
// 7.3). Nothing where it has none, or more than one.
std::optional<std::string> AskedIn(std::string_view message) {
  constexpr std::string_view kOneQuestion("\0\1", 2);
  if (message.size() < kHeader || message.substr(4, 2) != kOneQuestion) return {};
  std::size_t end = kHeader;
  while (end < message.size() && message[end] != 0) end += 1 + static_cast<std::uint8_t>(message[end]);
  end += 1 + kTypeAndClass;
  if (end > message.size()) return {};
  return std::string(message.substr(0, 2)) + platform::AsciiLower(message.substr(kHeader, end - kHeader));
}

}  // namespace

void SocketWatch::Attach(ares_channeldata* channel) {
  static constexpr ares_socket_functions kFunctions{Open, Close, Connect, Receive, Send};
  ares_set_socket_functions(channel, &kFunctions, this);
}

void SocketWatch::Forget() {
  error_number_ = 0;
  failure_code_ = 0;
  asked_.clear();
}

void SocketWatch::NoteError(int error) {
  if (error != EAGAIN && error != EINPROGRESS && error != EINTR) error_number_ = error;
  errno = error;  // the library looks at it next
}

void SocketWatch::NoteSent(std::string_view datagram) {
  if (auto asked = AskedIn(datagram)) asked_.insert(*std::move(asked));
}

void SocketWatch::NoteRead(std::string_view message, bool is_datagram) {
  if (!is_datagram) return;  // a piece of a message, as much as came
  const auto asked = AskedIn(message);
  if (!asked || !asked_.contains(*asked)) {
    ++strays_;
    return;
  }
  const unsigned code = static_cast<std::uint8_t>(message[3]) & 15U;
  if (code != 0 && code != kNoSuchName) failure_code_ = code;
}

}  // namespace quillcast::net
