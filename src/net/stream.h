// A connected socket that is read and written, in clear or under TLS, with a deadline on every wait.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "net/address.h"
#include "net/tls_context.h"
#include "net/tls_facts.h"
#include "net/wait.h"
#include "platform/file.h"

namespace quillcast::net {

// SIGPIPE is never raised. Errors are those of Patience. ReadNow and WriteNow never wait.
class Stream {
 public:
  Stream() = default;
  explicit Stream(platform::UniqueFd socket) : socket_(std::move(socket)) {}

  // Reads what is there, up to the buffer's size: nothing when there is nothing yet, 0 when the other side has closed.
  Result<std::optional<std::size_t>> ReadNow(std::span<char> buffer);
  // Writes as much as goes in one call, under TLS at most 64 KiB, and returns how many bytes are out, so that a caller
  // knows how far it got when a later call fails; nothing when none goes. Bytes that were offered are to be offered
  // again, first.
  Result<std::optional<std::size_t>> WriteNow(std::string_view bytes);
  // Waits until there is something to read, and reads it; with `or_to_write`, also until what did not go may go, and
  // then what it reads may be nothing.
  Result<std::optional<std::size_t>> Read(std::span<char> buffer, bool or_to_write, const Patience& patience);
  // What whoever waits for many waits for, once ReadNow had nothing, and `or_to_write` WriteNow did not write.
  pollfd WaitsFor(bool or_to_write) const;

  // The client's side of a TLS handshake with the server called `host`: begun here, then gone on with whenever what
  // WaitsFor names is there, until it is done (true). After a failure the stream is of no more use.
  Result<void> BeginTls(TlsContext& context, const std::string& host);
  Result<bool> ShakeHands();
  // What is to be seen of that handshake, also of one that failed or was given up.
  TlsFacts Facts() const { return tls_ ? FactsOf(*tls_, fault_) : TlsFacts{.fault = HandshakeFault::kOther}; }
  bool encrypted() const { return tls_ != nullptr; }

  // Empty where there is no socket, or the system does not know.
  Endpoint local() const { return LocalEndpoint(socket_.get()); }
  Endpoint peer() const { return PeerEndpoint(socket_.get()); }
  // Says goodbye under TLS where that needs no waiting, and closes.
  void Close();

 private:
  Result<std::optional<std::size_t>> ReadWith(std::span<char> buffer, int flags);
  void SetWaiting(bool waiting);
  Result<std::optional<std::size_t>> ReadTls(std::span<char> buffer);
  Result<std::optional<std::size_t>> WriteTls(std::string_view bytes);
  Result<void> Seal(std::string_view bytes);
  bool OwnIsLeft() const;
  Result<std::optional<std::size_t>> SendOwn();

  platform::UniqueFd socket_;
  std::unique_ptr<TlsSocket> records_;  // under TLS
  SslHandle tls_;
  std::string host_;
  HandshakeFault fault_ = HandshakeFault::kNone;
  short to_read_ = POLLIN;    // what a read that got nothing waits for; TLS may have to write first
  short to_write_ = POLLOUT;  // and the reverse
  bool waiting_ = false;      // a read without MSG_DONTWAIT waits, for a while
};

}  // namespace quillcast::net
