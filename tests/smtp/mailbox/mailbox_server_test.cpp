// The mailbox over real sockets: what it keeps, how many it serves, and how it ends.
#include "smtp/mailbox/mailbox_server.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "smtp/mailbox/mailbox_rig.h"
#include "support/room_on_disk.h"

namespace quillcast::smtp {
namespace {

using Names = std::vector<std::string>;

MailboxOptions StoringIn(const TestFolder& folder) {
  MailboxOptions options;
  options.store = folder.path() / "box";
  options.session.host_name = "box";
  return options;
}

std::vector<nlohmann::json> IndexOf(const std::filesystem::path& box) {
  std::vector<nlohmann::json> lines;
  std::istringstream in(ReadAll(box / "index.jsonl"));
  for (std::string line; std::getline(in, line);) lines.push_back(nlohmann::json::parse(line));
  return lines;
}

TEST(MailboxServer, KeepsMessagesByteForByte) {
  TestFolder folder;
  auto options = StoringIn(folder);
  const auto box = *options.store;
  std::string told;
  options.kept = [&](const MailboxMessage& m) { told = m.file.filename().string() + " " + std::to_string(m.size); };
  TestMailbox mailbox(std::move(options));
  TestClient client(mailbox.address());
  EXPECT_EQ(client.Reply(), "220 box ESMTP Quillcast mailbox");
  client.Say("EHLO \"\xFF\"");
  std::string large;  // some reads long, and longer than what is held in memory
  for (int i = 0; i < 3000; ++i) large += ".line " + std::to_string(i) + std::string(70, '\xE9') + "\r\n";
  std::string stuffed;
  for (std::size_t i = 0; i < large.size(); ++i) {
    if (large[i] == '.' && (i == 0 || large[i - 1] == '\n')) stuffed += '.';
    stuffed += large[i];
  }
  EXPECT_EQ(client.Deliver("<bob@example.net>", "Subject: x\r\n\r\n\0hi"), "250 2.0.0 Kept as 000001.eml");
  EXPECT_EQ(client.Deliver("<c@example.net> NOTIFY=NEVER ORCPT=rfc822;+FF", stuffed.substr(0, stuffed.size() - 2)),
            "250 2.0.0 Kept as 000002.eml");
  EXPECT_EQ(client.Say("QUIT"), "221 2.0.0 box closing");
  EXPECT_EQ(mailbox.Stop(), 2U);

  EXPECT_EQ(ReadAll(box / "000002.eml"), large);
  EXPECT_EQ(told, "000002.eml " + std::to_string(large.size()));
  EXPECT_EQ(NamesIn(box), (Names{"000001.eml", "000002.eml", "index.jsonl"}));
  struct stat status {};
  ASSERT_EQ(::stat((box / "000001.eml").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  const auto index = IndexOf(box);
  ASSERT_EQ(index.size(), 2U);
  EXPECT_EQ(index[1]["file"], "000002.eml");
  EXPECT_EQ(index[1]["from"], "ada@example.org");
  EXPECT_EQ(index[1]["to"], nlohmann::json::array({"c@example.net"}));
  EXPECT_EQ(index[1]["size"], large.size());
  EXPECT_EQ(index[1]["helo"], "\"\xEF\xBF\xBD\"");
  EXPECT_EQ(index[1]["tls"], false);
  EXPECT_EQ(index[1]["dsn"].dump(), R"({"recipients":[{"notify":"NEVER","orcpt":"rfc822;)"
                                    "\xEF\xBF\xBD"
                                    R"(","to":"c@example.net"}]})");
}

TEST(MailboxServer, NumbersGoOnOverRestartsAndNeverOverwrite) {
  TestFolder folder;
  const auto box = *StoringIn(folder).store;
  const auto deliver = [&] {
    TestMailbox mailbox(StoringIn(folder));
    TestClient client(mailbox.address());
    client.Reply();
    client.Say("EHLO c");
    return client.Deliver("<b@example.net>", "x");
  };
  EXPECT_EQ(deliver(), "250 2.0.0 Kept as 000001.eml");
  std::ofstream(box / "000041.eml") << "of somebody else";
  std::ofstream(box / ".incoming-1") << "left by a mailbox that was killed";
  std::ofstream(box / "index.jsonl", std::ios::app) << R"({"file":"000002)";
  EXPECT_EQ(deliver(), "250 2.0.0 Kept as 000042.eml");
  EXPECT_EQ(NamesIn(box), (Names{"000001.eml", "000041.eml", "000042.eml", "index.jsonl"}));
  EXPECT_EQ(ReadAll(box / "000041.eml"), "of somebody else");
  EXPECT_EQ(IndexOf(box).size(), 2U);
}

TEST(MailboxServer, TwoMailboxesDoNotShareAFolder) {
  TestFolder folder;
  TestMailbox mailbox(StoringIn(folder));
  platform::SystemClock clock;
  auto options = StoringIn(folder);
  options.listen = "127.0.0.1:0";
  const auto second = MailboxServer::Listen(options, clock);
  ASSERT_FALSE(second);
  EXPECT_EQ(second.error().failure, Failure::kUnavailable);
}

TEST(MailboxServer, ServesFiftyAtATime) {
  TestFolder folder;
  TestMailbox mailbox(StoringIn(folder));
  std::vector<std::unique_ptr<TestClient>> clients;
  for (int i = 0; i < 50; ++i) {
    clients.push_back(std::make_unique<TestClient>(mailbox.address()));
    clients.back()->Send("EHLO c\r\nMAIL FROM:<a@example.org>\r\nRCPT TO:<b@example.net>\r\nDATA\r\npart one,");
  }
  for (auto& client : clients) {
    for (int reply = 0; reply < 5; ++reply) client->Reply();
    client->Send(" part two");
  }
  for (auto& client : clients) EXPECT_TRUE(client->Say("\r\n.").starts_with("250 "));
  EXPECT_EQ(mailbox.Stop(), 50U);
  const auto box = folder.path() / "box";
  EXPECT_EQ(IndexOf(box).size(), 50U);
  EXPECT_EQ(ReadAll(box / "000050.eml"), "part one, part two\r\n");
}

// A client that pipelines and does not read must neither block the others nor lose a reply.
TEST(MailboxServer, WaitsForAClientThatDoesNotRead) {
  TestFolder folder;
  TestMailbox mailbox(StoringIn(folder));
  TestClient slow(mailbox.address());
  std::string batch;
  constexpr int kCommands = 200000;
  for (int i = 0; i < kCommands; ++i) batch += "NOOP\r\n";
  std::thread writer([&] { slow.Send("EHLO c\r\n" + batch); });
  TestClient quick(mailbox.address());
  quick.Reply();
  quick.Say("EHLO c");
  EXPECT_TRUE(quick.Deliver("<b@example.net>", "x").starts_with("250 "));
  slow.Reply();
  slow.Reply();
  int replies = 0;
  while (replies < kCommands && slow.Reply() == "250 2.0.0 Ok") ++replies;
  writer.join();
  EXPECT_EQ(replies, kCommands);
}

TEST(MailboxServer, ClosesWithWords) {
  TestFolder folder;
  auto options = StoringIn(folder);
  options.timeout = std::chrono::seconds(1);
  options.connection_limit = 1;
  TestMailbox mailbox(std::move(options));
  TestClient idle(mailbox.address());
  EXPECT_EQ(idle.Reply(), "220 box ESMTP Quillcast mailbox");
  TestClient second(mailbox.address());
  EXPECT_EQ(second.Reply(), "421 box has too many connections, try later");
  EXPECT_EQ(second.Reply(), "");
  EXPECT_EQ(idle.Reply(), "421 box waited too long for you, closing");
  EXPECT_EQ(idle.Reply(), "");
  TestClient third(mailbox.address());
  third.Reply();
  mailbox.Stop();
  EXPECT_EQ(third.Reply(), "421 box is ending, closing");
}

// Somebody who drips bytes holds a place no longer than somebody who says nothing, before the 421 and after it.
TEST(MailboxServer, IsNotHeldByBytesThatDrip) {
  TestFolder folder;
  auto options = StoringIn(folder);
  options.timeout = std::chrono::seconds(1);
  TestMailbox mailbox(std::move(options));
  TestClient client(mailbox.address());
  client.Reply();
  constexpr int kDrops = 60;  // one each tenth of a second
  const auto drips_until = [&](int drops, short event, short wanted) {
    pollfd seen{client.fd(), event, 0};
    for (int n = 0; n < drops && (seen.revents & wanted) == 0; ++n) {
      client.Send("x");
      ::poll(&seen, 1, 100);
    }
    return (seen.revents & wanted) != 0;
  };
  ASSERT_TRUE(drips_until(kDrops, POLLIN, POLLIN));
  EXPECT_EQ(client.Reply(), "421 box waited too long for you, closing");
  EXPECT_TRUE(drips_until(kDrops, 0, POLLERR | POLLHUP));
}

TEST(MailboxServer, EndsAfterTheCount) {
  MailboxOptions options;
  options.count = 2;
  options.session.host_name = "box";
  TestMailbox mailbox(std::move(options));
  TestClient client(mailbox.address());
  TestClient other(mailbox.address());
  client.Reply();
  other.Reply();
  client.Say("EHLO c");
  EXPECT_EQ(client.Deliver("<b@example.net>", "x"), "250 2.0.0 Taken and thrown away");
  client.Send(
      "MAIL FROM:<a@example.org>\r\nRCPT TO:<b@example.net>\r\nDATA\r\n.\r\n"
      "MAIL FROM:<a@example.org>\r\nRCPT TO:<b@example.net>\r\nDATA\r\n.\r\n");
  for (const char* reply : {"250", "250", "354", "250", "250", "250", "354", "452", "421"})
    EXPECT_EQ(client.Reply().substr(0, 3), reply);
  EXPECT_EQ(other.Reply(), "421 box is ending, closing");
  EXPECT_EQ(mailbox.Wait(), 2U);
}

TEST(MailboxServer, ListensOnIpv6) {
  MailboxOptions options;
  options.listen = "[::1]:0";
  TestMailbox mailbox(std::move(options));
  EXPECT_TRUE(mailbox.address().starts_with("[::1]:"));
  TestClient client(mailbox.address());
  EXPECT_TRUE(client.Reply().starts_with("220 "));
}

TEST(MailboxServer, SaysWhyItCannotListen) {
  platform::SystemClock clock;
  TestMailbox mailbox(MailboxOptions{});
  struct Case {
    std::string listen;
    Failure failure;
  };
  for (const Case& c : std::initializer_list<Case>{{"localhost:25", Failure::kUsage},
                                                   {"127.0.0.1", Failure::kUsage},
                                                   {"127.0.0.1:65536", Failure::kUsage},
                                                   {"::1:25", Failure::kUsage},
                                                   {"192.0.2.1:2525", Failure::kUnavailable},
                                                   {mailbox.address(), Failure::kUnavailable}}) {
    MailboxOptions options;
    options.listen = c.listen;
    const auto server = MailboxServer::Listen(options, clock);
    ASSERT_FALSE(server) << c.listen;
    EXPECT_EQ(server.error().failure, c.failure) << c.listen;
  }
}

TEST(MailboxServer, AsksForPasswordsInClearOnThisComputerAlone) {
  platform::SystemClock clock;
  struct Case {
    const char *listen, *user;
    bool in_clear, listens;
  };
  for (const Case& c : std::initializer_list<Case>{{"127.0.0.1:0", "ada", false, true},
                                                   {"0.0.0.0:0", "", false, true},
                                                   {"0.0.0.0:0", "ada", true, true},
                                                   {"0.0.0.0:0", "ada", false, false},
                                                   {"[::]:0", "ada", false, false}}) {
    MailboxOptions options;
    options.listen = c.listen;
    options.session.user = c.user;
    options.sign_in_in_clear = c.in_clear;
    const auto server = MailboxServer::Listen(options, clock);
    EXPECT_EQ(static_cast<bool>(server), c.listens) << c.listen << c.user;
    if (!server) {
      EXPECT_EQ(server.error().failure, Failure::kUsage);
    }
  }
}

// In a child whose files may not grow beyond `limit`, which fails as a full disk does. Tells the replies to three
// messages: a small one, one of 3,000 octets, and a small one again.
std::string RepliesWithFilesLimitedTo(rlim_t limit, const TestFolder& folder) {
  int pipe_fds[2];
  if (::pipe(pipe_fds) != 0) return "no pipe";
  const pid_t child = ::fork();
  if (child == 0) {
    const test::RoomOnDisk room(limit);
    std::string replies;
    {
      TestMailbox mailbox(StoringIn(folder));
      TestClient client(mailbox.address());
      client.Reply();
      client.Say("EHLO c");
      std::string lines;
      while (lines.size() < 3000) lines += std::string(98, 'x') + "\r\n";
      for (const std::string& content : {std::string("x"), lines, std::string("x")})
        replies += client.Deliver("<b@example.net>", content).substr(0, 3) + " ";
    }
    [[maybe_unused]] const auto written = ::write(pipe_fds[1], replies.data(), replies.size());
    ::_exit(0);
  }
  ::close(pipe_fds[1]);
  char replies[100];
  const ssize_t got = ::read(pipe_fds[0], replies, sizeof replies);
  ::close(pipe_fds[0]);
  ::waitpid(child, nullptr, 0);
  return std::string(replies, got > 0 ? static_cast<std::size_t>(got) : 0);
}

TEST(MailboxServer, AFullDiskIsToldAndLeavesNothingHalfWritten) {
  struct Case {
    rlim_t limit;
    const char* replies;
    Names names;
    std::size_t lines;
  };
  // An index line is some 200 octets long: with 100 not even the first fits, with 300 the second does not.
  for (const Case& c :
       std::initializer_list<Case>{{2000, "250 452 250 ", {"000001.eml", "000002.eml", "index.jsonl"}, 2},
                                   {300, "250 452 452 ", {"000001.eml", "index.jsonl"}, 1},
                                   {100, "452 452 452 ", {"index.jsonl"}, 0}}) {
    TestFolder folder;
    EXPECT_EQ(RepliesWithFilesLimitedTo(c.limit, folder), c.replies) << c.limit;
    EXPECT_EQ(NamesIn(folder.path() / "box"), c.names) << c.limit;
    EXPECT_EQ(IndexOf(folder.path() / "box").size(), c.lines) << c.limit;
  }
}

}  // namespace
}  // namespace quillcast::smtp
