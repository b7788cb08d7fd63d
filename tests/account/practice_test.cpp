// What practice does to the account, and what it leaves of it.
#include "account/practice.h"

#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace quillcast::account {
namespace {

using enum AccountKey;

TEST(Practice, BorrowsTheAccountsServerAndGivesItBack) {
  struct Case {
    const char* name;
    std::vector<std::pair<AccountKey, const char*>> before;
    const char* sender;              // while it is on
    const char* left;                // Name|Email|Server afterwards
    const char* new_server;          // what is set meanwhile, here or by another program; null for nothing
    const char* said;                // in the end
    bool end_after_another = false;  // it is ended by hand then, and not because it is seen
  };
  const Case cases[] = {
      {"a new person", {}, "Practice <practice@quillcast.example>", "||", nullptr, "Practice has ended."},
      {"an account without a server",
       {{kName, "Ada"}, {kEmail, "ada@a.example"}, {kAuth, "1"}, {kSecurity, "TLS"}},
       "Ada <ada@a.example>",
       "Ada|ada@a.example|",
       nullptr,
       "Practice has ended."},
      {"a server of one's own",
       {{kName, "Ada"}, {kEmail, "ada@a.example"}},
       "Ada <ada@a.example>",
       "Ada|ada@a.example|mail.a.example",
       "mail.a.example",
       "Practice has ended: the account names a server of its own now."},
      {"a server of another program",
       {},
       "Practice <practice@quillcast.example>",
       "||mail.b.example",
       "mail.b.example",
       "Practice has ended: the account names a server of its own now. It still lacks an address of your own.",
       true},
      {"seen by itself",
       {},
       "Practice <practice@quillcast.example>",
       "||mail.b.example",
       "mail.b.example",
       "Practice has ended: the account names a server of its own now. It still lacks an address of your own."},
      {"the account was reset", {}, "Practice <practice@quillcast.example>", "||", "", "Practice has ended."},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const test::TemporaryFolder root;
    profile::SettingsStore settings(root / "settings.db");
    const platform::SystemClock clock;
    AccountSettings account;
    for (const auto& [key, value] : c.before) account.Set(key, value);
    ASSERT_TRUE(account.Save(settings));
    Practice practice(settings, clock, root / "Practice");
    EXPECT_FALSE(practice.WasOn() || practice.Serves());

    ASSERT_TRUE(practice.Begin([] {}));
    EXPECT_TRUE(practice.is_on() && practice.WasOn() && practice.Serves());
    auto during = *AccountSettings::Load(settings);
    EXPECT_EQ(during[kName] + " <" + during[kEmail] + ">", c.sender);
    EXPECT_EQ(during[kServer] + " " + during[kAuth] + " " + during[kSecurity], "127.0.0.1 0 Automatic");
    EXPECT_TRUE(Practice(settings, clock, root / "Practice").WasOn()) << "the next session knows";

    EXPECT_FALSE(*practice.EndWhereLeft());
    if (c.new_server != nullptr) {
      during.Set(kServer, c.new_server);
      ASSERT_TRUE(during.Save(settings));
      EXPECT_FALSE(practice.Serves());
    }
    if (c.new_server != nullptr && !c.end_after_another) {
      {
        const platform::CancelToken never;
        const auto lock = LockAccount(settings, std::chrono::milliseconds(0), never);
        EXPECT_FALSE(practice.EndWhereLeft()) << "while somebody else saves the account";
        EXPECT_TRUE(practice.is_on());
      }
      const auto ended = practice.EndWhereLeft();
      ASSERT_TRUE(ended && *ended);
      EXPECT_EQ(InWords(**ended).InEnglish(), c.said);
      EXPECT_FALSE(*practice.EndWhereLeft()) << "once";
    } else {
      const auto ended = practice.End();
      ASSERT_TRUE(ended);
      EXPECT_EQ(InWords(*ended).InEnglish(), c.said);
    }
    EXPECT_FALSE(practice.is_on() || practice.WasOn());
    const auto after = *AccountSettings::Load(settings);
    EXPECT_EQ(after[kName] + "|" + after[kEmail] + "|" + after[kServer], c.left);
  }
}

TEST(Practice, ListsTheMessageThatCameLastFirst) {
  const test::TemporaryFolder root;
  for (const char* file : {"000002.eml", "000010.eml", "000001.eml", "index.json"}) root.Write(file, "x");
  EXPECT_EQ(PracticeMessages(root.path()), (std::vector<std::string>{"000010.eml", "000002.eml", "000001.eml"}));
}

}  // namespace
}  // namespace quillcast::account
