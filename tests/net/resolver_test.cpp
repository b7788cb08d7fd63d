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
// A family that is "lost" is found when it is asked for again.
std::vector<std::string> Answer(const std::string& query, std::set<std::string>& lost) {
  const ZoneQuestion question = QuestionOf(query);
  const bool is_v6 = question.type == kV6Type;
  const std::string family = is_v6 ? "aaaa-" : "a-";
  std::string_view wanted = question.name;
  while (!wanted.empty() && !wanted.starts_with(family)) {
    wanted.remove_prefix(std::min(wanted.find('.'), wanted.size() - 1) + 1);
  }
  wanted = wanted.substr(0, wanted.find('.'));
  wanted.remove_prefix(std::min(wanted.size(), family.size()));
  if (wanted == "lost" && lost.insert(question.section).second) return {};
  if (wanted == "found" || wanted == "lost")
    return {ReplyTo(query, 0, {AddressRecord(question.name, is_v6 ? "2001:db8::7" : "192.0.2.7")})};
  if (wanted == "none") return {ReplyTo(query, 0, {})};
  if (wanted == "failed") return {ReplyTo(query, 2, {})};
  if (wanted == "refused") return {ReplyTo(query, 5, {})};
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
    const char* name;
    const char* addresses;
    milliseconds patience = seconds(20);
  };
  std::set<std::string> lost;
  const DnsServer server([&lost](const std::string& query, bool) { return Answer(query, lost); });
  for (const Case& c : std::initializer_list<Case>{{"a-found.aaaa-found.example", "192.0.2.7 2001:db8::7 "},
                                                   {"a-found.aaaa-none.example", "192.0.2.7 "},
                                                   {"a-none.aaaa-found.example", "2001:db8::7 "},
                                                   {"a-found.aaaa-failed.example", "192.0.2.7 "},
                                                   {"a-found.aaaa-lost.example", "192.0.2.7 2001:db8::7 "},
                                                   {"a-found.aaaa-silent.example", "192.0.2.7 "},
                                                   {"a-silent.aaaa-found.example", "2001:db8::7 "},
                                                   {"a-found.aaaa-silent.example", "192.0.2.7 ", milliseconds(800)}}) {
    SCOPED_TRACE(c.name);
    Resolver resolver({server.endpoint()});
    const auto began = clock_.Monotonic();
    EXPECT_EQ(AsText(resolver.Resolve(c.name, Within(c.patience))), c.addresses);
    EXPECT_LT(clock_.Monotonic() - began, seconds(4));
  }
}

// Only of a name that name servers do not know is its spelling to blame.
TEST_F(ResolverTest, TellsWhyThereIsNoAddress) {
  struct Case {
    const char* name;
    Failure failure;
    const char* words;
  };
  std::set<std::string> lost;
  const DnsServer server([&lost](const std::string& query, bool) { return Answer(query, lost); });
  const Endpoint nobody{*ParseIpAddress("127.0.0.1"), 1};
  for (const Case& c :
       std::initializer_list<Case>{{"unknown.example", Failure::kNoInput, "Check the spelling"},
                                   {"a-none.aaaa-none.example", Failure::kNoInput, "Check the spelling"},
                                   {"a..b", Failure::kNoInput, ""},
                                   {"a-silent.aaaa-silent.example", Failure::kTimedOut, "was not found in time."},
                                   {"a-failed.aaaa-failed.example", Failure::kUnavailable, "(SERVFAIL)"},
                                   {"a-refused.aaaa-refused.example", Failure::kUnavailable, "(REFUSED)"},
                                   {"nobody.example", Failure::kUnavailable,
                                    "cannot be reached: Connection refused. Check that this computer is"}}) {
    SCOPED_TRACE(c.name);
    Resolver resolver({c.name == std::string_view("nobody.example") ? nobody : server.endpoint()});
    const auto found = resolver.Resolve(c.name, Within(milliseconds(900)));
    ASSERT_FALSE(found);
    EXPECT_EQ(found.error().failure, c.failure);
    EXPECT_NE(InOneLine(found.error()).find(c.words), std::string::npos) << InOneLine(found.error());
  }
}

}  // namespace
}  // namespace quillcast::net
