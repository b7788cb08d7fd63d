#include "net/tls_facts.h"

#include <arpa/inet.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <array>
#include <cstdint>
#include <ctime>
#include <memory>

namespace quillcast::net {
namespace {

constexpr std::size_t kMostNames = 100;

struct Reason {
  long code;
  CertificateFault fault;
  const char* words;
};
constexpr const char* kStranger = "it comes from an authority that this computer does not know";
constexpr std::array kReasons{
    Reason{X509_V_ERR_CERT_HAS_EXPIRED, CertificateFault::kExpired, "it has expired"},
    Reason{X509_V_ERR_CERT_NOT_YET_VALID, CertificateFault::kNotYetValid,
           "it is not yet valid (is this computer's clock right?)"},
    Reason{X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT, CertificateFault::kSelfSigned, "it is self-signed"},
    Reason{X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN, CertificateFault::kUnknownIssuer, kStranger},
    Reason{X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY, CertificateFault::kUnknownIssuer, kStranger},
    Reason{X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE, CertificateFault::kUnknownIssuer, kStranger},
    Reason{X509_V_ERR_HOSTNAME_MISMATCH, CertificateFault::kOtherName, "it is for another name"},
    Reason{X509_V_ERR_IP_ADDRESS_MISMATCH, CertificateFault::kOtherName, "it is for another name"},
    Reason{X509_V_ERR_CERT_REVOKED, CertificateFault::kRevoked, "it was revoked"},
};

const Reason* ReasonOf(long verdict) {
  for (const Reason& reason : kReasons) {
    if (reason.code == verdict) return &reason;
  }
  return nullptr;
}

void FreeKept(void* /*owner*/, void* kept, CRYPTO_EX_DATA* /*all*/, int /*index*/, long /*number*/, void* /*more*/) {
  X509_free(static_cast<X509*>(kept));
}

// Where a connection has the certificate that its server showed.
int KeptIndex() {
  static const int index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, FreeKept);
  return index;
}

// The library itself keeps no certificate that it refused.
int VerifyAndKeep(X509_STORE_CTX* chain, void* /*argument*/) {
  auto* connection = static_cast<SSL*>(X509_STORE_CTX_get_ex_data(chain, SSL_get_ex_data_X509_STORE_CTX_idx()));
  X509* shown = X509_STORE_CTX_get0_cert(chain);
  if (connection != nullptr && shown != nullptr && X509_up_ref(shown) == 1) {
    X509_free(static_cast<X509*>(SSL_get_ex_data(connection, KeptIndex())));
    SSL_set_ex_data(connection, KeptIndex(), shown);
  }
  return X509_verify_cert(chain);
}

std::string TextOf(const ASN1_STRING* text) {
  unsigned char* utf8 = nullptr;
  const int length = text != nullptr ? ASN1_STRING_to_UTF8(&utf8, text) : -1;
  std::string out;
  if (length > 0) out.assign(reinterpret_cast<const char*>(utf8), static_cast<std::size_t>(length));
  OPENSSL_free(utf8);
  return out;
}

std::string NameOf(const X509_NAME* name) {
  for (const int nid : {NID_commonName, NID_organizationName}) {
    const int at = X509_NAME_get_index_by_NID(name, nid, -1);
    if (at >= 0) return TextOf(X509_NAME_ENTRY_get_data(X509_NAME_get_entry(name, at)));
  }
  return {};
}

std::string AddressOf(const ASN1_OCTET_STRING* octets) {
  std::array<char, INET6_ADDRSTRLEN> text{};
  const int length = ASN1_STRING_length(octets);
  if (length != 4 && length != 16) return {};
  const bool written =
      ::inet_ntop(length == 4 ? AF_INET : AF_INET6, ASN1_STRING_get0_data(octets), text.data(), text.size()) != nullptr;
  return written ? text.data() : std::string();
}

std::string NameOf(const GENERAL_NAME* name) {
  if (name->type == GEN_DNS) return TextOf(name->d.dNSName);
  return name->type == GEN_IPADD ? AddressOf(name->d.iPAddress) : std::string();
}

std::vector<std::string> HostsOf(const X509* certificate) {
  std::vector<std::string> hosts;
  const auto free_names = [](GENERAL_NAMES* names) { GENERAL_NAMES_free(names); };
  const std::unique_ptr<GENERAL_NAMES, decltype(free_names)> names(
      static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr)), free_names);
  for (int i = 0; i < sk_GENERAL_NAME_num(names.get()) && hosts.size() < kMostNames; ++i) {
    std::string host = NameOf(sk_GENERAL_NAME_value(names.get(), i));
    if (!host.empty()) hosts.push_back(std::move(host));
  }
  return hosts;
}

std::chrono::system_clock::time_point MomentOf(const ASN1_TIME* time) {
  std::tm parts{};
  if (ASN1_TIME_to_tm(time, &parts) != 1) return {};
  return std::chrono::system_clock::from_time_t(::timegm(&parts));
}

CertificateFacts FactsOf(const X509* certificate, long verdict) {
  return {.names = HostsOf(certificate),
          .subject = NameOf(X509_get_subject_name(certificate)),
          .issuer = NameOf(X509_get_issuer_name(certificate)),
          .valid_from = MomentOf(X509_get0_notBefore(certificate)),
          .valid_to = MomentOf(X509_get0_notAfter(certificate)),
          .fault = FaultOf(verdict),
          .why = verdict == X509_V_OK ? std::string() : WordsFor(verdict)};
}

}  // namespace

CertificateFault FaultOf(long verdict) {
  if (verdict == X509_V_OK) return CertificateFault::kNone;
  const Reason* reason = ReasonOf(verdict);
  return reason != nullptr ? reason->fault : CertificateFault::kOther;
}

std::string WordsFor(long verdict) {
  const Reason* reason = ReasonOf(verdict);
  return reason != nullptr ? reason->words : X509_verify_cert_error_string(verdict);
}

HandshakeFault HandshakeFaultOf(const ssl_st& connection, int result) {
  if (SSL_get_verify_result(&connection) != X509_V_OK) return HandshakeFault::kCertificate;
  const int error = SSL_get_error(&connection, result);
  if (error == SSL_ERROR_SYSCALL || error == SSL_ERROR_ZERO_RETURN) return HandshakeFault::kEnded;
  switch (ERR_GET_REASON(ERR_peek_error())) {
    case SSL_R_UNEXPECTED_EOF_WHILE_READING:
      return HandshakeFault::kEnded;
    case SSL_R_UNSUPPORTED_PROTOCOL:
    case SSL_R_TLSV1_ALERT_PROTOCOL_VERSION:
      return HandshakeFault::kTooOld;
    case SSL_R_WRONG_VERSION_NUMBER:
      return HandshakeFault::kNoTls;
    default:
      return HandshakeFault::kOther;
  }
}

void KeepCertificates(ssl_ctx_st* context) { SSL_CTX_set_cert_verify_callback(context, VerifyAndKeep, nullptr); }

TlsFacts FactsOf(const ssl_st& connection, HandshakeFault fault) {
  TlsFacts facts{.fault = fault};
  if (fault == HandshakeFault::kNone) {
    facts.version = SSL_get_version(&connection);
    facts.cipher = SSL_get_cipher_name(&connection);
  }
  const auto* kept = static_cast<const X509*>(SSL_get_ex_data(&connection, KeptIndex()));
  if (kept != nullptr) facts.certificate = FactsOf(kept, SSL_get_verify_result(&connection));
  return facts;
}

}  // namespace quillcast::net
