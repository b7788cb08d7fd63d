// The mailbox behind STARTTLS, talked to by OpenSSL's own client.
#include <gtest/gtest.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "net/server_tls.h"
#include "smtp/mailbox/mailbox_rig.h"

namespace quillcast::smtp {
namespace {

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  void operator()(X509* certificate) const { X509_free(certificate); }
};

// A key and a certificate that it signed itself, good for an hour.
void WriteCertificate(const std::filesystem::path& certificate_file, const std::filesystem::path& key_file) {
  const std::unique_ptr<EVP_PKEY, Close> key(EVP_EC_gen("P-256"));
  const std::unique_ptr<X509, Close> certificate(X509_new());
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 0);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 3600);
  X509_set_pubkey(certificate.get(), key.get());
  X509_sign(certificate.get(), key.get(), EVP_sha256());
  const std::unique_ptr<std::FILE, Close> certificate_out(std::fopen(certificate_file.c_str(), "w"));
  const std::unique_ptr<std::FILE, Close> key_out(std::fopen(key_file.c_str(), "w"));
  PEM_write_X509(certificate_out.get(), certificate.get());
  PEM_write_PrivateKey(key_out.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
}

MailboxOptions WithTls(const TestFolder& folder) {
  MailboxOptions options;
  options.store = folder.path() / "box";
  options.certificate = folder.path() / "cert.pem";
  options.key = folder.path() / "key.pem";
  WriteCertificate(options.certificate, options.key);
  return options;
}

// The client's end of a TLS connection over the socket of a TestClient.
class TlsClient {
 public:
  TlsClient(const TestClient& client, int highest_version)
      : context_(SSL_CTX_new(TLS_client_method())), ssl_(SSL_new(context_.get())) {
    SSL_set_max_proto_version(ssl_.get(), highest_version);
    SSL_set_fd(ssl_.get(), client.fd());
    connected_ = SSL_connect(ssl_.get()) == 1;
  }
  bool connected() const { return connected_; }

  // Sends all of it, and returns what has come when `expected` octets are there.
  std::string Exchange(const std::string& bytes, std::size_t expected) {
    SSL_write(ssl_.get(), bytes.data(), static_cast<int>(bytes.size()));
    std::string got(expected, '\0');
    std::size_t size = 0;
    while (size < expected) {
      const int n = SSL_read(ssl_.get(), got.data() + size, static_cast<int>(expected - size));
      if (n <= 0) break;
      size += static_cast<std::size_t>(n);
    }
    got.resize(size);
    return got;
  }

 private:
  std::unique_ptr<SSL_CTX, net::FreeSslContext> context_;
  std::unique_ptr<SSL, net::FreeSsl> ssl_;
  bool connected_ = false;
};

TEST(MailboxTls, TakesMessages) {
  TestFolder folder;
  auto options = WithTls(folder);
  options.session.offer = kStartTls;
  TestMailbox mailbox(std::move(options));
  TestClient client(mailbox.address());
  client.Reply();
  EXPECT_EQ(client.Say("EHLO c"), "250-mailbox.localhost\r\n250 STARTTLS");
  EXPECT_EQ(client.Say("STARTTLS"), "220 Begin the TLS handshake");
  TlsClient tls(client, TLS1_3_VERSION);
  ASSERT_TRUE(tls.connected());
  std::string content;
  while (content.size() < 100000) content += std::string(98, 'x') + "\r\n";
  const std::string expected =
      "250 mailbox.localhost\r\n250 Ok\r\n250 Ok\r\n354 End with <CRLF>.<CRLF>\r\n250 Kept as 000001.eml\r\n"
      "221 mailbox.localhost closing\r\n";
  EXPECT_EQ(tls.Exchange("EHLO c\r\nMAIL FROM:<a@example.org>\r\nRCPT TO:<b@example.net>\r\nDATA\r\n" + content +
                             ".\r\nQUIT\r\n",
                         expected.size()),
            expected);
  mailbox.Stop();
  EXPECT_EQ(ReadAll(folder.path() / "box" / "000001.eml"), content);
  EXPECT_EQ(nlohmann::json::parse(ReadAll(folder.path() / "box" / "index.jsonl"))["tls"], true);
}

TEST(MailboxTls, RefusesOldVersionsAndNoise) {
  TestFolder folder;
  TestMailbox mailbox(WithTls(folder));
  for (const bool noise : {false, true}) {
    TestClient client(mailbox.address());
    client.Reply();
    client.Say("EHLO c");
    client.Say("STARTTLS");
    if (noise) {
      client.Send("MAIL FROM:<a@example.org>\r\n");
      EXPECT_EQ(client.Reply().find("250"), std::string::npos);
    } else {
      EXPECT_FALSE(TlsClient(client, TLS1_1_VERSION).connected());
    }
  }
  TestClient after(mailbox.address());
  EXPECT_TRUE(after.Reply().starts_with("220 "));
}

TEST(MailboxTls, SaysWhichFileIsBad) {
  TestFolder folder;
  const auto good = WithTls(folder);
  const auto other = folder.path() / "other.pem";
  const auto text = folder.path() / "text";
  WriteCertificate(folder.path() / "unused.pem", other);
  std::ofstream(text) << "no PEM";
  struct Case {
    std::filesystem::path certificate;
    std::filesystem::path key;
    Failure failure;
    std::string named;
  };
  for (const Case& c :
       std::initializer_list<Case>{{folder.path() / "none", good.key, Failure::kNoInput, folder.path() / "none"},
                                   {text, good.key, Failure::kBadData, text},
                                   {good.certificate, text, Failure::kBadData, text},
                                   {good.certificate, other, Failure::kBadData, other}}) {
    const auto tls = net::ServerTls::Load(c.certificate, c.key);
    ASSERT_FALSE(tls) << c.named;
    EXPECT_EQ(tls.error().failure, c.failure) << c.named;
    EXPECT_NE(tls.error().what.InEnglish().find(c.named), std::string::npos) << tls.error().what.InEnglish();
  }
}

}  // namespace
}  // namespace quillcast::smtp
