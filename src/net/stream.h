// A connected socket that is read and written, in clear or under TLS, with a deadline on every wait.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "net/address.h"
#include "net/tls_context.h"
#include "net/wait.h"
#include "platform/file.h"

namespace quillcast::net {

// SIGPIPE is never raised. Errors are those of Patience.
class Stream {
 public:
  Stream() = default;
  explicit Stream(platform::UniqueFd socket) : socket_(std::move(socket)) {}

  // Waits for bytes and reads what is there, up to the buffer's size. 0 when the other side has closed.
  Result<std::size_t> Read(std::span<char> buffer, const Patience& patience);
  // The same without waiting; nothing when there is nothing to read.
  Result<std::optional<std::size_t>> ReadNow(std::span<char> buffer);

  // Writes some of two pieces, `first` before `second`, at least one byte: as much as goes in one call. Returns how
  // many bytes are out, so that a caller knows how far it got when a later call fails.
  Result<std::size_t> WriteSome(std::string_view first, std::string_view second, const Patience& patience);

  // The client's side of a TLS handshake with the server called `host`. After a failure the stream is of no more use.
  Result<void> StartTls(TlsContext& context, const std::string& host, const Patience& patience);
  bool encrypted() const { return tls_ != nullptr; }
  // Under TLS: whether the session of an earlier connection was resumed.
  bool resumed() const;

  bool open() const { return static_cast<bool>(socket_); }
  Endpoint local() const { return LocalEndpoint(socket_.get()); }
  Endpoint peer() const { return PeerEndpoint(socket_.get()); }
  // Says goodbye under TLS where that needs no waiting, and closes.
  void Close();

 private:
  Result<std::optional<std::size_t>> ReadTls(std::span<char> buffer);
  Result<std::size_t> WriteTls(std::string_view piece, const Patience& patience);
  Result<std::size_t> WritePlain(std::string_view first, std::string_view second, const Patience& patience);

  platform::UniqueFd socket_;
  SslHandle tls_;
  short wanted_ = POLLIN;  // what a read that got nothing waits for; TLS may have to write first
};

}  // namespace quillcast::net
