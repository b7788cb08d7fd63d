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
  std::string recipient;
  std::string message;
  // Other words for some messages, by their number.
  std::function<bool(int number)> differs = nullptr;
  std::string other_recipient = {};
  std::string other_message = {};
};

const std::vector<Server>& Servers() {
  static const auto is_first = [](int number) { return number == 1; };
  static const auto is_even = [](int number) { return number % 2 == 0; };
  static const std::vector<Server> servers{
      {"codes and ids", "2.1.0 Ok", "2.1.5 Ok", "2.0.0 Ok: queued as 4T#"},
      {"behind a filter", "2.1.0 Ok", "2.1.5 Ok", "2.0.0 from MTA(smtp:[127.0.0.1]:10025): 250 2.0.0 Ok: queued as #"},
      {"words and ids", "OK", "Accepted", "OK id=1rAbCd-#"},
      {"words, and some without an id", "OK", "Accepted", "OK", is_even, "Accepted", "OK id=1rAbCd-#"},
      {"codes and addresses", "2.1.0 <ada@s>... Sender ok", "2.1.5 <@>... Recipient ok", "2.0.0 aB# Message accepted"},
      {"addresses", "<ada@s>... Sender ok", "<@>... Recipient ok", "aB# Message accepted"},
      {"says where it queues", "2.1.0 ok", "2.1.5 <@>... Recipient ok", "2.0.0 aB# Message accepted", is_even,
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
      {"greets the first", "ok", "ok", "ok", is_first, "Welcome, first recipient", "first one taken"},
      {"queues the first", "ok", "ok", "ok", is_first, "ok", "queued"},
      {"codes now and then", "ok", "2.1.5 ok", "2.0.0 ok", is_even, "ok", "ok"},
      {"delivers some at once", "2.1.0 ok", "2.1.5 ok", "2.0.0 queued", is_even, "2.1.5 ok", "2.1.5 delivered"},
  };
  return servers;
}

TEST(ReplyHabits, AServerThatAnswersEachOnceIsInStep) {
  struct Way {
    const char* name;
    ReplyHabits::Neighbours neighbours;
  };
  for (const Way& way : {Way{"in lock-step", {}}, Way{"behind DATA", {false, Awaited::kMail}},
                         Way{"in chunks", {true, Awaited::kReset}}}) {
    for (const Server& server : Servers()) {
      SendWindow window;
      for (int number = 1, connection = 0; connection < 3; ++connection) {
        ReplyHabits habits(window);
        for (int n = 0; n < 20; ++n, ++number) {
          SCOPED_TRACE(testing::Message() << way.name << ", " << server.name << ", message " << number);
          const std::string address = "r" + std::to_string(number) + "@d.example";
          const auto said = [&](std::string text) {
            for (auto at = text.find('@'); at != std::string::npos; at = text.find('@', at + address.size())) {
              if (at == 0 || text[at - 1] == '<' || text[at - 1] == ' ') text.replace(at, 1, address);
            }
            for (auto at = text.find('#'); at != std::string::npos; at = text.find('#')) {
              text.replace(at, 1, std::to_string(number));
            }
            return Reply(text);
          };
          const bool differs = server.differs && server.differs(number);
          if (n > 0) habits.OnReset(Reply("2.0.0 reset"));
          habits.OnSender(said(server.sender));
          habits.OnRecipient(said(differs ? server.other_recipient : server.recipient), address);
          const ServerReply taken = said(differs ? server.other_message : server.message);
          ASSERT_EQ(habits.OnMessage(taken, way.neighbours), Slip::kNone);
        }
      }
    }
  }
}

}  // namespace
}  // namespace quillcast::smtp
