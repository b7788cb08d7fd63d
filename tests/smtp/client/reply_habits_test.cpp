// Servers as they are: what each says to senders, recipients and messages is never taken for an answer too many or too
// few, over however many connections.
#include "smtp/client/reply_habits.h"

#include <gtest/gtest.h>

#include <functional>

namespace quillcast::smtp {
namespace {

using Slip = ReplyHabits::Slip;

// "2.1.5 ok", with a code, or none.
ServerReply Reply(const std::string& text) {
  const bool has_code = text.size() > 5 && text[1] == '.' && text[3] == '.' && text[5] == ' ';
  return {250, has_code ? text.substr(0, 5) : "", has_code ? text.substr(6) : text};
}

struct Server {
  const char* name;
  std::string sender;  // "@" is the recipient, "#" the number of the message, in all three
  std::string recipient, message;
  // Other words for some messages, by their number.
  std::function<bool(int number)> differs = nullptr;
  std::string other_recipient = {};
  std::string other_message = {};
};

bool IsFirst(int number) { return number == 1; }
bool IsEven(int number) { return number % 2 == 0; }
bool IsSeventh(int number) { return number % 7 == 0; }

const std::vector<Server>& Servers() {
  static const std::vector<Server> servers{
      {"codes and ids", "2.1.0 Ok", "2.1.5 Ok", "2.0.0 Ok: queued as 4T#"},
      {"behind a filter", "2.1.0 Ok", "2.1.5 Ok", "2.0.0 from MTA(smtp:[127.0.0.1]:10025): 250 2.0.0 Ok: queued as #"},
      {"words and ids", "OK", "Accepted", "OK id=1rAbCd-#"},
      {"words, and some without an id", "OK", "Accepted", "OK", IsEven, "Accepted", "OK id=1rAbCd-#"},
      {"codes and addresses", "2.1.0 <ada@s>... Sender ok", "2.1.5 <@>... Recipient ok", "2.0.0 aB# Message accepted"},
      {"addresses", "<ada@s>... Sender ok", "<@>... Recipient ok", "aB# Message accepted"},
      {"says where it queues", "2.1.0 ok", "2.1.5 <@>... Recipient ok", "2.0.0 aB# Message accepted", IsEven,
       "2.1.5 <@>... Recipient ok (will queue)", "2.0.0 aB# Message accepted"},
      {"long ids", "2.1.0 Sender OK", "2.1.5 Recipient OK", "2.6.0 <m#@x> [InternalId=#] Queued mail for delivery"},
      {"ids in all", "2.1.0 OK a#-2 - g", "2.1.5 OK a#-2 - g", "2.0.0 OK  17# a#-2 - g"},
      {"short words", "ok", "ok", "ok 17# qp #"},
      {"the same", "ok", "ok", "ok"},
      {"one code", "2.0.0 Ok", "2.0.0 Ok", "2.0.0 Ok"},
      {"the recipient's code", "2.1.5 Ok", "2.1.5 Ok", "2.1.5 Ok"},
      {"the recipient's words", "2.1.0 ok", "2.1.5 ok", "2.1.5 ok"},
      {"nothing", "", "", ""},
      {"the address in all", "s ok", "@ ok", "@ ok"},
      {"the address saved", "2.1.0 ok", "2.1.5 <@> ok", "2.1.5 <@> saved"},
      {"one code and ids", "2.0.0 tx# ok", "2.0.0 tx# ok", "2.0.0 tx# ok"},
      {"will forward", "ok", "2.1.5 User not local; will forward to <@>", "2.0.0 ok"},
      {"several lines", "2.1.0 hello\nok", "2.1.5 one\ntwo", "2.0.0 taken\nid #"},
      {"greets the first", "ok", "ok", "ok", IsFirst, "Welcome, first recipient", "first one taken"},
      {"queues the first", "ok", "ok", "ok", IsFirst, "ok", "queued"},
      {"codes now and then", "ok", "2.1.5 ok", "2.0.0 ok", IsEven, "ok", "ok"},
      {"delivers some at once", "2.1.0 ok", "2.1.5 ok", "2.0.0 queued", IsEven, "2.1.5 ok", "2.1.5 delivered"},
  };
  return servers;
}

// What some say to a message now and then, or always, is what is said elsewhere to a recipient or a sender.
const std::vector<Server>& ServersToBeLearnt() {
  static const std::vector<Server> servers{
      {"delivers every seventh at once", "2.1.0 Ok", "2.1.5 Ok", "2.0.0 Saved #", IsSeventh, "2.1.5 Ok", "2.1.5 Ok"},
      {"every seventh without an id", "ok", "ok", "ok # qp", IsSeventh, "ok", "ok"},
      {"a code before its own", "2.1.0 sender ok", "2.1.0 recipient ok", "2.1.5 message ok #"},
      {"the sender's code", "2.1.0 ok", "2.1.5 ok", "2.1.0 message accepted #"},
      {"the words of RSET now and then", "2.1.0 Ok", "2.1.5 Ok", "2.0.0 Ok #", IsSeventh, "2.1.5 Ok", "2.0.0 reset"},
  };
  return servers;
}

struct Way {
  const char* name;
  ReplyHabits::Neighbours neighbours;
};
constexpr Way kHeardOut{"in lock-step, after a silence", {.recipient = false, .next = {}, .is_sure = true}};
const std::vector<Way> kWays{kHeardOut,
                             {"in lock-step", {}},
                             {"behind DATA", {.recipient = false, .next = Awaited::kMail}},
                             {"in chunks", {.recipient = true, .next = Awaited::kReset}}};

// So many messages of an honest server are held until it is known to be in step.
constexpr int kMostHeld = 2;

ServerReply Said(std::string text, int number, const std::string& address) {
  for (auto at = text.find('@'); at != std::string::npos; at = text.find('@', at + address.size())) {
    if (at == 0 || text[at - 1] == '<' || text[at - 1] == ' ') text.replace(at, 1, address);
  }
  for (auto at = text.find('#'); at != std::string::npos; at = text.find('#'))
    text.replace(at, 1, std::to_string(number));
  return Reply(text);
}

// What is made of the message of that number, which is the connection's first or not.
Slip Take(const Server& server, int number, bool first, const Way& way, ReplyHabits& habits) {
  const std::string address = "r" + std::to_string(number) + "@d.example";
  const bool differs = server.differs && server.differs(number);
  if (!first) habits.OnReset(Reply("2.0.0 reset"));
  habits.OnSender(Said(server.sender, number, address));
  habits.OnRecipient(Said(differs ? server.other_recipient : server.recipient, number, address));
  return habits.OnMessage(Said(differs ? server.other_message : server.message, number, address), way.neighbours);
}

TEST(ReplyHabits, AServerThatAnswersEachOnceIsInStep) {
  for (const Way& way : kWays) {
    for (const Server& server : Servers()) {
      SendWindow window;
      int held = 0;
      for (int number = 1, connection = 0; connection < 3; ++connection) {
        ReplyHabits habits(window);
        for (int n = 0; n < 20; ++n, ++number) {
          SCOPED_TRACE(testing::Message() << way.name << ", " << server.name << ", message " << number);
          const Slip slip = Take(server, number, n == 0, way, habits);
          ASSERT_TRUE(slip == Slip::kNone || slip == Slip::kPerhaps);
          if (slip == Slip::kPerhaps) ++held;
          if (slip == Slip::kPerhaps) habits.OnInStep();
        }
      }
      EXPECT_LE(held, kMostHeld) << way.name << ", " << server.name;
    }
  }
}

// One slip ends a connection, and the next asks one thing at a time until it has seen what this server does.
TEST(ReplyHabits, AServerIsTakenForOutOfStepOnce) {
  for (const Way& way : kWays) {
    for (const Server& server : ServersToBeLearnt()) {
      SendWindow window;
      int slips = 0;
      int held = 0;
      for (int number = 1, connection = 0; connection < 5; ++connection) {
        ReplyHabits habits(window);
        for (int n = 0; n < 20; ++n, ++number) {
          const Slip slip = Take(server, number, n == 0, window.wary() ? kHeardOut : way, habits);
          if (slip == Slip::kNone) continue;
          ++(slip == Slip::kPerhaps ? held : slips);
          if (slip != Slip::kPerhaps) break;
          habits.OnInStep();
        }
      }
      EXPECT_LE(slips, 1) << way.name << ", " << server.name;
      EXPECT_LE(held, kMostHeld) << way.name << ", " << server.name;
      EXPECT_FALSE(window.words().any()) << way.name << ", " << server.name;
    }
  }
}

}  // namespace
}  // namespace quillcast::smtp
