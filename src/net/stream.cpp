#include "net/stream.h"

#include <fcntl.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <limits>
#include <utility>

namespace quillcast::net {
namespace {

constexpr std::chrono::milliseconds kWhile{200};

// With what its records add, no more than the system hands to the other side in one piece (64 KiB with its headers).
constexpr std::size_t kMostSealed = std::size_t{64} * 1024 - 384;

// In one call: the library reads on where what has come has no content, and a server may send new keys without end.
constexpr std::size_t kMostRead = std::size_t{64} * 1024;

Error Broken(int error_number) { return {Failure::kIo, Say("The connection broke: {}.", std::strerror(error_number))}; }

Error TlsBroken() {
  const unsigned long code = ERR_peek_error();
  const char* words = code != 0 ? ERR_reason_error_string(code) : nullptr;
  ERR_clear_error();
  return {Failure::kIo, Say("The connection broke: {}.", words != nullptr ? words : "closed under TLS")};
}

// Before a call whose failure is then read from the list of errors, which costs more to empty than to find empty.
void ForgetErrors() {
  if (ERR_peek_error() != 0) ERR_clear_error();
}

bool WouldBlock() { return errno == EAGAIN || errno == EINTR; }

// What TLS waits for after a call that did not succeed; 0 when it is no wait.
short WantedEvents(const SSL* tls, int result) {
  switch (SSL_get_error(tls, result)) {
    case SSL_ERROR_WANT_READ:
      return POLLIN;
    case SSL_ERROR_WANT_WRITE:
      return POLLOUT;
    default:
      return 0;
  }
}

// The end of the connection: said so, or cut off. Replies have their own framing, so a cut between them is an end.
bool IsEnd(const SSL* tls, int result) {
  const int error = SSL_get_error(tls, result);
  if (error == SSL_ERROR_ZERO_RETURN) return true;
  return error == SSL_ERROR_SSL && ERR_GET_REASON(ERR_peek_error()) == SSL_R_UNEXPECTED_EOF_WHILE_READING;
}

}  // namespace

// In clear a read that waits takes one call in place of two, so the first while is waited in it. It ends early for a
// signal; another thread that cancels is heard when it is over.
Result<std::optional<std::size_t>> Stream::Read(std::span<char> buffer, bool or_to_write, const Patience& patience) {
  const int left = patience.deadline.PollTimeout(patience.clock.Monotonic());
  if (!tls_ && !or_to_write && (left < 0 || left > kWhile.count()) &&
      patience.cancel.Requested() < patience.gives_up_at) {
    SetWaiting(true);
    auto got = ReadWith(buffer, 0);
    if (!got || *got) return got;
  }
  // What TLS has read already is not seen by poll; it may be the beginning of a record.
  if (tls_ && SSL_has_pending(tls_.get()) != 0) {
    auto got = ReadNow(buffer);
    if (!got || *got) return got;
  }
  const pollfd wanted = WaitsFor(or_to_write);
  if (auto ready = Wait(wanted.fd, wanted.events, patience); !ready) return ready.error();
  return ReadNow(buffer);
}

void Stream::SetWaiting(bool waiting) {
  if (waiting == waiting_) return;
  waiting_ = waiting;
  const timeval longest{.tv_sec = 0, .tv_usec = std::chrono::microseconds(kWhile).count()};
  if (waiting) IgnoreErrors(::setsockopt(socket_.get(), SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof longest));
  IgnoreErrors(::fcntl(socket_.get(), F_SETFL, waiting ? 0 : O_NONBLOCK));
}

pollfd Stream::WaitsFor(bool or_to_write) const {
  const int to_write = (or_to_write ? to_write_ : 0) | (OwnIsLeft() ? POLLOUT : 0);
  return {socket_.get(), static_cast<short>(to_read_ | to_write), 0};
}

Result<std::optional<std::size_t>> Stream::ReadNow(std::span<char> buffer) {
  return tls_ ? ReadTls(buffer) : ReadWith(buffer, MSG_DONTWAIT);
}

Result<std::optional<std::size_t>> Stream::ReadWith(std::span<char> buffer, int flags) {
  const ssize_t count = ::recv(socket_.get(), buffer.data(), buffer.size(), flags);
  if (count >= 0) return std::optional(static_cast<std::size_t>(count));
  if (WouldBlock()) return std::optional<std::size_t>();
  return Broken(errno);
}

Result<std::optional<std::size_t>> Stream::ReadTls(std::span<char> buffer) {
  ForgetErrors();
  records_->Allow(kMostRead);
  const int count = SSL_read(tls_.get(), buffer.data(), static_cast<int>(buffer.size()));
  records_->Allow(std::numeric_limits<std::size_t>::max());
  // A write that waited for another handshake need wait no more once a read has ended it.
  if (SSL_is_init_finished(tls_.get())) to_write_ = POLLOUT;
  if (count > 0) return std::optional(static_cast<std::size_t>(count));
  const short wanted = WantedEvents(tls_.get(), count);
  to_read_ = wanted != 0 ? wanted : short{POLLIN};
  if (wanted != 0) return SendOwn();
  if (!IsEnd(tls_.get(), count)) return TlsBroken();
  ERR_clear_error();
  return std::optional<std::size_t>(0);
}

// What the library itself has to say, as in a renegotiation, which the other side waits for.
bool Stream::OwnIsLeft() const { return records_ && !records_->empty() && !records_->carries(); }

Result<std::optional<std::size_t>> Stream::SendOwn() {
  std::size_t out = 0;
  if (OwnIsLeft() && !records_->Send(out) && !WouldBlock()) return Broken(errno);
  return std::optional<std::size_t>();
}

Result<std::optional<std::size_t>> Stream::WriteNow(std::string_view bytes) {
  if (tls_) return WriteTls(bytes);
  const ssize_t count = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  if (count >= 0) return std::optional(static_cast<std::size_t>(count));
  if (WouldBlock()) return std::optional<std::size_t>();
  return Broken(errno);
}

// Records of as many bytes as are sent in one call; those that are left were made of the bytes that are offered first.
Result<void> Stream::Seal(std::string_view bytes) {
  if (records_->carries()) return {};
  ForgetErrors();
  for (bytes = bytes.substr(0, kMostSealed); !bytes.empty();) {
    const auto size = std::min<std::size_t>(bytes.size(), SSL3_RT_MAX_PLAIN_LENGTH);
    const int count = SSL_write(tls_.get(), bytes.data(), static_cast<int>(size));
    if (count <= 0) {
      to_write_ = WantedEvents(tls_.get(), count);
      return to_write_ != 0 ? Result<void>() : TlsBroken();
    }
    records_->Carry(static_cast<std::size_t>(count));
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return {};
}

Result<std::optional<std::size_t>> Stream::WriteTls(std::string_view bytes) {
  to_write_ = POLLOUT;
  if (auto sealed = Seal(bytes); !sealed) return sealed.error();
  std::size_t out = 0;
  if (!records_->empty() && !records_->Send(out) && !WouldBlock()) return Broken(errno);
  return out != 0 ? std::optional(out) : std::nullopt;
}

Result<void> Stream::BeginTls(TlsContext& context, const std::string& host) {
  SetWaiting(false);
  records_ = std::make_unique<TlsSocket>(socket_.get());
  auto connection = context.NewConnection(*records_, host);
  if (!connection) return connection.error();
  tls_ = *std::move(connection);
  host_ = host;
  fault_ = HandshakeFault::kOther;  // until it is done
  return {};
}

Result<bool> Stream::ShakeHands() {
  ERR_clear_error();
  const int done = SSL_do_handshake(tls_.get());
  if (done == 1) {
    fault_ = HandshakeFault::kNone;
    records_->Gather();
    // In earlier versions the library forgets to begin another handshake that was asked for twice in what it read
    // ahead.
    if (SSL_version(tls_.get()) == TLS1_3_VERSION) SSL_set_read_ahead(tls_.get(), 1);
    to_read_ = POLLIN;
    return true;
  }
  const short events = WantedEvents(tls_.get(), done);
  if (events == 0) {
    fault_ = HandshakeFaultOf(*tls_, done);
    return HandshakeError(*tls_, fault_, host_);
  }
  to_read_ = events;
  return false;
}

void Stream::Close() {
  // A goodbye would push a record out that is half out, after its bytes were told as not sent.
  if (tls_ && SSL_is_init_finished(tls_.get()) && records_->empty()) {
    SSL_shutdown(tls_.get());
    std::size_t out = 0;
    records_->Send(out);
    ERR_clear_error();
  }
  tls_.reset();
  socket_.Close();
}

}  // namespace quillcast::net
