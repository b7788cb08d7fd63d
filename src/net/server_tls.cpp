#include "net/server_tls.h"

#include <fmt/format.h>
#include <openssl/bio.h>
#include <openssl/err.h>

#include <array>

#include "platform/file.h"

namespace quillcast::net {
namespace {

std::string LastSslError() {
  std::array<char, 256> text{};
  ERR_error_string_n(ERR_peek_last_error(), text.data(), text.size());
  ERR_clear_error();
  return text.data();
}

Error LoadError(const std::filesystem::path& path, std::string_view remedy) {
  // The library's own word for a missing file is unreadable; the system's is better.
  if (const auto opened = platform::OpenForReading(path); !opened) return opened.error();
  return {Failure::kBadData, Say("Cannot use {}: {}.", path.string(), LastSslError()), std::string(remedy)};
}

}  // namespace

Result<ServerTls> ServerTls::Load(const std::filesystem::path& certificate, const std::filesystem::path& key) {
  std::unique_ptr<SSL_CTX, FreeSslContext> context(SSL_CTX_new(TLS_server_method()));
  if (!context) return Error{Failure::kInternal, Say("TLS cannot be set up: {}.", LastSslError())};
  SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
  SSL_CTX_set_options(context.get(), SSL_OP_NO_RENEGOTIATION);
  SSL_CTX_set_mode(context.get(), SSL_MODE_RELEASE_BUFFERS);
  if (SSL_CTX_use_certificate_chain_file(context.get(), certificate.c_str()) != 1) {
    return LoadError(certificate, "Name a PEM file with the certificate and the chain behind it.");
  }
  if (SSL_CTX_use_PrivateKey_file(context.get(), key.c_str(), SSL_FILETYPE_PEM) != 1) {
    return LoadError(key, "Name the PEM file with the private key of that certificate, without a password.");
  }
  return ServerTls(std::move(context));
}

Result<ServerTlsStream> ServerTlsStream::Create(const ServerTls& tls) {
  std::unique_ptr<SSL, FreeSsl> ssl(SSL_new(tls.context()));
  BIO* in = BIO_new(BIO_s_mem());
  BIO* out = BIO_new(BIO_s_mem());
  if (!ssl || in == nullptr || out == nullptr) {
    BIO_free(in);
    BIO_free(out);
    return Error{Failure::kInternal, Say("TLS cannot be set up: {}.", LastSslError())};
  }
  BIO_set_mem_eof_return(in, -1);  // an empty buffer means "later", not the end
  SSL_set_bio(ssl.get(), in, out);
  SSL_set_accept_state(ssl.get());
  return ServerTlsStream(std::move(ssl), in, out);
}

bool ServerTlsStream::Receive(std::string_view wire, std::string& clear) {
  ERR_clear_error();
  BIO_write(in_, wire.data(), static_cast<int>(wire.size()));
  while (true) {
    const std::size_t had = clear.size();
    clear.resize(had + SSL3_RT_MAX_PLAIN_LENGTH);
    const int got = SSL_read(ssl_.get(), clear.data() + had, SSL3_RT_MAX_PLAIN_LENGTH);
    clear.resize(had + static_cast<std::size_t>(got > 0 ? got : 0));
    if (got > 0) continue;
    const bool more_later = SSL_get_error(ssl_.get(), got) == SSL_ERROR_WANT_READ;
    ERR_clear_error();
    return more_later;
  }
}

bool ServerTlsStream::Send(std::string_view clear) {
  if (SSL_is_init_finished(ssl_.get()) == 0) return false;
  while (!clear.empty()) {
    const int taken = SSL_write(ssl_.get(), clear.data(), static_cast<int>(clear.size()));
    if (taken <= 0) {
      ERR_clear_error();
      return false;
    }
    clear.remove_prefix(static_cast<std::size_t>(taken));
  }
  return true;
}

void ServerTlsStream::Finish() {
  if (SSL_is_init_finished(ssl_.get()) == 1) SSL_shutdown(ssl_.get());
  ERR_clear_error();
}

void ServerTlsStream::TakeOutput(std::string& wire) {
  const std::size_t size = BIO_ctrl_pending(out_);
  const std::size_t had = wire.size();
  wire.resize(had + size);
  if (size > 0) BIO_read(out_, wire.data() + had, static_cast<int>(size));
}

}  // namespace quillcast::net
