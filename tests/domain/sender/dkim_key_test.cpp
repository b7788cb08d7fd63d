#include "domain/sender/dkim_key.h"

#include <gtest/gtest.h>

namespace quillcast::domain {
namespace {

// Made by "openssl genrsa BITS | openssl rsa -pubout -outform DER | base64"; the last by -RSAPublicKey_out.
constexpr const char* kRsa512 =
    "MFwwDQYJKoZIhvcNAQEBBQADSwAwSAJBALTreIc8GAo+w0P0LXhog3yTKspbgB9tc096NZ6cO4dm1Q+kdHfbYd6D43an/q8z"
    "SkhjE3PltYYPmOjix+ukUoUCAwEAAQ==";
constexpr const char* kRsa1024 =
    "MIGfMA0GCSqGSIb3DQEBAQUAA4GNADCBiQKBgQC2TXPj/aD9gQN3/N7oZqfue+OcgPsoI87mbMQsnhonumbpVEy3ke2vNuXj"
    "ro0sDgkdxMR/6+aDapYHjhWpYml4+HpulsjLbnEB13th2cBZOtbZO5ZKWAkEMcPJ3tlFg+PeW6gwH0h8/hwo5K2u+O/brqUM"
    "L8C1nOtRb6lf3bQW9QIDAQAB";
constexpr const char* kRsa2048 =
    "MIIBIjANBgkqhkiG9w0BAQEFAAOCAQ8AMIIBCgKCAQEA6eeEXfZCVWOnDJawP+1k/c0Bq2fi5cczLDzgkqm6NYfkHtCj//PP"
    "R78I396y5ojE38b57cpgRy717VeNdTnn0g632vGmhI6gEUf9yrM2+hraVc2WEf3N1Ao4bNZm4z1/XQD5ZEO+WQI8HonTrh/o"
    "aUokMQw/Cya1oERGpoNz+41T6NSr1chGxwzY+r7iagOslLqxtxw33uNcr0Apv001b+H/dGt0n3nRxRjtV0nAJ6IoGSPwNNPs"
    "SMEjdTzFBNa3ecU2CL2mY6J4xm2IWQoohD/p0cmslQ3OyWVkUSmRZ7Hn+jNCMSZcjCEJjZliuYCp3IHsJ6j2faMuWP8nWP8R"
    "swIDAQAB";
constexpr const char* kBareRsa1024 =
    "MIGJAoGBALoPAZ9qv46OH9Cd4CrPOEQg+tViWhLBcpHxoHz7LR0+xrNlWny0rYc9l69tjSkJ7dUBo5EEMRyY4PDHRgEyN0oF"
    "JJSOetuyHSu08A/VoLOemJuRzRafi+D/HMOCon4dWqm6i0OupOVDfPDDVix6IFt7Cv/ryJ2LbuQI/oMaaFrlAgMBAAE=";

TEST(DkimKey, IsReadAsItIsPublished) {
  const std::string rsa512 = kRsa512;
  const std::string rsa2048 = kRsa2048;
  struct Case {
    const char* name;
    std::string record;
    DkimKey key;
  };
  for (const Case& c :
       {Case{"plain", "v=DKIM1; k=rsa; p=" + rsa2048, {DkimKey::Kind::kRsa, 2048}},
        Case{"no version, no kind", std::string("p=") + kRsa1024 + ";", {DkimKey::Kind::kRsa, 1024}},
        Case{"short", "v=DKIM1;p=" + rsa512, {DkimKey::Kind::kRsa, 512}},
        Case{"the key without its kind in it", std::string("v=DKIM1; p=") + kBareRsa1024, {DkimKey::Kind::kRsa, 1024}},
        Case{"folded",
             "v=DKIM1; p=" + rsa2048.substr(0, 100) + "\r\n\t " + rsa2048.substr(100),
             {DkimKey::Kind::kRsa, 2048}},
        Case{"ed25519 of RFC 8463",
             "v=DKIM1; k=ed25519; p=11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=",
             {DkimKey::Kind::kEd25519, 256}},
        Case{"revoked", "v=DKIM1; p=", {DkimKey::Kind::kRsa, 0, true}},
        Case{"for tests", "v=DKIM1; t=s : y; p=" + rsa512, {DkimKey::Kind::kRsa, 512, false, true}},
        Case{"for e-mail among others",
             "v=DKIM1; s=tlsrpt : email; h=sha1:sha256; p=" + rsa512,
             {DkimKey::Kind::kRsa, 512}},
        Case{"for everything", "v=DKIM1; s=*; p=" + rsa512, {DkimKey::Kind::kRsa, 512}},
        Case{"for another service",
             "v=DKIM1; s=tlsrpt; p=" + rsa512,
             {DkimKey::Kind::kRsa, 512, false, false, "s=tlsrpt"}},
        Case{"of a kind to come", "v=DKIM1; k=new; p=AAAA", {DkimKey::Kind::kUnknown, 0}}}) {
    SCOPED_TRACE(c.name);
    EXPECT_TRUE(IsDkimKey(c.record));
    const auto key = ParseDkimKey(c.record);
    ASSERT_TRUE(key) << Describe(key.error());
    EXPECT_TRUE(*key == c.key) << key->bits << " bits";
  }
}

TEST(DkimKey, ThatIsDamagedIsRefused) {
  for (const std::string& record : {"v=DKIM1; p=" + std::string(kRsa2048).substr(0, 200),  // cut when it was pasted
                                    std::string("v=DKIM1; p=\"") + kRsa1024 + "\"",        // quoted
                                    std::string("v=DKIM2; p=") + kRsa1024,
                                    std::string("v=DKIM1\\; p=") + kRsa1024,  // as zone files write it
                                    std::string("v=DKIM1; k=ed25519; p=AAAA"), std::string("v=DKIM1; p=AAAA; p=AAAA"),
                                    std::string("v=DKIM1 p"), std::string("v=DKIM1")}) {
    EXPECT_FALSE(ParseDkimKey(record)) << record;
  }
  EXPECT_TRUE(IsDkimKey("v=DKIM1\\; p=AAAA"));
  EXPECT_FALSE(IsDkimKey("v=spf1 -all"));
  EXPECT_FALSE(IsDkimKey("v=DMARC1; p=reject"));
  EXPECT_FALSE(IsDkimKey("some-site-verification=abc"));
}

}  // namespace
}  // namespace quillcast::domain
