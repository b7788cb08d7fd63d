// Addresses and ports as people write them, and deadlines on a clock of ours.
#include "net/address.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "net/deadline.h"
#include "net/resolver.h"

namespace quillcast::net {
namespace {

TEST(Address, IsParsedAndWritten) {
  struct Case {
    const char* text;
    const char* written;  // nullptr when it is no address
    bool loopback;
    const char* literal;
  };
  for (const Case& c : std::initializer_list<Case>{{"127.0.0.1", "127.0.0.1", true, "[127.0.0.1]"},
                                                   {"127.255.0.9", "127.255.0.9", true, "[127.255.0.9]"},
                                                   {"128.0.0.1", "128.0.0.1", false, "[128.0.0.1]"},
                                                   {"::1", "::1", true, "[IPv6:::1]"},
                                                   {"[2001:DB8::1]", "2001:db8::1", false, "[IPv6:2001:db8::1]"},
                                                   {"::ffff:127.0.0.1", "::ffff:127.0.0.1", true, "[127.0.0.1]"},
                                                   {"::ffff:192.0.2.1", "::ffff:192.0.2.1", false, "[192.0.2.1]"},
                                                   {"127.1", nullptr, false, ""},
                                                   {"0127.0.0.1", nullptr, false, ""},
                                                   {"1.2.3.4.5", nullptr, false, ""},
                                                   {"localhost", nullptr, false, ""},
                                                   {":::", nullptr, false, ""},
                                                   {"fe80::1%lo", "fe80::1", false, "[IPv6:fe80::1]"},
                                                   {"fe80::1%1", "fe80::1", false, "[IPv6:fe80::1]"},
                                                   {"fe80::1%no-such-interface", nullptr, false, ""},
                                                   {"fe80::1%4294967295", nullptr, false, ""},
                                                   {"fe80::1%", nullptr, false, ""},
                                                   {"", nullptr, false, ""}}) {
    const auto address = ParseIpAddress(c.text);
    ASSERT_EQ(address.has_value(), c.written != nullptr) << c.text;
    if (!address) continue;
    EXPECT_EQ(ToString(*address), c.written);
    EXPECT_EQ(IsLoopback(*address), c.loopback) << c.text;
    EXPECT_EQ(AddressLiteral(*address), c.literal);
    const Endpoint endpoint{*address, 587};
    EXPECT_EQ(FromSystem(ToSystem(endpoint).get()), endpoint);
  }
}

TEST(HostPort, IsParsed) {
  struct Case {
    const char* text;
    std::optional<HostPort> wanted;
  };
  for (const Case& c : std::initializer_list<Case>{
           Case{"mx.example", {{"mx.example", 25}}}, Case{" mx.example:587 ", {{"mx.example", 587}}},
           Case{"[::1]:2525", {{"::1", 2525}}}, Case{"::1", {{"::1", 25}}}, Case{"10.0.0.1:1", {{"10.0.0.1", 1}}},
           Case{"[fe80::1%lo]:53", {{"fe80::1%lo", 53}}}, Case{"fe80::1%lo", {{"fe80::1%lo", 25}}}, Case{"", {}},
           Case{":25", {}}, Case{"mx:", {}}, Case{"mx:0", {}}, Case{"mx:65536", {}}, Case{"mx: 25", {}},
           Case{"a:b:25", {}}, Case{"[mx]:25", {}}}) {
    EXPECT_EQ(ParseHostPort(c.text, 25), c.wanted) << c.text;
  }
}

TEST(Deadline, RoundsUpAndEnds) {
  using std::chrono::microseconds;
  using std::chrono::seconds;
  const platform::Instant start{seconds(1000)};
  const Deadline soon = Deadline::After(start, microseconds(1500));
  EXPECT_EQ(soon.PollTimeout(start), 2);
  EXPECT_EQ(soon.PollTimeout(start + microseconds(1499)), 1);
  EXPECT_EQ(soon.PollTimeout(start + microseconds(1500)), 0);
  EXPECT_FALSE(soon.Passed(start + microseconds(1499)));
  EXPECT_TRUE(soon.Passed(start + microseconds(1500)));
  EXPECT_EQ(Deadline::Never().PollTimeout(start), -1);
  EXPECT_EQ(Deadline::After(start, platform::Duration::max()).PollTimeout(start), -1);
  EXPECT_EQ(Earlier(Deadline::Never(), soon).PollTimeout(start), 2);
}

TEST(Resolver, AnswersWithoutAQueryWhereItCan) {
  const platform::SystemClock clock;
  const platform::CancelToken cancel;
  const Patience patience{clock, cancel, platform::Stop::kStop,
                          Deadline::After(clock.Monotonic(), std::chrono::seconds(1))};
  Resolver resolver;
  for (const char* host : {"localhost", "LOCALHOST.", "box.localhost", "127.0.0.1", "::1"}) {
    const auto found = resolver.Resolve(host, patience);
    ASSERT_TRUE(found) << host;
    for (const IpAddress& address : *found) EXPECT_TRUE(IsLoopback(address)) << host;
  }
}

TEST(Resolver, KnowsThisComputerByItsNamesAlone) {
  for (const char* host : {"localhost", "LOCALHOST.", "box.localhost", "127.0.0.1", "::1", "::ffff:127.0.0.1"})
    EXPECT_TRUE(IsLoopbackHost(host)) << host;
  for (const char* host : {"", ".", "localhost.example", "notlocalhost", "localhost..", "128.0.0.1", "127.1", "\xFF"})
    EXPECT_FALSE(IsLoopbackHost(host)) << host;
}

TEST(Wait, EndsWhenThePersonCancelsToItsLevel) {
  const platform::SystemClock clock;
  platform::CancelToken cancel;
  std::array<int, 2> pipe{};
  ASSERT_EQ(::pipe(pipe.data()), 0);
  const platform::UniqueFd reader(pipe[0]);
  const platform::UniqueFd writer(pipe[1]);
  Patience patience{clock, cancel, platform::Stop::kAbandon, Deadline::Never()};
  cancel.Request();  // kStop: below the level of this wait, which goes on to its deadline
  patience.deadline = Deadline::After(clock.Monotonic(), std::chrono::milliseconds(20));
  EXPECT_EQ(Wait(reader.get(), POLLIN, patience).error().failure, Failure::kTimedOut);
  cancel.Request();
  patience.deadline = Deadline::Never();
  EXPECT_EQ(Wait(reader.get(), POLLIN, patience).error().failure, Failure::kTryAgain);
}

}  // namespace
}  // namespace quillcast::net
