#include "net/tls_context.h"

#include <fmt/format.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <array>
#include <cerrno>

#include "net/address.h"
#include "net/idna.h"
#include "net/tls_facts.h"

namespace quillcast::net {
namespace {

// Its socket is kept in the BIO's data pointer.
TlsSocket& SocketOf(BIO* bio) { return *static_cast<TlsSocket*>(BIO_get_data(bio)); }

int BioResult(BIO* bio, ssize_t count, int retry_flag) {
  BIO_clear_retry_flags(bio);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) BIO_set_flags(bio, retry_flag | BIO_FLAGS_SHOULD_RETRY);
  return static_cast<int>(count);
}

int WriteBio(BIO* bio, const char* bytes, int size) {
  return BioResult(bio, SocketOf(bio).Write(bytes, static_cast<std::size_t>(size)), BIO_FLAGS_WRITE);
}

int ReadBio(BIO* bio, char* buffer, int size) {
  return BioResult(bio, SocketOf(bio).Read(buffer, static_cast<std::size_t>(size)), BIO_FLAGS_READ);
}

long ControlBio(BIO* /*bio*/, int command, long /*number*/, void* /*pointer*/) {
  return command == BIO_CTRL_FLUSH ? 1 : 0;
}

BIO_METHOD* NewMethod() {
  BIO_METHOD* method = BIO_meth_new(BIO_TYPE_SOURCE_SINK | BIO_get_new_index(), "socket of records");
  if (method == nullptr) return nullptr;
  BIO_meth_set_write(method, WriteBio);
  BIO_meth_set_read(method, ReadBio);
  BIO_meth_set_ctrl(method, ControlBio);
  return method;
}

Error LibraryError(std::string_view doing) {
  std::array<char, 256> words{};
  ERR_error_string_n(ERR_get_error(), words.data(), words.size());
  ERR_clear_error();
  return {Failure::kInternal, Say("TLS cannot be used: {}: {}.", doing, words.data())};
}

// The names that count are those of the extension alone, and a wildcard stands for a whole label (RFC 9525 6.3, 6.4): a
// common name is free text, and "m*.example" fits names that nobody thought of. Names in certificates, and the one that
// is sent ahead, have no dot at their end (RFC 6066 3).
bool SetName(SSL* connection, const std::string& host) {
  if (const auto address = ParseIpAddress(host)) {
    const std::string plain = ToString(*address);  // certificates know no interface
    return X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(connection), plain.c_str()) == 1;
  }
  const auto ascii = AsciiHost(host);
  if (!ascii) return false;
  const std::string name(WithoutRootDot(*ascii));
  SSL_set_hostflags(connection, X509_CHECK_FLAG_NEVER_CHECK_SUBJECT | X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
  return SSL_set_tlsext_host_name(connection, name.c_str()) == 1 && SSL_set1_host(connection, name.c_str()) == 1;
}

std::string HandshakeWords(HandshakeFault fault, unsigned long code) {
  if (fault == HandshakeFault::kTooOld) return "it knows only versions of TLS older than 1.2, which are no longer safe";
  if (fault == HandshakeFault::kNoTls) return "it does not answer with TLS on this port";
  if (fault == HandshakeFault::kEnded) return "the connection was closed";
  const char* words = code != 0 ? ERR_reason_error_string(code) : nullptr;
  return words != nullptr ? words : "it failed";
}

}  // namespace

void FreeTls::operator()(bio_method_st* method) const { BIO_meth_free(method); }
void FreeTls::operator()(ssl_ctx_st* context) const { SSL_CTX_free(context); }
void FreeTls::operator()(ssl_session_st* session) const { SSL_SESSION_free(session); }
void FreeTls::operator()(ssl_st* connection) const { SSL_free(connection); }

Result<std::unique_ptr<TlsContext>> TlsContext::ForClient(const std::string& ca_file) {
  std::unique_ptr<TlsContext> out(new TlsContext);
  out->method_.reset(NewMethod());
  out->context_.reset(SSL_CTX_new(TLS_client_method()));
  SSL_CTX* context = out->context_.get();
  if (!out->method_ || context == nullptr) return LibraryError("no memory");
  SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
  SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);
  KeepCertificates(context);
  SSL_CTX_set_mode(context, SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
  SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_CLIENT | SSL_SESS_CACHE_NO_INTERNAL);
  SSL_CTX_sess_set_new_cb(context, KeepSession);
  SSL_CTX_set_app_data(context, out.get());
  const int trusted =
      ca_file.empty() ? SSL_CTX_set_default_verify_paths(context) : SSL_CTX_load_verify_file(context, ca_file.c_str());
  if (trusted != 1) return LibraryError("the trusted authorities cannot be read");
  return out;
}

Result<SslHandle> TlsContext::NewConnection(TlsSocket& socket, const std::string& host) {
  SslHandle connection(SSL_new(context_.get()));
  BIO* bio = BIO_new(method_.get());
  if (!connection || bio == nullptr) return LibraryError("no memory");
  BIO_set_data(bio, &socket);
  BIO_set_init(bio, 1);
  SSL_set_bio(connection.get(), bio, bio);
  if (!SetName(connection.get(), host)) return LibraryError("the server's name");
  // The key of sessions_ stays where it is, so that KeepSession can find it by this pointer.
  const auto [entry, added] = sessions_.try_emplace(host);
  SSL_set_app_data(connection.get(), const_cast<std::string*>(&entry->first));
  if (entry->second) SSL_set_session(connection.get(), entry->second.get());
  SSL_set_connect_state(connection.get());
  return connection;
}

// Tickets of TLS 1.3 come after the handshake, and each is for one use: the newest replaces what was kept.
int TlsContext::KeepSession(ssl_st* connection, ssl_session_st* session) {
  auto* self = static_cast<TlsContext*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(connection)));
  const auto* host = static_cast<const std::string*>(SSL_get_app_data(connection));
  self->sessions_[*host].reset(session);
  return 1;  // the reference is ours now
}

Error HandshakeError(const ssl_st& connection, HandshakeFault fault, const std::string& host) {
  if (fault == HandshakeFault::kCertificate) {
    const long verdict = SSL_get_verify_result(&connection);
    ERR_clear_error();
    return {Failure::kNotPermitted, Say("The certificate of {} is not trusted: {}.", host, WordsFor(verdict)),
            "Nothing was sent. Check the server's name; if the server is yours, have its authority's certificate added "
            "to this computer's trusted ones, or set Security to None if you trust the network."};
  }
  const std::string words = HandshakeWords(fault, ERR_peek_error());
  ERR_clear_error();
  const Failure failure = fault == HandshakeFault::kEnded ? Failure::kIo : Failure::kUnavailable;
  return {failure, Say("TLS could not be started with {}: {}.", host, words),
          "Check that Security fits the server's port (TLS from the first byte is usual on port 465)."};
}

}  // namespace quillcast::net
