// What is to be seen of a TLS handshake, whether it went well or not.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

struct ssl_ctx_st;
struct ssl_st;

namespace quillcast::net {

// Why a certificate is not trusted. The order of checks is the library's: the first that fails counts.
enum class CertificateFault {
  kNone,
  kExpired,
  kNotYetValid,
  kOtherName,
  kSelfSigned,
  kUnknownIssuer,
  kRevoked,
  kOther,
};

// Why a handshake did not come about.
enum class HandshakeFault {
  kNone,
  kCertificate,  // its CertificateFault says what of it
  kNoTls,        // what came is no TLS
  kTooOld,       // of versions before 1.2 alone
  kEnded,        // the connection did, in the midst of it
  kOther,
};

// Texts come from outside: through platform::Printable before they are shown.
struct CertificateFacts {
  std::vector<std::string> names;  // the hosts that it is for: names and addresses, 100 at most; the common name counts
                                   // for nothing
  std::string subject;             // the common name, or the organisation
  std::string issuer;              // the same of the authority
  std::chrono::system_clock::time_point valid_from;
  std::chrono::system_clock::time_point valid_to;
  CertificateFault fault = CertificateFault::kNone;
  std::string why;  // a clause, "it has expired"; empty where it is trusted
};

struct TlsFacts {
  HandshakeFault fault = HandshakeFault::kNone;
  std::string version = {};                          // "TLSv1.3"; empty where the handshake failed
  std::string cipher = {};                           // "TLS_AES_256_GCM_SHA384"
  std::optional<CertificateFacts> certificate = {};  // where one came
};

// `fault` as HandshakeFaultOf had it at the end of the handshake.
TlsFacts FactsOf(const ssl_st& connection, HandshakeFault fault);

// Of a handshake that has just failed with this result of the library's call, while the library's error is there.
HandshakeFault HandshakeFaultOf(const ssl_st& connection, int result);

// The fault of a verdict of the library's, and the clause that tells it.
CertificateFault FaultOf(long verdict);
std::string WordsFor(long verdict);

// Keeps the certificates of the context's connections for FactsOf, those that are refused as well; they are verified
// as ever.
void KeepCertificates(ssl_ctx_st* context);

}  // namespace quillcast::net
