// Certificates made for a test, and servers' contexts that show them.
#pragma once

#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <memory>
#include <string>

namespace quillcast::smtp {

inline constexpr long kHour = 3600;

struct Certificate {
  EVP_PKEY* key = nullptr;
  X509* certificate = nullptr;
};

inline void AddExtension(X509* to, int nid, const std::string& value) {
  X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, nullptr, nid, value.c_str());
  X509_add_ext(to, extension, -1);
  X509_EXTENSION_free(extension);
}

// Valid from `from` to `to`, in seconds from now, for `name` ("DNS:localhost"); self-signed without an issuer.
inline Certificate Make(const std::string& common_name, const std::string& name, const Certificate* issuer, long from,
                        long to) {
  Certificate made{EVP_EC_gen("P-256"), X509_new()};
  X509* x = made.certificate;
  X509_set_version(x, 2);
  static long serial = 1;
  ASN1_INTEGER_set(X509_get_serialNumber(x), serial++);
  X509_gmtime_adj(X509_getm_notBefore(x), from);
  X509_gmtime_adj(X509_getm_notAfter(x), to);
  X509_NAME_add_entry_by_txt(X509_get_subject_name(x), "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>(common_name.c_str()), -1, -1, 0);
  X509_set_issuer_name(x, X509_get_subject_name(issuer != nullptr ? issuer->certificate : x));
  X509_set_pubkey(x, made.key);
  if (name.empty()) {
    AddExtension(x, NID_basic_constraints, "critical,CA:TRUE");
  } else {
    AddExtension(x, NID_subject_alt_name, name);
  }
  X509_sign(x, issuer != nullptr ? issuer->key : made.key, EVP_sha256());
  return made;
}

inline void Free(const Certificate& certificate) {
  X509_free(certificate.certificate);
  EVP_PKEY_free(certificate.key);
}

using Context = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;
inline Context ServerContext(const Certificate& certificate) {
  Context context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
  SSL_CTX_use_certificate(context.get(), certificate.certificate);
  SSL_CTX_use_PrivateKey(context.get(), certificate.key);
  return context;
}

}  // namespace quillcast::smtp
