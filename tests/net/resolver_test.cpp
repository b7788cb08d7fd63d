// The addresses of hosts whose name servers answer rightly, in part, late, with a failure and not at all.
#include "net/resolver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string_view>

#include "support/dns_server.h"

namespace quillcast::net {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr unsigned kV6Type = 28;

// By the first label of the name that is asked for, "a-REST.aaaa-REST.example": what each family is answered with.
// A family that is "lost" is found when it is asked for again, and one that is "lostnone" is not there then; one that
// is "behind" is answered first together with the last that the library asks of another that fails.
struct Heard {
  std::set<std::string> lost = {};
  std::string behind = {};  // the query that waits
  int failures = 0;         // since it does
};

std::vector<std::string> Failing(const std::string& query, unsigned code, Heard& heard) {
  constexpr int kTries = 4;  // of the library
  std::vector answers = {ReplyTo(query, code, {})};
  if (++heard.failures == kTries && !heard.behind.empty()) answers.push_back(ReplyTo(heard.behind, 0, {}));
  return answers;
}

std::vector<std::string> Answer(const std::string& query, Heard& heard, bool tcp) {
  const ZoneQuestion question = QuestionOf(query);
  const bool is_v6 = question.type == kV6Type;
  const std::string family = is_v6 ? "aaaa-" : "a-";
  std::string_view wanted = question.name;
  while (!wanted.empty() && !wanted.starts_with(family))
    wanted.remove_prefix(std::min(wanted.find('.'), wanted.size() - 1) + 1);
  wanted = wanted.substr(0, wanted.find('.'));
  wanted.remove_prefix(std::min(wanted.size(), family.size()));
  if (wanted.starts_with("lost") && heard.lost.insert(question.section).second) return {};
  if (wanted == "behind" && heard.lost.insert(question.section).second) {
    heard.behind = query;
    return {};
  }
  if (wanted == "long") {
    if (!tcp) return {ReplyTo(query, 0, {}, true)};
    std::this_thread::sleep_for(milliseconds(1700));
  }
  if (wanted == "found" || wanted == "lost" || wanted == "long")
    return {ReplyTo(query, 0, {AddressRecord(question.name, is_v6 ? "2001:db8::7" : "192.0.2.7")})};
  if (wanted == "none" || wanted == "lostnone" || wanted == "behind") return {ReplyTo(query, 0, {})};
  if (wanted == "failed") return Failing(query, 2, heard);
  if (wanted == "refused") return Failing(query, 5, heard);
  if (wanted == "notauth") return {ReplyTo(query, 9, {})};
  if (wanted == "cut") return tcp ? std::vector<std::string>() : std::vector{ReplyTo(query, 0, {}, true)};
  if (wanted == "silent") return {};
  return {ReplyTo(query, 3, {})};
}

class ResolverTest : public testing::Test {
 protected:
  Patience Within(milliseconds time) const {
    return {clock_, cancel_, platform::Stop::kAbandon, Deadline::After(clock_.Monotonic(), time)};
  }

  platform::SystemClock clock_;
  platform::CancelToken cancel_;
};

std::string AsText(const Resolver::Found& found) {
  if (!found) return InOneLine(found.error());
  std::vector<std::string> texts;
  for (const IpAddress& address : *found) texts.push_back(ToString(address));
  std::ranges::sort(texts);
  std::string text;
  for (const std::string& one : texts) text += one + " ";
  return text;
}

TEST_F(ResolverTest, GoesOnWithWhatCameOfAName) {
  struct Case {
    const char *name, *addresses;
    milliseconds patience = seconds(20);
    milliseconds at_most = seconds(4);
  };
  Heard heard;
  const DnsServer server([&heard](const std::string& query, bool tcp) { return Answer(query, heard, tcp); });
  for (const Case& c :
       std::initializer_list<Case>{{"a-found.aaaa-found.example", "192.0.2.7 2001:db8::7 "},
                                   {"a-found.aaaa-none.example", "192.0.2.7 "},
                                   {"a-none.aaaa-found.example", "2001:db8::7 "},
                                   {"a-found.aaaa-failed.example", "192.0.2.7 "},
                                   {"a-found.aaaa-lost.example", "192.0.2.7 2001:db8::7 "},
                                   {"a-found.aaaa-lostnone.example", "192.0.2.7 ", seconds(20), milliseconds(1100)},
                                   {"a-long.aaaa-none.example", "192.0.2.7 "},
                                   {"a-found.aaaa-silent.example", "192.0.2.7 "},
                                   {"a-silent.aaaa-found.example", "2001:db8::7 "},
                                   {"a-found.aaaa-silent.example", "192.0.2.7 ", milliseconds(800)}}) {
    SCOPED_TRACE(c.name);
    Resolver resolver({server.endpoint()});
    const auto began = clock_.Monotonic();
    EXPECT_EQ(AsText(resolver.Resolve(c.name, Within(c.patience))), c.addresses);
    EXPECT_LT(clock_.Monotonic() - began, c.at_most);
  }
}

// Only of a name that name servers do not know is its spelling to blame.
TEST_F(ResolverTest, TellsWhyThereIsNoAddress) {
  struct Case {
    const char* name;
    Failure failure;
    const char* words;
  };
  Heard heard;
  const DnsServer server([&heard](const std::string& query, bool tcp) { return Answer(query, heard, tcp); });
  const Endpoint nobody{*ParseIpAddress("127.0.0.1"), 1};
  for (const Case& c :
       std::initializer_list<Case>{{"unknown.example", Failure::kNoInput, "Check the spelling"},
                                   {"a-none.aaaa-none.example", Failure::kNoInput, "Check the spelling"},
                                   {"a..b", Failure::kNoInput, ""},
                                   {"a-silent.aaaa-silent.example", Failure::kTimedOut, "was not found in time."},
                                   {"a-failed.aaaa-failed.example", Failure::kUnavailable, "(SERVFAIL)"},
                                   {"a-refused.aaaa-refused.example", Failure::kUnavailable, "(REFUSED)"},
                                   {"a-failed.aaaa-lostnone.example", Failure::kUnavailable, "(SERVFAIL)"},
                                   {"a-lostnone.aaaa-refused.example", Failure::kUnavailable, "(REFUSED)"},
                                   {"a-failed.aaaa-behind.example", Failure::kUnavailable, "(SERVFAIL)"},
                                   {"a-notauth.aaaa-none.example", Failure::kUnavailable, "(code 9)"},
                                   {"a-cut.aaaa-cut.example", Failure::kUnavailable, "(no answer that can be used)"},
                                   {"nobody.example", Failure::kUnavailable,
                                    "cannot be reached: Connection refused. Check that this computer is"}}) {
    SCOPED_TRACE(c.name);
    heard = {};
    Resolver resolver({c.name == std::string_view("nobody.example") ? nobody : server.endpoint()});
    const auto found = resolver.Resolve(c.name, Within(milliseconds(900)));
    ASSERT_FALSE(found);
    EXPECT_EQ(found.error().failure, c.failure);
    EXPECT_NE(InOneLine(found.error()).find(c.words), std::string::npos) << InOneLine(found.error());
  }
}

// Long before a person, or the server that waits for one, gives up.
TEST_F(ResolverTest, AsksTheNextServerSoonWhereTheFirstIsSilent) {
  Heard heard;
  const DnsServer silent([](const std::string&, bool) { return std::vector<std::string>(); });
  const DnsServer server([&heard](const std::string& query, bool tcp) { return Answer(query, heard, tcp); });
  Resolver resolver({silent.endpoint(), server.endpoint()});
  EXPECT_EQ(AsText(resolver.Resolve("a-found.aaaa-none.example", Within(seconds(4)))), "192.0.2.7 ");
}

// What name servers said of one name is nothing that the next one is told of.
TEST_F(ResolverTest, ForgetsWhatTheLastNameMet) {
  Heard heard;
  const DnsServer server([&heard](const std::string& query, bool tcp) { return Answer(query, heard, tcp); });
  Resolver resolver({server.endpoint()});
  EXPECT_FALSE(resolver.Resolve("a-refused.aaaa-refused.example", Within(seconds(5))));
  const auto found = resolver.Resolve("a-cut.aaaa-cut.example", Within(seconds(5)));
  ASSERT_FALSE(found);
  EXPECT_EQ(InOneLine(found.error()).find("REFUSED"), std::string::npos) << InOneLine(found.error());
}

}  // namespace
}  // namespace quillcast::net
