// Which of several addresses is taken, and what counts as a connection.
#include "net/connect.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <string>
#include <vector>

namespace quillcast::net {
namespace {

using platform::UniqueFd;
using std::chrono::milliseconds;

// A listener that takes nothing for now, as its queue is full: who connects is let in when Admit has been called and
// the system tries again, a second later.
class FullListener {
 public:
  explicit FullListener(const char* address, std::uint16_t port = 0) {
    SocketAddress own = ToSystem({*ParseIpAddress(address), port});
    EXPECT_EQ(::bind(listener_.get(), own.get(), own.length), 0);
    EXPECT_EQ(::listen(listener_.get(), 0), 0);
    const SocketAddress self = ToSystem(LocalEndpoint(listener_.get()));
    EXPECT_EQ(::connect(first_.get(), self.get(), self.length), 0);
  }
  std::uint16_t port() const { return LocalEndpoint(listener_.get()).port; }
  // The one that waits.
  UniqueFd Admit() {
    const UniqueFd first = Accept();
    return Accept();
  }

 private:
  UniqueFd Accept() { return UniqueFd(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC)); }

  UniqueFd listener_{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  UniqueFd first_{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
};

// Closes as a server does that throws a connection away.
void Reset(UniqueFd socket) {
  const linger at_once{.l_onoff = 1, .l_linger = 0};
  EXPECT_EQ(::setsockopt(socket.get(), SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once), 0);
}

const platform::Instant kStart{std::chrono::hours(1)};

TEST(Connecting, TakesAConnectionThatWasResetSinceForOne) {
  for (const std::string said : {"", "220 mx\r\n"}) {
    FullListener listener("127.0.0.1");
    Connecting connecting(std::vector{*ParseIpAddress("127.0.0.1")}, listener.port());
    ASSERT_FALSE(connecting.Step(kStart));
    UniqueFd server = listener.Admit();
    EXPECT_EQ(::send(server.get(), said.data(), said.size(), MSG_NOSIGNAL), static_cast<ssize_t>(said.size()));
    Reset(std::move(server));
    const auto done = connecting.Step(kStart);
    ASSERT_TRUE(done);
    ASSERT_TRUE(*done) << InOneLine(done->error());
    EXPECT_TRUE(connecting.tried().front().connected);
    std::string heard(100, '\0');
    const auto count = ::recv((*done)->get(), heard.data(), heard.size(), 0);
    EXPECT_EQ(heard.substr(0, static_cast<std::size_t>(std::max<ssize_t>(count, 0))), said);
  }
}

TEST(Connecting, TakesTheFirstOfThoseThatAreReadyAtOnce) {
  FullListener first("127.0.0.1");
  FullListener second("127.0.0.2", first.port());
  Connecting connecting(std::vector{*ParseIpAddress("127.0.0.1"), *ParseIpAddress("127.0.0.2")}, first.port());
  ASSERT_FALSE(connecting.Step(kStart));
  ASSERT_FALSE(connecting.Step(kStart + milliseconds(250)));
  ASSERT_EQ(connecting.tried().size(), 2U);
  const UniqueFd here = first.Admit();
  const UniqueFd there = second.Admit();
  const auto done = connecting.Step(kStart + milliseconds(2000));
  ASSERT_TRUE(done);
  ASSERT_TRUE(*done) << InOneLine(done->error());
  EXPECT_EQ(ToString(PeerEndpoint((*done)->get()).address), "127.0.0.1");
}

}  // namespace
}  // namespace quillcast::net
