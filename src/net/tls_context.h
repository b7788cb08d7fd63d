// What TLS connections of one client share: the trusted authorities, the rules, and the sessions to resume.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "net/tls_facts.h"
#include "net/tls_socket.h"
#include "platform/result.h"

struct bio_method_st;
struct ssl_ctx_st;
struct ssl_session_st;
struct ssl_st;

namespace quillcast::net {

// What unique_ptr calls; here it needs none of the library's own headers.
struct FreeTls {
  void operator()(bio_method_st* method) const;
  void operator()(ssl_ctx_st* context) const;
  void operator()(ssl_session_st* session) const;
  void operator()(ssl_st* connection) const;
};
using SslHandle = std::unique_ptr<ssl_st, FreeTls>;

// TLS 1.2 or later; the chain and the name of every server are verified, and there is no way to say otherwise. It
// outlives the connections that are made from it, and stays where it is: the library calls back into it.
class TlsContext {
 public:
  // Trusts the authorities of the system (SSL_CERT_FILE and SSL_CERT_DIR are honoured), or, when `ca_file` is not
  // empty, those of that PEM file alone.
  static Result<std::unique_ptr<TlsContext>> ForClient(const std::string& ca_file = {});
  TlsContext(const TlsContext&) = delete;
  TlsContext& operator=(const TlsContext&) = delete;

  // A client's end of a connection to `host` (a name, in any script, or an address) over a connected socket, which
  // outlives it. The session of the last connection to the same host is offered for resumption.
  Result<SslHandle> NewConnection(TlsSocket& socket, const std::string& host);

 private:
  TlsContext() = default;
  static int KeepSession(ssl_st* connection, ssl_session_st* session);

  std::unique_ptr<bio_method_st, FreeTls> method_;
  std::unique_ptr<ssl_ctx_st, FreeTls> context_;
  std::unordered_map<std::string, std::unique_ptr<ssl_session_st, FreeTls>> sessions_;
};

// Why a handshake with `host` failed, in words that say how to go on, while the library's error is there: kNotPermitted
// when the certificate is not trusted, kIo when the connection ended, else kUnavailable.
Error HandshakeError(const ssl_st& connection, HandshakeFault fault, const std::string& host);

}  // namespace quillcast::net
