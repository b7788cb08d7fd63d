// NTLM against the published values (MS-NLMP 4.2, RFC 1320) and against challenges that are broken.
#include "smtp/sasl/ntlm.h"

#include <gtest/gtest.h>

#include "smtp/hex.h"
#include "smtp/sasl/md4.h"

namespace quillcast::smtp {
namespace {

TEST(Md4, DigestsWhatThePublishedValuesSay) {
  for (const auto& [text, digest] :
       {std::pair{"", "31d6cfe0d16ae931b73c59d7e0c089c0"}, std::pair{"a", "bde52cb31de33e46245e05fbdbd6fb24"},
        std::pair{"abc", "a448017aaf21d8525fc10ae87aa6729d"},
        std::pair{"message digest", "d9130a8164549fe818874806e1c7014b"},
        std::pair{"abcdefghijklmnopqrstuvwxyz", "d79e1c308aa5bbcdeea8ed63df412da9"},
        std::pair{"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "043f8582f241db351ce627e153e7f0e4"},
        std::pair{"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
                  "e33b4ddc9c38f2199c3e7b164fcc0536"}}) {
    EXPECT_EQ(ToHex(Md4(text).view()), digest) << text;
  }
}

const std::string kClientNonce(8, '\xAA');
// MS-NLMP 4.2.4.3.
const std::string kChallenge = FromHex(
    "4e544c4d53535000020000000c000c003800000033828ae20123456789abcdef00000000000000002400240044000000060070170000000f"
    "53006500720076006500720002000c0044006f006d00610069006e0001000c0053006500720076006500720000000000");

NtlmClient Client(std::string_view account) { return {account, "Password", kClientNonce, std::string(8, '\0')}; }

TEST(Ntlm, MakesThePublishedKeysAndResponses) {
  EXPECT_EQ(ToHex(NtlmKey(NtlmIdentity("Domain\\User"), "Password").view()), "0c868a403bfd7a93a3001ef22ef02e3f");
  EXPECT_EQ(ToHex(NtlmTime(0)), "00803ed5deb19d01");
  const auto answer = NtlmAuthenticate(Client("Domain\\User"), NtlmNegotiate(), kChallenge);
  ASSERT_TRUE(answer);
  // Old response, new response, then the names; lengths and offsets as the head of 72 octets gives them.
  EXPECT_EQ(ToHex(answer->view()),
            "4e544c4d5353500003000000"
            "1800180048000000"
            "5400540060000000"
            "0c000c00b4000000"
            "08000800c0000000"
            "00000000c8000000"
            "00000000c8000000"
            "01828800"
            "0000000000000000"
            "86c35097ac9cec102554764a57cccc19aaaaaaaaaaaaaaaa"
            "68cd0ab851e51c96aabc927bebef6a1c"
            "01010000000000000000000000000000aaaaaaaaaaaaaaaa00000000"
            "02000c0044006f006d00610069006e0001000c0053006500720076006500720000000000"
            "00000000"
            "44006f006d00610069006e00"
            "5500730065007200");
}

// The answer was made with the hmac module of Python and OpenSSL's own MD4.
TEST(Ntlm, SealsTheMessagesWhereTheServerGivesTheTime) {
  const std::string challenge = FromHex(
      "4e544c4d53535000020000000c000c003000000033828ae20123456789abcdef0000000000000000300030003c0000005300"
      "6500720076006500720002000c0044006f006d00610069006e0001000c00530065007200760065007200070008000090d336"
      "b734c30100000000");
  const auto answer = NtlmAuthenticate(Client("Domain\\User"), NtlmNegotiate(), challenge);
  ASSERT_TRUE(answer);
  EXPECT_EQ(ToHex(answer->view()),
            "4e544c4d5353500003000000180018005800000068006800700000000c000c00d800000008000800e400000000000000ec00"
            "000000000000ec000000018288000000000000000000f4023d641faa78055c15c31ea1895089000000000000000000000000"
            "000000000000000000000000dcfcd060b4aeb71ecbacc63513782dbf01010000000000000090d336b734c301aaaaaaaaaaaa"
            "aaaa0000000002000c0044006f006d00610069006e0001000c00530065007200760065007200070008000090d336b734c301"
            "0600040002000000000000000000000044006f006d00610069006e005500730065007200");
}

TEST(Ntlm, TakesAccountsInBothForms) {
  for (const auto& [account, domain, user] :
       {std::tuple{"EXAMPLE\\ada", "EXAMPLE", "ada"}, std::tuple{"ada@example.org", "", "ada@example.org"},
        std::tuple{"ada", "", "ada"}, std::tuple{"\\ada", "", "ada"}}) {
    const NtlmIdentity identity(account);
    EXPECT_EQ(identity.domain, domain);
    EXPECT_EQ(identity.user, user);
  }
  // The name is folded, the domain is not.
  EXPECT_EQ(NtlmKey(NtlmIdentity("D\\\u00FCser"), "p").view(), NtlmKey(NtlmIdentity("D\\\u00DCSER"), "p").view());
  EXPECT_NE(NtlmKey(NtlmIdentity("D\\user"), "p").view(), NtlmKey(NtlmIdentity("d\\user"), "p").view());
}

std::string With(std::size_t at, const char* hex) {
  std::string challenge = kChallenge;
  const std::string octets = FromHex(hex);
  return challenge.replace(at, octets.size(), octets);
}

TEST(Ntlm, RefusesChallengesThatMakeNoSense) {
  struct Case {
    const char* name;
    std::string challenge;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"another signature", With(0, "4f")},
           {"another message", With(8, "01")},
           {"no Unicode", With(20, "32")},
           {"name beyond the end", With(16, "ff")},
           {"name far beyond the end", With(16, "ffffffff")},
           {"name at its own head", With(16, "04")},
           {"information beyond the end", With(40, "2500")},
           {"information far beyond the end", With(40, "ffffffffffffffff")},
           {"information at its own head", With(44, "20")},
           {"information within the name", With(44, "40")},
           {"information that does not end", With(40, "20002000")},
           {"information cut in an attribute", With(40, "12001200")},
           {"attribute beyond the end", With(70, "ff00")},
           {"an end with a value", With(100, "00000100")},
           {"an attribute twice", With(84, "0200")},
           {"a time that is none", With(68, "0700")},
           {"flags that are none", With(68, "0600")},
       }) {
    SCOPED_TRACE(c.name);
    EXPECT_FALSE(NtlmAuthenticate(Client("User"), NtlmNegotiate(), c.challenge));
  }
  // Cut anywhere it is no challenge, and is never read beyond its end.
  for (std::size_t length = 0; length < kChallenge.size(); ++length) {
    const std::string exact(kChallenge, 0, length);
    EXPECT_FALSE(NtlmAuthenticate(Client("User"), NtlmNegotiate(), exact)) << length;
  }
}

TEST(Ntlm, TakesWhatOldServersSend) {
  std::string bare = kChallenge.substr(0, 32);
  bare.replace(12, 8, std::string(8, '\0'));
  bare[22] = '\x0a';  // no target information
  EXPECT_TRUE(NtlmAuthenticate(Client("User"), NtlmNegotiate(), bare));
  EXPECT_TRUE(NtlmAuthenticate(Client("User"), NtlmNegotiate(), kChallenge + "and more"));
}

}  // namespace
}  // namespace quillcast::smtp
