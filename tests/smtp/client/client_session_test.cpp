// Dialogues of one message and of many: each class of reply at each step, and what goes on the wire.
#include <gtest/gtest.h>

#include "smtp/client/client_play.h"

namespace quillcast::smtp {
namespace {

const char* const kHello = R"(
  S: 220 mx.example ESMTP
  C: EHLO [127.0.0.1]
  S: 250-mx.example
  S: 250 SIZE 1000
)";

struct Fixture {
  ClientOptions options;
  KnownWindow window;
  Told told;
  Envelope envelope{.sender = "ada@example.org"_address, .recipient = "bob@example.net"_address};
  TextSource message{"Subject: x\r\n\r\nhello\r\n"};
  std::optional<ClientSession> session;

  void Start(const char* hello = kHello) {
    session.emplace(options, SessionSetup{"[127.0.0.1]", true, false}, window);
    Play(*session, told, hello);
  }
  void Send(const std::string& dialogue) {
    session->Submit(envelope, message);
    Play(*session, told, dialogue);
  }
  const Outcome& Last() const { return told.outcomes.back(); }
};

TEST(ClientSession, SendsOneMessageAfterAnother) {
  Fixture f;
  f.Start();
  for (int n = 0; n < 3; ++n) {
    f.message.Rewind();
    f.Send(R"(
      C: MAIL FROM:<ada@example.org>
      S: 250 ok
      C: RCPT TO:<bob@example.net>
      S: 250 ok
      C: DATA
      S: 354 go on
      C: Subject: x
      C: 
      C: hello
      C: .
      S: 250 2.0.0 queued as 4711
    )");
    ASSERT_EQ(f.told.outcomes.size(), n + 1U);
    EXPECT_EQ(f.Last().state, State::kSent);
    EXPECT_EQ(f.Last().reply.enhanced, "2.0.0");
    EXPECT_EQ(f.Last().reply.text, "queued as 4711");
    EXPECT_TRUE(f.session->Idle());
  }
  f.session->Quit();
  Play(*f.session, f.told, "C: QUIT\nS: 221 bye");
  EXPECT_EQ(f.told.closed->code, ResultCode::kSuccess);
}

// Where a dialogue stands when the reply in question comes.
const char* const kAtMail = "C: MAIL FROM:<ada@example.org>\n";
const char* const kAtRcpt = "C: MAIL FROM:<ada@example.org>\nS: 250 ok\nC: RCPT TO:<bob@example.net>\n";
const char* const kAtData =
    "C: MAIL FROM:<ada@example.org>\nS: 250 ok\nC: RCPT TO:<bob@example.net>\nS: 250 ok\nC: DATA\n";
const char* const kAtEnd =
    "C: MAIL FROM:<ada@example.org>\nS: 250 ok\nC: RCPT TO:<bob@example.net>\nS: 250 ok\nC: DATA\nS: 354 go on\n"
    "C: Subject: x\nC: \nC: hello\nC: .\n";

TEST(ClientSession, GivesEachReplyToAMessageItsMeaning) {
  struct Case {
    const char *before, *reply;
    State state;
    ResultCode code;
    bool reset;   // RSET goes before the next message
    bool closed;  // the connection is over
  };
  using enum ResultCode;
  for (const Case& c :
       std::initializer_list<Case>{{kAtMail, "450 later", State::kDeferred, kSenderRefused, false, false},
                                   {kAtMail, "550 5.7.1 no", State::kRefused, kSenderRefused, false, false},
                                   {kAtMail, "354 odd", State::kFailed, kBadResponse, false, true},
                                   {kAtMail, "what?", State::kFailed, kBadResponse, false, true},
                                   // The connection is over, not the message: the client may take it to another one.
                                   {kAtMail, "421 closing", State::kFailed, kConnectionLost, false, true},
                                   {kAtRcpt, "451 4.2.1 greylisted", State::kDeferred, kRecipientRefused, true, false},
                                   {kAtRcpt, "550 5.1.1 no such user", State::kRefused, kRecipientRefused, true, false},
                                   {kAtRcpt, "334 odd", State::kFailed, kBadResponse, false, true},
                                   {kAtRcpt, "2x0", State::kFailed, kBadResponse, false, true},
                                   {kAtRcpt, "421 closing", State::kFailed, kConnectionLost, false, true},
                                   {kAtData, "452 full", State::kDeferred, kMessageRefused, true, false},
                                   {kAtData, "554 no valid recipients", State::kRefused, kMessageRefused, true, false},
                                   {kAtData, "250 odd", State::kFailed, kBadResponse, false, true},
                                   {kAtData, "421 closing", State::kFailed, kConnectionLost, false, true},
                                   {kAtEnd, "452 full", State::kDeferred, kMessageRefused, false, false},
                                   {kAtEnd, "554 5.6.0 spam", State::kRefused, kMessageRefused, false, false},
                                   {kAtEnd, "421 closing", State::kDeferred, kMessageRefused, false, true},
                                   // The message is out, and what came is no answer: nobody knows.
                                   {kAtEnd, "354 odd", State::kUnknown, kBadResponse, false, true},
                                   {kAtEnd, "garbage", State::kUnknown, kBadResponse, false, true}}) {
    SCOPED_TRACE(std::string(c.before) + c.reply);
    Fixture f;
    f.Start();
    f.Send(std::string(c.before) + "S: " + c.reply);
    ASSERT_EQ(f.told.outcomes.size(), 1U);
    EXPECT_EQ(f.Last().state, c.state);
    EXPECT_EQ(f.Last().code, c.code);
    EXPECT_EQ(f.told.closed.has_value(), c.closed);
    EXPECT_EQ(f.session->Idle(), !c.closed);
    if (!c.closed) f.Send(c.reset ? "C: RSET\nS: 250 ok\nC: MAIL FROM:<ada@example.org>" : kAtMail);
  }
}

TEST(ClientSession, IsUnknownFromTheLastOctetOn) {
  for (const bool all : {false, true}) {
    Fixture f;
    f.Start();
    f.Send(kAtData);
    f.session->Receive("354 go on\r\n");
    const auto bytes = f.session->BytesToSend();
    f.session->Sent(bytes.size() - (all ? 0 : 1));
    f.session->GiveUp({State::kFailed, ResultCode::kReplyTimeout, {}, {}});
    Listen(*f.session, f.told);
    EXPECT_EQ(f.Last().state, all ? State::kUnknown : State::kFailed);
  }
}

TEST(ClientSession, ARepliedMessageThatIsNotYetCompleteEndsTheConnection) {
  for (const auto& [reply, state, code] : {std::tuple{"552 too big\r\n", State::kRefused, ResultCode::kMessageRefused},
                                           std::tuple{"250 taken\r\n", State::kFailed, ResultCode::kBadResponse}}) {
    Fixture f;
    f.Start();
    f.Send(kAtData);
    f.session->Receive("354 go on\r\n");
    f.session->Sent(f.session->BytesToSend().size() - 1);
    f.session->Receive(reply);
    Listen(*f.session, f.told);
    EXPECT_EQ(f.Last().state, state);
    EXPECT_EQ(f.Last().code, code);
    EXPECT_TRUE(f.told.closed);
  }
}

TEST(ClientSession, AnswersToNothingEndTheConnection) {
  Fixture f;
  f.Start();
  Play(*f.session, f.told, "S: 250 surprise");
  EXPECT_EQ(f.told.closed->code, ResultCode::kBadResponse);
}

TEST(ClientSession, UsesExtensionsWhereTheGreetingOrTheAccountAllowsThem) {
  struct Case {
    const char* greeting;
    bool extended;
    const char *mail, *rcpt;
  };
  const char* const full_mail = "MAIL FROM:<ada@example.org> SIZE=9 BODY=8BITMIME RET=HDRS ENVID=a+2B1+20";
  const char* const full_rcpt = "RCPT TO:<bob@example.net> NOTIFY=SUCCESS,FAILURE,DELAY ORCPT=rfc822;bob@example.net";
  for (const Case& c : std::initializer_list<Case>{{"220 mx.example esmtp ready", false, full_mail, full_rcpt},
                                                   {"220 mx.example", true, full_mail, full_rcpt}}) {
    Fixture f;
    f.options.extended = c.extended;
    f.Start((std::string("S: ") + c.greeting +
             "\nC: EHLO [127.0.0.1]\nS: 250-mx\nS: 250-SIZE 1000\nS: 250-8BITMIME\nS: 250 DSN")
                .c_str());
    f.envelope.size = 9;
    f.envelope.eight_bit = true;
    f.envelope.notify = DsnNotify::kAll;
    f.envelope.dsn_return = DsnReturn::kHeaders;
    f.envelope.envelope_id = "a+1 ";
    f.Send(std::string("C: ") + c.mail + "\nS: 250 ok\nC: " + c.rcpt);
  }
  Fixture plain;
  plain.Start("S: 220 mx.example\nC: EHLO [127.0.0.1]\nS: 250-mx\nS: 250-SIZE 5\nS: 250 DSN");
  plain.envelope.size = 9;
  plain.envelope.notify = DsnNotify::kNever;
  plain.Send("C: MAIL FROM:<ada@example.org>\nS: 250 ok\nC: RCPT TO:<bob@example.net>");
}

TEST(ClientSession, RefusesBeforeAnythingIsSent) {
  struct Case {
    const char* name;
    Envelope envelope;
    ResultCode code;
    State state;
  };
  using enum ResultCode;
  for (const Case& c : std::initializer_list<Case>{
           {"no recipient", {"a@b.c"_address, {}}, kRecipientRefused, State::kFailed},
           {"larger than SIZE", {"a@b.c"_address, "x@y.z"_address, 1001}, kMessageRefused, State::kRefused},
           {"eight bits", {"a@b.c"_address, "x@y.z"_address, 10, true}, kMessageRefused, State::kRefused}}) {
    SCOPED_TRACE(c.name);
    Fixture f;
    f.Start();
    f.envelope = c.envelope;
    f.Send("");
    ASSERT_EQ(f.told.outcomes.size(), 1U);
    EXPECT_EQ(f.Last().code, c.code);
    EXPECT_EQ(f.Last().state, c.state);
    EXPECT_NE(f.Last().reason, "");
    EXPECT_TRUE(f.session->Idle());
  }
}

TEST(ClientSession, ChunksGoOutWithTheirCommandAndUnstuffed) {
  Fixture f;
  f.Start("S: 220 ESMTP\nC: EHLO [127.0.0.1]\nS: 250-mx\nS: 250 CHUNKING");
  f.message = TextSource("a\r\n.b\r\n");
  f.envelope.size = 7;
  const std::string until_chunk =
      "C: MAIL FROM:<ada@example.org>\nS: 250 ok\nC: RCPT TO:<bob@example.net>\nS: 250 ok\nC: BDAT 7 LAST\nC: a\nC: "
      ".b\n";
  f.Send(until_chunk + "S: 250 ok");
  EXPECT_EQ(f.Last().state, State::kSent);
  f.message.Rewind();
  f.Send(until_chunk + "S: 554 no");
  EXPECT_EQ(f.Last().code, ResultCode::kMessageRefused);
  f.message.Rewind();
  f.Send("C: RSET\nS: 250 ok\n" + until_chunk);
  for (const std::uint64_t wrong : {6U, 8U}) {  // a chunk of another length than announced must never be completed
    f.Start("S: 220 ESMTP\nC: EHLO [127.0.0.1]\nS: 250-mx\nS: 250 CHUNKING");
    f.message.Rewind();
    f.envelope.size = wrong;
    f.Send("C: MAIL FROM:<ada@example.org>\nS: 250 ok\nC: RCPT TO:<bob@example.net>\nS: 250 ok");
    EXPECT_EQ(f.Last().state, State::kFailed);
    EXPECT_TRUE(f.session->closed());
  }
}

TEST(ClientSession, AFileThatFailsUnderWayNeverEndsTheMessage) {
  Fixture f;
  f.Start();
  f.message.fails_at = 5;
  f.message = TextSource(std::string(100, 'x') + "\r\n", 5);
  f.message.fails_at = 50;
  f.Send(std::string(kAtData) + "S: 354 go on");
  EXPECT_EQ(f.Last().code, ResultCode::kFileNotRead);
  EXPECT_EQ(f.Last().state, State::kFailed);
  EXPECT_TRUE(f.told.closed);
}

// The rule in its plainest form: a dot for each line that begins with one, then the end.
std::string StuffedByHand(const std::string& text) {
  std::string out;
  for (std::size_t n = 0; n < text.size(); ++n) {
    if (text[n] == '.' && (n == 0 || text[n - 1] == '\n')) out += '.';
    out += text[n];
  }
  if (!text.empty() && text.back() != '\n') out += text.back() == '\r' ? "\n" : "\r\n";
  return out + ".\r\n";
}

TEST(BodyWriter, NeverCompletesAMessageOfAnotherLength) {
  for (const std::size_t fails_at : {5, 6}) {
    TextSource source("hi1\r\nx", 5);
    source.fails_at = fails_at;
    BodyWriter writer(source, BodyWriter::Form::kCounted, 5);
    std::string out;
    EXPECT_FALSE(writer.Fill(out, 100));
    EXPECT_EQ(out, "hi1\r");
  }
  using enum BodyWriter::Form;
  for (const auto form : {kDots, kBare, kCounted}) {
    for (const std::uint64_t composed : {4U, 5U, 6U}) {
      TextSource source("hi1\r\n", 2);
      BodyWriter writer(source, form, composed);
      std::string out;
      EXPECT_EQ(static_cast<bool>(writer.Fill(out, 100)), composed == 5);
      const bool server_has_it = form == kCounted ? out.size() >= composed : out.ends_with("\r\n.\r\n");
      EXPECT_EQ(server_has_it, composed == 5) << out;
      EXPECT_EQ(writer.ended(), composed == 5);
    }
  }
}

TEST(BodyWriter, StuffsDotsWhereverThePiecesAreCut) {
  for (const std::string text :
       {".\r\n", "..\r\n.\r\n", "a\r\n.\r\nb\r\n..c\r\n", "a\n.b", "a.b\r", "", ".", "\r\n.\r\n"}) {
    const std::string wanted = StuffedByHand(text);
    for (std::size_t piece = 1; piece <= text.size() + 1; ++piece) {
      TextSource source(text, piece);
      BodyWriter writer(source, BodyWriter::Form::kDots, 0);
      std::string out;
      while (!writer.ended()) ASSERT_TRUE(writer.Fill(out, out.size() + 1));
      EXPECT_EQ(out, wanted) << "pieces of " << piece;
    }
  }
}

}  // namespace
}  // namespace quillcast::smtp
