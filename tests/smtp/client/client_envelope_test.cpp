// How an envelope and its message are made to fit what a server can do, and when they cannot.
#include <gtest/gtest.h>

#include "smtp/client/client_play.h"

namespace quillcast::smtp {
namespace {

// A message that has two forms.
class TwoForms final : public MessageSource {
 public:
  Result<std::string_view> Next() override { return std::string_view(std::exchange(left_, "")); }
  void Rewind() override { left_ = "\xC3\xBC\r\n"; }
  Result<std::uint64_t> UseSevenBit() override {
    left_ = "=C3=BC\r\n";
    return std::uint64_t{8};
  }

 private:
  const char* left_ = "\xC3\xBC\r\n";
};

void Send(const std::string& offers, const Envelope& envelope, MessageSource& message, Told& told,
          std::string_view dialogue) {
  ClientOptions options;
  KnownWindow window;
  ClientSession session(options, {"[127.0.0.1]", true, false}, window);
  Play(session, told,
       "S: 220 ESMTP\nC: EHLO [127.0.0.1]\nS: 250-mx\nS: 250-" + platform::ReplaceAll(offers, ",", "\nS: 250-") +
           "\nS: 250 HELP");
  session.Submit(envelope, message);
  Play(session, told, dialogue);
}

TEST(ClientEnvelope, TurnsTheMessageIntoSevenBitsWhereTheServerTakesNoMore) {
  struct Case {
    const char *offers, *mail, *rest;
  };
  const std::string until_data = "S: 250 ok\nC: RCPT TO:<bob@example.net>\nS: 250 ok\n";
  for (const Case& c : std::initializer_list<Case>{
           {"SIZE", " SIZE=8", "C: DATA\nS: 354 go\nC: =C3=BC\nC: .\nS: 250 ok"},
           {"CHUNKING", "", "C: BDAT 8 LAST\nC: =C3=BC\nS: 250 ok"},
           {"8BITMIME", " BODY=8BITMIME", "C: DATA\nS: 354 go\nC: \xC3\xBC\nC: .\nS: 250 ok"}}) {
    SCOPED_TRACE(c.offers);
    TwoForms message;
    Told told;
    const Envelope envelope{
        .sender = "ada@example.org"_address, .recipient = "bob@example.net"_address, .size = 4, .eight_bit = true};
    Send(c.offers, envelope, message, told,
         std::string("C: MAIL FROM:<ada@example.org>") + c.mail + "\n" + until_data + c.rest);
    ASSERT_EQ(told.outcomes.size(), 1U);
    EXPECT_EQ(told.outcomes[0].state, State::kSent);
  }
  // The limit is on the form that goes out.
  TwoForms message;
  Told told;
  Send("SIZE 7", {.sender = "a@b.c"_address, .recipient = "x@y.z"_address, .size = 4, .eight_bit = true}, message, told,
       "");
  ASSERT_EQ(told.outcomes.size(), 1U);
  EXPECT_EQ(told.outcomes[0].code, ResultCode::kMessageRefused);
}

TEST(ClientEnvelope, WritesAddressesAndNotificationsAsTheServerReadsThem) {
  struct Case {
    const char *name, *offers;
    Envelope envelope;
    const char* mail;
    const char* rcpt;  // behind its address and its "RCPT TO:"
  };
  const std::string long_id(120, '=');
  std::string cut_id;
  for (int n = 0; n < 100; ++n) cut_id += "+3D";
  for (const Case& c : std::initializer_list<Case>{
           {"domain", "HELP", Envelope{"ada@m\u00FCller.example"_address, "bob@b\u00FCcher.example"_address},
            "<ada@xn--mller-kva.example>", "<bob@xn--bcher-kva.example>"},
           {"recipient", "SMTPUTF8,8BITMIME",
            Envelope{"ada@m\u00FCller.example"_address, "j\u00FCrgen@b\u00FCcher.example"_address},
            "<ada@xn--mller-kva.example> BODY=8BITMIME SMTPUTF8", "<j\u00FCrgen@b\u00FCcher.example>"},
           {"sender", "SMTPUTF8,8BITMIME", Envelope{"\u00E5da@example.org"_address, "bob@example.net"_address},
            "<\u00E5da@example.org> BODY=8BITMIME SMTPUTF8", "<bob@example.net>"},
           {"bounces nowhere", "HELP", {{}, "bob@example.net"_address}, "<>", "<bob@example.net>"},
           {"original", "DSN", Envelope{"a@b.c"_address, "a+b=c@y.z"_address, 0, false, DsnNotify::kFailure}, "<a@b.c>",
            "<a+b=c@y.z> NOTIFY=FAILURE ORCPT=rfc822;a+2Bb+3Dc@y.z"},
           {"never", "DSN", Envelope{"a@b.c"_address, "x@y.z"_address, 0, false, DsnNotify::kNever}, "<a@b.c>",
            "<x@y.z> NOTIFY=NEVER ORCPT=rfc822;x@y.z"},
           {"original beyond ASCII", "DSN,SMTPUTF8",
            Envelope{"a@b.c"_address, "\"\u00FC+\\\\\"@y.z"_address, 0, false, DsnNotify::kDelay}, "<a@b.c> SMTPUTF8",
            "<\"\u00FC+\\\\\"@y.z> NOTIFY=DELAY ORCPT=utf-8;\"\\x{FC}\\x{2B}\\x{5C}\\x{5C}\"@y.z"},
           {"server's default", "DSN", Envelope{"a@b.c"_address, "x@y.z"_address, 0, false, DsnNotify::kServerDefault},
            "<a@b.c>", "<x@y.z>"},
           {"long id", "DSN", {"a@b.c"_address, "x@y.z"_address, 0, false, {}, {}, long_id}, nullptr, "<x@y.z>"}}) {
    SCOPED_TRACE(c.name);
    TextSource message("x\r\n");
    Told told;
    const std::string mail = c.mail != nullptr ? c.mail : "<a@b.c> ENVID=" + cut_id;
    Send(c.offers, c.envelope, message, told, "C: MAIL FROM:" + mail + "\nS: 250 ok\nC: RCPT TO:" + c.rcpt);
    EXPECT_TRUE(told.outcomes.empty());
  }
}

TEST(ClientEnvelope, RefusesAddressesThatTheServerCannotTake) {
  struct Case {
    const char *offers, *sender, *recipient;
    ResultCode code;
    const char* why;
  };
  using enum ResultCode;
  std::string long_in_ascii = std::string(64, 'x') + "@z";  // 196 octets as it is written, 256 as the network has it
  for (int label = 0; label < 10; ++label) long_in_ascii += ".m\u00FCnchenland";
  for (const Case& c :
       std::initializer_list<Case>{{"8BITMIME", "a@b.c", "j\u00FCrgen@y.z", kRecipientRefused, "SMTPUTF8"},
                                   {"8BITMIME", "\u00E5@b.c", "x@y.z", kSenderRefused, "SMTPUTF8"},
                                   {"SMTPUTF8", "a@b.c", "j\u00FC@\u00FC..z", kRecipientRefused, "domain"},
                                   {"SMTPUTF8", "a@\u05D0a.c", "x@y.z", kSenderRefused, "domain"},
                                   {"SMTPUTF8", "a@b.c", long_in_ascii.c_str(), kRecipientRefused, "254"}}) {
    SCOPED_TRACE(std::string(c.sender) + " " + c.recipient);
    TextSource message("x\r\n");
    Told told;
    Send(c.offers, {*Address::From(c.sender), *Address::From(c.recipient)}, message, told, "");
    ASSERT_EQ(told.outcomes.size(), 1U);
    EXPECT_EQ(told.outcomes[0].code, c.code);
    EXPECT_EQ(told.outcomes[0].state, State::kFailed);
    EXPECT_NE(told.outcomes[0].reason.find(c.why), std::string::npos) << told.outcomes[0].reason;
  }
}

}  // namespace
}  // namespace quillcast::smtp
