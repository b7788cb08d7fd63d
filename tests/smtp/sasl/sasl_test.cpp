// The mechanisms of signing in against the published exchanges, and against servers that break them.
#include <gtest/gtest.h>

#include "platform/base64.h"
#include "smtp/sasl/sasl_mechanism.h"
#include "smtp/sasl/sasl_prep.h"

namespace quillcast::smtp {
namespace {

// What a mechanism says to each challenge in turn; "!" and the reason where it breaks off. The last piece tells how the
// end of the exchange was taken.
std::string Talk(SaslMechanism& mechanism, std::initializer_list<std::string_view> challenges) {
  const auto first = mechanism.Start();
  std::string said = first ? std::string(first->view()) : "(waits)";
  for (const auto challenge : challenges) {
    const auto response = mechanism.Step(challenge);
    if (!response) return said + "\n!" + response.error().what.InEnglish();
    said += "\n" + std::string(response->view());
  }
  const auto end = mechanism.Finish();
  return said + (end ? "\nsigned in" : "\n!" + end.error().what.InEnglish());
}

// The examples of RFC 5802 5 and RFC 7677 3; the nonces are theirs.
const std::string kNonce1 = *platform::DecodeBase64("fyko+d2lbbFgONRv9qkxdawL");
const std::string kNonce256 = *platform::DecodeBase64("rOprNGfwEbeRWgbNEkqO");

TEST(Sasl, SaysWhatThePublishedExchangesSay) {
  EXPECT_EQ(Talk(*MakeCramMd5({"tim", "tanstaaftanstaaf"}), {"<1896.697170952@postoffice.reston.mci.net>"}),
            "(waits)\ntim b913a602c7eda7a495b4e6e7334d3890\nsigned in");
  EXPECT_EQ(Talk(*MakeScramSha1({"user", "pencil", kNonce1}),
                 {"r=fyko+d2lbbFgONRv9qkxdawL3rfcNHYJY1ZVvWVs7j,s=QSXCR+Q6sek8bf92,i=4096",
                  "v=rmF9pqV8S7suAoZWja4dJRkFsKQ="}),
            "n,,n=user,r=fyko+d2lbbFgONRv9qkxdawL\n"
            "c=biws,r=fyko+d2lbbFgONRv9qkxdawL3rfcNHYJY1ZVvWVs7j,p=v0X8v3Bz2T0CJGbJQyF0X+HI4Ts=\n\nsigned in");
  EXPECT_EQ(Talk(*MakeScramSha256({"user", "pencil", kNonce256}),
                 {"r=rOprNGfwEbeRWgbNEkqO%hvYDpWUa2RaTCAfuxFIlj)hNlF$k0,s=W22ZaJ0SNY7soEsUEjb6gQ==,i=4096",
                  "v=6rriTRBi23WpRR/wtup+mMhUZUn/dB5nLTJRsjl95G4="}),
            "n,,n=user,r=rOprNGfwEbeRWgbNEkqO\n"
            "c=biws,r=rOprNGfwEbeRWgbNEkqO%hvYDpWUa2RaTCAfuxFIlj)hNlF$k0,"
            "p=dHzbZapWIk4jUhN+Ute9ytag9zjfMHgsqmmiz7AndVQ=\n\nsigned in");
}

TEST(Sasl, BreaksOffWhereTheServerDoes) {
  const std::string first = "r=fyko+d2lbbFgONRv9qkxdawL3rfc,s=QSXCR+Q6sek8bf92,";
  struct Case {
    const char* name;
    std::initializer_list<std::string_view> challenges;
    const char* why;
  };
  const std::string good = first + "i=1";
  const std::string none = first + "i=0";
  const std::string less_than_none = first + "i=-4096";
  const std::string forever = first + "i=10000001";
  const std::string no_number = first + "i=99999999999999999999";
  for (const Case& c : std::initializer_list<Case>{
           {"nothing", {""}, "makes no sense"},
           {"another nonce", {"r=gyko+d2lbbFgONRv9qkxdawL3rfc,s=QSXCR+Q6sek8bf92,i=1"}, "our nonce"},
           {"our nonce alone", {"r=fyko+d2lbbFgONRv9qkxdawL,s=QSXCR+Q6sek8bf92,i=1"}, "our nonce"},
           {"no salt", {"r=fyko+d2lbbFgONRv9qkxdawL3,s=,i=1"}, "makes no sense"},
           {"salt that is none", {"r=fyko+d2lbbFgONRv9qkxdawL3,s=*,i=1"}, "makes no sense"},
           {"another order", {"s=QSXCR+Q6sek8bf92,r=fyko+d2lbbFgONRv9qkxdawL3,i=1"}, "makes no sense"},
           {"an extension that must be known", {"m=x,r=fyko+d2lbbFgONRv9qkxdawL3,s=QSXC,i=1"}, "makes no sense"},
           {"no rounds", {none}, "rounds"},
           {"negative rounds", {less_than_none}, "makes no sense"},
           {"endless rounds", {forever}, "rounds"},
           {"rounds beyond numbers", {no_number}, "makes no sense"},
           {"a proof of another", {good, "v=rmF9pqV8S7suAoZWja4dJRkFsKQ="}, "could not prove"},
           {"a short proof", {good, "v=rmF9"}, "could not prove"},
           {"no proof", {good}, "did not prove"},
           {"success after an error", {good, "e=invalid-proof"}, "did not prove"},
           {"more than it may", {good, "e=other-error", "v=rmF9"}, "more than it may"},
       }) {
    SCOPED_TRACE(c.name);
    const std::string said = Talk(*MakeScramSha1({"user", "pencil", kNonce1}), c.challenges);
    EXPECT_NE(said.find("!"), std::string::npos) << said;
    EXPECT_NE(said.find(c.why), std::string::npos) << said;
  }
  EXPECT_EQ(Talk(*MakeCramMd5({"tim", "x"}), {""}), "(waits)\n!The server's challenge is empty.");
  EXPECT_NE(Talk(*MakeCramMd5({"tim", "x"}), {"<a>", "<b>"}).find("!The server asked for more"), std::string::npos);
}

TEST(Sasl, PreparesNames) {
  struct Case {
    const char* text;
    const char* prepared;  // nullptr: no server takes it
  };
  // The examples of RFC 4013 3, and what a person may type.
  for (const Case& c :
       {Case{"I\u00ADX", "IX"}, Case{"user", "user"}, Case{"USER", "USER"}, Case{"\u00AA", "a"}, Case{"\u2168", "IX"},
        Case{"\u0007", nullptr}, Case{"\u0627\u0031", nullptr}, Case{"p\u00E4ss w\u00F6rd", "p\u00E4ss w\u00F6rd"},
        Case{"a\u0308", "\u00E4"}, Case{"a\u00A0b", "a b"},
        Case{"\uFDFA",
             "\u0635\u0644\u0649 \u0627\u0644\u0644\u0647 "
             "\u0639\u0644\u064A\u0647 \u0648\u0633\u0644\u0645"},
        Case{"\xFF", nullptr}, Case{"", ""}}) {
    const auto prepared = SaslPrep(c.text);
    EXPECT_EQ(prepared ? prepared->view() : "none", c.prepared != nullptr ? c.prepared : "none") << c.text;
  }
  EXPECT_TRUE(Talk(*MakeScramSha1({"a=b,c", "", kNonce1}), {}).starts_with("n,,n=a=3Db=2Cc,r="));
  EXPECT_TRUE(Talk(*MakeScramSha1({"a\x07", "x", kNonce1}), {""}).starts_with("(waits)\n!The user"));
}

TEST(Sasl, ChoosesTheBestThatServesTheMode) {
  struct Case {
    AuthMode mode;
    const char* offers;
    const char* chosen;  // nullptr: none
  };
  using enum AuthMode;
  for (const Case& c : std::initializer_list<Case>{{kLogin, "PLAIN LOGIN CRAM-MD5", "LOGIN"},
                                                   {kLogin, "SCRAM-SHA-1 PLAIN", "PLAIN"},
                                                   {kLogin, "SCRAM-SHA-1 SCRAM-SHA-256", "SCRAM-SHA-256"},
                                                   {kLogin, "CRAM-MD5 NTLM", nullptr},
                                                   {kCramMd5, "LOGIN CRAM-MD5", "CRAM-MD5"},
                                                   {kCramMd5, "CRAM-MD5 SCRAM-SHA-1", "SCRAM-SHA-1"},
                                                   {kCramMd5, "CRAM-MD5 SCRAM-SHA-1 SCRAM-SHA-256", "SCRAM-SHA-256"},
                                                   {kCramMd5, "PLAIN LOGIN", nullptr},  // the password must not travel
                                                   {kNtlm, "LOGIN NTLM SCRAM-SHA-256", "NTLM"},
                                                   {kNtlm, "LOGIN SCRAM-SHA-256", nullptr}}) {
    const auto capabilities = ParseCapabilities(std::string("mx\nAUTH ") + c.offers);
    const auto chosen = ChooseMechanism(c.mode, capabilities, {"u", "p", kNonce1});
    EXPECT_EQ(chosen ? (*chosen)->Name().text() : "none", c.chosen != nullptr ? c.chosen : "none") << c.offers;
  }
}

}  // namespace
}  // namespace quillcast::smtp
