// TLS with certificates made here: the good one is taken, every other is refused in words, and nothing leaves in clear.
#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <filesystem>
#include <fstream>

#include "smtp/client.h"
#include "smtp/client_play.h"
#include "smtp/scripted_server.h"

namespace quillcast::smtp {
namespace {

constexpr long kHour = 3600;

struct Certificate {
  EVP_PKEY* key = nullptr;
  X509* certificate = nullptr;
};

void AddExtension(X509* to, int nid, const std::string& value) {
  X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, nullptr, nid, value.c_str());
  X509_add_ext(to, extension, -1);
  X509_EXTENSION_free(extension);
}

// Valid from `from` to `to`, in seconds from now, for `name` ("DNS:localhost"); self-signed without an issuer.
Certificate Make(const std::string& common_name, const std::string& name, const Certificate* issuer, long from,
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

void Free(const Certificate& certificate) {
  X509_free(certificate.certificate);
  EVP_PKEY_free(certificate.key);
}

class ClientTls : public testing::Test {
 protected:
  void SetUp() override {
    ca_ = Make("Test Authority", "", nullptr, -kHour, kHour);
    ca_file_ = std::filesystem::path(testing::TempDir()) / ("ca-" + std::to_string(::getpid()) + ".pem");
    std::FILE* file = std::fopen(ca_file_.c_str(), "w");
    ASSERT_NE(file, nullptr);
    PEM_write_X509(file, ca_.certificate);
    std::fclose(file);
  }
  void TearDown() override {
    Free(ca_);
    std::filesystem::remove(ca_file_);
  }

  ClientOptions OptionsFor(const std::string& host, std::uint16_t port) const {
    ClientOptions options;
    options.servers = {{host, port}};
    options.timeout = std::chrono::seconds(5);
    options.ca_file = ca_file_;
    options.sign_in = true;
    options.user = "ada";
    options.password = Secret("s3cret");
    return options;
  }

  Certificate ca_;
  std::filesystem::path ca_file_;
};

class Silent final : public Mailing {
 public:
  Job* NextJob() override { return nullptr; }
  void Finished(Job&, const Outcome&) override {}
  void LogLine(std::string_view line) override { log.emplace_back(line); }
  void Progress(std::uint64_t, std::uint64_t) override {}
  std::vector<std::string> log;
};

using Context = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;
Context ServerContext(const Certificate& certificate) {
  Context context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
  SSL_CTX_use_certificate(context.get(), certificate.certificate);
  SSL_CTX_use_PrivateKey(context.get(), certificate.key);
  return context;
}

// A server with STARTTLS, or with TLS at once, that takes the password and keeps what it heard in clear.
struct TlsServer {
  TlsServer(const Certificate& certificate, bool at_once_)
      : context(ServerContext(certificate)), at_once(at_once_), server([this](Peer& peer, int) { Serve(peer); }) {}

  void Serve(Peer& peer) {
    if (!at_once) {
      peer.Say("220 ESMTP\r\n");
      clear.push_back(peer.Line());
      peer.Say("250-mx\r\n250-AUTH PLAIN\r\n250 STARTTLS\r\n");
      clear.push_back(peer.Line());
      peer.Say("220 go\r\n");
    }
    if (!peer.StartTls(context.get())) return peer.Stall();
    resumed.push_back(peer.resumed());
    if (at_once) peer.Say("220 ESMTP\r\n");
    for (std::string line = peer.Line(); !line.empty(); line = peer.Line()) {
      if (line.starts_with("AUTH")) auth = line;
      peer.Say(line.starts_with("EHLO")   ? "250-mx\r\n250 AUTH PLAIN\r\n"
               : line.starts_with("AUTH") ? "235 ok\r\n"
                                          : "221 bye\r\n");
      if (line == "QUIT") return;
    }
  }

  Context context;
  bool at_once;
  std::vector<std::string> clear;
  std::string auth;
  std::vector<bool> resumed;
  ScriptedServer server;  // last: its thread ends before what it writes to goes
};

Outcome TestAccount(const ClientOptions& options) {
  const platform::SystemClock clock;
  const platform::CancelToken cancel;
  Silent silent;
  return Client(options, clock, cancel).Test(silent);
}

TEST_F(ClientTls, TakesWhatIsTrustedAndRefusesTheRestInWords) {
  struct Case {
    const char* host;
    const char* name;
    bool signed_by_ca;
    long from;
    long to;
    const char* why;  // nullptr when it is trusted
  };
  for (const Case& c :
       std::initializer_list<Case>{{"localhost", "DNS:localhost", true, -kHour, kHour, nullptr},
                                   {"127.0.0.1", "IP:127.0.0.1", true, -kHour, kHour, nullptr},
                                   {"localhost", "DNS:mx.example", true, -kHour, kHour, "another name"},
                                   {"127.0.0.1", "IP:127.0.0.2", true, -kHour, kHour, "another name"},
                                   {"127.0.0.1", "DNS:127.0.0.1", true, -kHour, kHour, "another name"},
                                   {"localhost", "DNS:localhost", true, -2 * kHour, -kHour, "expired"},
                                   {"localhost", "DNS:localhost", true, kHour, 2 * kHour, "not yet valid"},
                                   {"localhost", "DNS:localhost", false, -kHour, kHour, "self-signed"}}) {
    for (const bool at_once : {false, true}) {
      SCOPED_TRACE(std::string(c.host) + " " + c.name + " " + (c.why != nullptr ? c.why : "good"));
      const Certificate certificate = Make(c.host, c.name, c.signed_by_ca ? &ca_ : nullptr, c.from, c.to);
      Outcome outcome;
      TlsServer tls(certificate, at_once);
      {
        ClientOptions options = OptionsFor(c.host, tls.server.port());
        options.security = at_once ? Security::kTls : Security::kAutomatic;
        outcome = TestAccount(options);
      }
      EXPECT_EQ(outcome.code, c.why == nullptr ? ResultCode::kSuccess : ResultCode::kGreetingRefused);
      if (c.why != nullptr) {
        EXPECT_NE(outcome.reason.find(c.why), std::string::npos) << outcome.reason;
        EXPECT_NE(outcome.reason.find(c.host), std::string::npos) << outcome.reason;
      }
      EXPECT_EQ(tls.auth, c.why == nullptr ? "AUTH PLAIN AGFkYQBzM2NyZXQ=" : "");
      if (!at_once) {
        EXPECT_EQ(tls.clear, (std::vector<std::string>{"EHLO [127.0.0.1]", "STARTTLS"}));
      }
      Free(certificate);
    }
  }
}

TEST_F(ClientTls, RefusesAnAuthorityThatNobodyKnows) {
  const Certificate other = Make("Other Authority", "", nullptr, -kHour, kHour);
  const Certificate certificate = Make("localhost", "DNS:localhost", &other, -kHour, kHour);
  {
    TlsServer tls(certificate, false);
    const Outcome outcome = TestAccount(OptionsFor("localhost", tls.server.port()));
    EXPECT_EQ(outcome.code, ResultCode::kGreetingRefused);
    EXPECT_NE(outcome.reason.find("authority that this computer does not know"), std::string::npos) << outcome.reason;
  }
  Free(certificate);
  Free(other);
}

TEST_F(ClientTls, RefusesOldVersions) {
  const Certificate certificate = Make("localhost", "DNS:localhost", &ca_, -kHour, kHour);
  {
    TlsServer tls(certificate, true);
    SSL_CTX_set_min_proto_version(tls.context.get(), TLS1_VERSION);
    SSL_CTX_set_max_proto_version(tls.context.get(), TLS1_1_VERSION);
    SSL_CTX_set_security_level(tls.context.get(), 0);
    ClientOptions options = OptionsFor("localhost", tls.server.port());
    options.security = Security::kTls;
    EXPECT_EQ(TestAccount(options).code, ResultCode::kGreetingRefused);
  }
  Free(certificate);
}

TEST_F(ClientTls, ResumesTheSessionOfTheLastConnection) {
  const Certificate certificate = Make("localhost", "DNS:localhost", &ca_, -kHour, kHour);
  {
    TlsServer tls(certificate, false);
    const platform::SystemClock clock;
    const platform::CancelToken cancel;
    Silent silent;
    Client client(OptionsFor("localhost", tls.server.port()), clock, cancel);
    for (int n = 0; n < 2; ++n) EXPECT_EQ(client.Test(silent).code, ResultCode::kSuccess);
    EXPECT_EQ(tls.resumed, (std::vector<bool>{false, true}));
  }
  Free(certificate);
}

}  // namespace
}  // namespace quillcast::smtp
