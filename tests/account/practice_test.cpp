// What practice does to the account, and what it leaves of it.
#include "account/practice.h"

#include <gtest/gtest.h>

#include "platform/sqlite.h"
#include "support/temporary_folder.h"

namespace quillcast::account {
namespace {

using enum AccountKey;

using Values = std::vector<std::pair<AccountKey, const char*>>;

struct Profile {
  test::TemporaryFolder root;
  profile::SettingsStore settings{root / "settings.db"};
  const platform::SystemClock clock;

  Practice Session() { return Practice(settings, clock, root / "Practice"); }
  void Set(const Values& values) {
    auto account = *AccountSettings::Load(settings);
    for (const auto& [key, value] : values) account.Set(key, value);
    ASSERT_TRUE(account.Save(settings));
  }
  std::string Sender() const {
    const auto account = *AccountSettings::Load(settings);
    return account[kName] + " <" + account[kEmail] + ">";
  }
  // Name|Email|Server|Port|Auth|Security
  std::string Account() const {
    const auto account = *AccountSettings::Load(settings);
    std::string text = account[kName];
    for (const AccountKey key : {kEmail, kServer, kPort, kAuth, kSecurity}) text += "|" + account[key];
    return text;
  }
};

constexpr const char* kEnded = "Practice has ended.";
constexpr const char* kOwnServer = "Practice has ended: the account names a server of its own now.";
constexpr const char* kNoSender =
    "Practice has ended: the account names a server of its own now. It still lacks a name and an address of your own.";
constexpr const char* kNoName =
    "Practice has ended: the account names a server of its own now. It still lacks a name of your own.";
constexpr const char* kNoAddress =
    "Practice has ended: the account names a server of its own now. It still lacks an address of your own.";

TEST(Practice, BorrowsFromTheAccountAndGivesBackWhatNobodyElseHasSet) {
  struct Case {
    const char* name;
    Values before;
    const char* sender;  // while it is on
    Values meanwhile;    // what is set then, here or by another program
    const char* left;    // afterwards
    const char* said;    // in the end
  };
  const Case cases[] = {
      {"a new person", {}, "Practice <practice@quillcast.example>", {}, "|||25|0|Automatic", kEnded},
      {"an account without a server",
       Values{{kName, "Ada"}, {kEmail, "ada@a.example"}, {kPort, "465"}, {kAuth, "1"}, {kSecurity, "TLS"}},
       "Ada <ada@a.example>", Values{}, "Ada|ada@a.example||465|1|TLS", kEnded},
      {"a server without a sender", Values{{kServer, "mail.a.example"}, {kPort, "587"}, {kAuth, "1"}},
       "Practice <practice@quillcast.example>", Values{}, "||mail.a.example|587|1|Automatic", kEnded},
      {"an address without a name", Values{{kEmail, "ada@a.example"}}, "Practice <ada@a.example>", Values{},
       "|ada@a.example||25|0|Automatic", kEnded},
      {"a sender of one's own, set meanwhile", Values{}, "Practice <practice@quillcast.example>",
       Values{{kName, "Ada"}, {kEmail, "ada@a.example"}}, "Ada|ada@a.example||25|0|Automatic", kEnded},
      {"an address of one's own alone", Values{}, "Practice <practice@quillcast.example>",
       Values{{kEmail, "ada@a.example"}}, "|ada@a.example||25|0|Automatic", kEnded},
      {"an address of one's own, and a server", Values{}, "Practice <practice@quillcast.example>",
       Values{{kEmail, "ada@a.example"}, {kServer, "mail.a.example"}}, "|ada@a.example|mail.a.example|25|0|Automatic",
       kNoName},
      {"a name of one's own, and a server", Values{}, "Practice <practice@quillcast.example>",
       Values{{kName, "Ada"}, {kServer, "mail.a.example"}}, "Ada||mail.a.example|25|0|Automatic", kNoAddress},
      {"a server of one's own, and nothing of the way to it",
       Values{{kName, "Ada"}, {kEmail, "ada@a.example"}, {kPort, "465"}, {kAuth, "1"}, {kSecurity, "TLS"}},
       "Ada <ada@a.example>", Values{{kServer, "mail.a.example"}}, "Ada|ada@a.example|mail.a.example|465|1|TLS",
       kOwnServer},
      {"a server of one's own with its port",
       Values{{kName, "Ada"}, {kEmail, "ada@a.example"}, {kAuth, "1"}, {kSecurity, "TLS"}}, "Ada <ada@a.example>",
       Values{{kServer, "mail.a.example"}, {kPort, "26"}}, "Ada|ada@a.example|mail.a.example|26|0|Automatic",
       kOwnServer},
      {"a server of one's own with its sign-in", Values{{kName, "Ada"}, {kEmail, "ada@a.example"}},
       "Ada <ada@a.example>", Values{{kServer, "mail.a.example"}, {kAuth, "1"}},
       "Ada|ada@a.example|mail.a.example|25|1|Automatic", kOwnServer},
      {"a server alone", Values{}, "Practice <practice@quillcast.example>", Values{{kServer, "mail.b.example"}},
       "||mail.b.example|25|0|Automatic", kNoSender},
      {"the account was reset", Values{}, "Practice <practice@quillcast.example>",
       Values{{kName, ""}, {kEmail, ""}, {kServer, ""}, {kPort, "25"}}, "|||25|0|Automatic", kEnded},
  };
  enum class End { kByHand, kSeen, kNextSession, kSeenAtTheNextStart };
  for (const Case& c : cases) {
    for (const End end : {End::kByHand, End::kSeen, End::kNextSession, End::kSeenAtTheNextStart}) {
      const bool leaves = c.meanwhile.size() > 0 && c.meanwhile.back().first != kEmail;
      if ((end == End::kSeen || end == End::kSeenAtTheNextStart) && !leaves) continue;
      SCOPED_TRACE(std::string(c.name) + ", " + std::to_string(static_cast<int>(end)));
      Profile profile;
      profile.Set(c.before);
      Practice practice = profile.Session();
      EXPECT_FALSE(*practice.WasOn() || practice.Serves());

      ASSERT_TRUE(practice.Begin([] {}));
      EXPECT_TRUE(practice.is_on() && *practice.WasOn() && practice.Serves());
      EXPECT_EQ(profile.Sender(), c.sender);
      const auto during = *AccountSettings::Load(profile.settings);
      EXPECT_EQ(during[kServer] + " " + during[kAuth] + " " + during[kSecurity], "127.0.0.1 0 Automatic");
      EXPECT_FALSE(*practice.EndWhereLeft());
      Practice next = profile.Session();
      if (end == End::kNextSession) {
        practice.Stop();
        EXPECT_TRUE(*next.WasOn());
        ASSERT_TRUE(next.Begin([] {}));
        EXPECT_TRUE(next.Serves());
      }
      if (end == End::kSeenAtTheNextStart) practice.Stop();
      profile.Set(c.meanwhile);
      EXPECT_EQ(practice.Serves() || next.Serves(), !leaves && end != End::kSeenAtTheNextStart);

      Practice& last = end == End::kByHand || end == End::kSeen ? practice : next;
      if (end == End::kSeen || end == End::kSeenAtTheNextStart) {
        {
          const platform::CancelToken never;
          const auto lock = LockAccount(profile.settings, std::chrono::milliseconds(0), never);
          EXPECT_FALSE(last.EndWhereLeft()) << "while somebody else saves the account";
        }
        const auto ended = last.EndWhereLeft();
        ASSERT_TRUE(ended && *ended);
        EXPECT_EQ(InWords(**ended).InEnglish(), c.said);
        EXPECT_FALSE(*last.EndWhereLeft()) << "once";
      } else {
        const auto ended = last.End();
        ASSERT_TRUE(ended);
        EXPECT_EQ(InWords(*ended).InEnglish(), c.said);
      }
      EXPECT_FALSE(last.is_on() || *last.WasOn());
      EXPECT_EQ(profile.Account(), c.left);
    }
  }
}

TEST(Practice, LeavesAnAccountThatIsThereByThen) {
  Profile profile;
  Practice practice = profile.Session();
  profile.Set({{kName, "Ada"}, {kEmail, "ada@a.example"}, {kServer, "mail.a.example"}, {kAuth, "1"}});
  const std::string account = profile.Account();
  const auto begun = practice.Begin([] {});
  ASSERT_FALSE(begun);
  EXPECT_TRUE(begun.error().what.InEnglish().starts_with("There is a mail account already"));
  EXPECT_EQ(profile.Account(), account);
  EXPECT_FALSE(practice.is_on() || *practice.WasOn());
}

// Cut off in between, the account would name a mailbox that nobody serves and nobody ends.
TEST(Practice, IsNotedWithTheAccountOrNotAtAll) {
  Profile profile;
  auto database = platform::Database::Open(profile.settings.file(), platform::OpenMode::kCreate);
  ASSERT_TRUE(database);
  ASSERT_TRUE(
      database->Execute("CREATE TABLE Settings (Application TEXT, Section TEXT, Key TEXT, Value TEXT, "
                        "PRIMARY KEY (Application, Section, Key), CHECK (Key <> 'Practice' OR Value = ''))"));
  Practice practice = profile.Session();
  EXPECT_FALSE(practice.Begin([] {}));
  EXPECT_FALSE(practice.is_on() || *practice.WasOn());
  EXPECT_EQ(profile.Account(), "|||25|0|Automatic");
}

TEST(Practice, ListsTheMessageThatCameLastFirst) {
  const test::TemporaryFolder root;
  for (const char* file : {"000002.eml", "000010.eml", "000001.eml", "index.json"}) root.Write(file, "x");
  EXPECT_EQ(PracticeMessages(root.path()), (std::vector<std::string>{"000010.eml", "000002.eml", "000001.eml"}));
}

}  // namespace
}  // namespace quillcast::account
