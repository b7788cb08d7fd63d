// What a person types to say whom the mailbox turns away and what it offers.
#include "smtp/mailbox/server_rule.h"

#include <gtest/gtest.h>

#include "smtp/mailbox/server_features.h"

namespace quillcast::smtp {
namespace {

TEST(ServerPolicy, ReadsRules) {
  struct Case {
    const char* text;
    RuleKind kind;
    bool good;
    RuleStage stage = RuleStage::kRecipient;
    const char* pattern = "";
    int code = 0;
  };
  for (const Case& c :
       std::initializer_list<Case>{{"bob@*=550", RuleKind::kRefuse, true, RuleStage::kRecipient, "bob@*", 550},
                                   {"mail:a=b@*=599", RuleKind::kRefuse, true, RuleStage::kSender, "a=b@*", 599},
                                   {"DATA:*=400", RuleKind::kDefer, true, RuleStage::kData, "*", 400},
                                   {"bob=450", RuleKind::kRefuse, false},
                                   {"bob=550", RuleKind::kDefer, false},
                                   {"bob=600", RuleKind::kRefuse, false},
                                   {"bob", RuleKind::kRefuse, false},
                                   {"=550", RuleKind::kRefuse, false},
                                   {"MAIL:=550", RuleKind::kRefuse, false},
                                   {"bob=", RuleKind::kRefuse, false}}) {
    const auto rule = ParseServerRule(c.text, c.kind);
    ASSERT_EQ(static_cast<bool>(rule), c.good) << c.text;
    if (!rule) continue;
    EXPECT_EQ(rule->stage, c.stage) << c.text;
    EXPECT_EQ(rule->pattern, c.pattern) << c.text;
    EXPECT_EQ(rule->code, c.code) << c.text;
  }
}

TEST(ServerPolicy, MatchesGlobs) {
  struct Case {
    const char *pattern, *text;
    bool matches;
  };
  for (const Case& c : std::initializer_list<Case>{
           Case{"*", "", true}, Case{"", "", true}, Case{"", "a", false}, Case{"BOB@*.net", "bob@example.NET", true},
           Case{"b?b@x", "bob@x", true}, Case{"b?b@x", "bb@x", false}, Case{"*ab", "aab", true},
           Case{"a*b*c", "aXbYbZc", true}, Case{"a*b*c", "acb", false}, Case{"a**", "a", true},
           Case{"[ab]*", "a", false}}) {
    EXPECT_EQ(MatchesGlob(c.pattern, c.text), c.matches) << c.pattern << " " << c.text;
  }
  const std::string stars = [] {
    std::string text;
    for (int i = 0; i < 500; ++i) text += "*a";
    return text + "b";
  }();
  EXPECT_FALSE(MatchesGlob(stars, std::string(2000, 'a')));  // must end soon
}

TEST(ServerPolicy, ReadsOffers) {
  EXPECT_EQ(*ParseFeatures("none"), 0U);
  EXPECT_EQ(*ParseFeatures("pipelining, 8BITMIME"), kPipelining | kEightBitMime);
  for (const char* bad : {"", "PIPELINING,", "8BIT", "none,DSN"}) EXPECT_FALSE(ParseFeatures(bad)) << bad;
}

}  // namespace
}  // namespace quillcast::smtp
