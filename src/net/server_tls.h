// TLS for the side that is connected to, without sockets: what came in, what goes out.
#pragma once

#include <openssl/ssl.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "platform/result.h"

namespace quillcast::net {

// What unique_ptr calls for the library's two handles.
struct FreeSslContext {
  void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
};
struct FreeSsl {
  void operator()(SSL* ssl) const { SSL_free(ssl); }
};

// A certificate with its key; TLS 1.2 or later.
class ServerTls {
 public:
  // PEM files; the certificate's file may hold the chain behind it. Fails with kNoInput for a file that cannot be read
  // and kBadData for one that holds something else, or a key that does not belong to the certificate.
  static Result<ServerTls> Load(const std::filesystem::path& certificate, const std::filesystem::path& key);

  // For ServerTlsStream, which keeps it alive on its own.
  SSL_CTX* context() const { return context_.get(); }

 private:
  explicit ServerTls(std::unique_ptr<SSL_CTX, FreeSslContext> context) : context_(std::move(context)) {}
  std::unique_ptr<SSL_CTX, FreeSslContext> context_;
};

// One connection. The handshake happens by itself while bytes are received.
class ServerTlsStream {
 public:
  // Waits for a client's first bytes. Fails with kInternal when the library has no memory; what is wrong with a
  // certificate, Load has told.
  static Result<ServerTlsStream> Create(const ServerTls& tls);

  // Takes what came over the wire and appends what it says to `clear`. False when the connection is broken or over:
  // send what is left, and close.
  bool Receive(std::string_view wire, std::string& clear);
  // False before the handshake has ended; try again after the next Receive.
  bool Send(std::string_view clear);
  // Says that nothing more comes.
  void Finish();
  // Appends what is to go over the wire now.
  void TakeOutput(std::string& wire);

 private:
  ServerTlsStream(std::unique_ptr<SSL, FreeSsl> ssl, BIO* in, BIO* out) : ssl_(std::move(ssl)), in_(in), out_(out) {}

  std::unique_ptr<SSL, FreeSsl> ssl_;
  BIO* in_;  // both belong to ssl_
  BIO* out_;
};

}  // namespace quillcast::net
