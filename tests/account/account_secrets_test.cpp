// Where the account's password comes from, and what is where after saving and resetting, whatever the keyring does.
#include "account/account_secrets.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "account/import/account_import.h"
#include "platform/file.h"
#include "support/fake_keyring.h"
#include "support/temporary_folder.h"

namespace quillcast::account {
namespace {

using enum AccountKey;

class AccountSecretsTest : public testing::Test {
 protected:
  static AccountSettings From(const char* place, const char* password, const char* command = "") {
    AccountSettings account;
    for (const auto& [key, value] :
         std::initializer_list<std::pair<AccountKey, const char*>>{{kName, "Ada"},
                                                                   {kServer, "mail.example.org"},
                                                                   {kAuth, "1"},
                                                                   {kUsername, "ada"},
                                                                   {kPassword, password},
                                                                   {kPasswordFrom, place},
                                                                   {kPasswordCommand, command}})
      account.Set(key, value);
    return account;
  }
  std::string Stored() const {
    const auto account = AccountSettings::Load(settings_);
    return account ? (*account)[kPasswordFrom] + ":" + (*account)[kPassword] : "?";
  }
  std::string PasswordOf(const AccountSettings& account) const {
    const auto password = secrets_.PasswordOf(account, cancel_);
    return password ? std::string(password->view()) : InOneLine(password.error());
  }

  const test::TemporaryFolder folder_;
  profile::SettingsStore settings_{folder_ / "settings.db"};
  test::FakeKeyring keyring_;
  platform::CancelToken cancel_;
  AccountSecrets secrets_{keyring_, folder_ / "settings.db", std::chrono::milliseconds(300)};
};

TEST_F(AccountSecretsTest, LosesNothingWhereverItGoes) {
  constexpr const char* kKept = "keep Quillcast Classic: ada at mail.example.org";
  struct Case {
    const char* name;
    AccountSettings before, saved;
    bool refuses;
    const char* stored;  // PasswordFrom and Password in the file
    const char* kept;    // in the keyring
    const char* calls;   // of the keyring
    bool asks;           // said so before
  };
  for (const Case& c : std::initializer_list<Case>{
           {"into the keyring", From("Settings", "old"), From("Keyring", "old"), false, "Keyring:", "old", kKept, true},
           {"refused", From("Settings", "old"), From("Keyring", "old"), true, "Settings:old", "", kKept, true},
           {"another one", From("Keyring", "old"), From("Keyring", "new"), false, "Keyring:", "new", kKept, true},
           {"another, refused", From("Keyring", "old"), From("Keyring", "new"), true, "Keyring:", "old", kKept, true},
           {"no change", From("Keyring", "old"), From("Keyring", ""), true, "Keyring:", "old", "", false},
           {"back", From("Keyring", "old"), From("Settings", "new"), false, "Settings:new", "", "forget", true},
           {"back, refused", From("Keyring", "old"), From("Settings", "new"), true, "Settings:new", "old", "forget",
            true},
           {"to a command", From("Keyring", "old"), From("Command", "", "true"), false, "Command:", "", "forget", true},
           {"a command from the start", From("Settings", "old"), From("Command", "old", "true"), true, "Command:", "",
            "", false}}) {
    SCOPED_TRACE(c.name);
    keyring_ = {};
    ASSERT_TRUE(secrets_.Save(c.before, settings_, cancel_));
    keyring_.calls.clear();
    keyring_.refuses = c.refuses;
    EXPECT_EQ(secrets_.SavingAsksKeyring(c.saved, settings_), c.asks);
    const auto saved = secrets_.Save(c.saved, settings_, cancel_);
    EXPECT_EQ(saved && saved->in_keyring, c.refuses && *c.calls == 'f') << "saved, and told that it is still there";
    EXPECT_EQ(static_cast<bool>(saved), !c.refuses || *c.calls != 'k');
    EXPECT_EQ(Stored(), c.stored);
    EXPECT_EQ(keyring_.Only(), c.kept);
    EXPECT_EQ(keyring_.calls.empty() ? "" : keyring_.calls.front(), c.calls);
    const auto file = platform::ReadFile(settings_.file(), 1 << 20);
    EXPECT_EQ(file->find("old") != std::string::npos, std::string_view(c.stored).ends_with("old")) << "in the file";
  }
  // Where the file cannot be written, nothing changes.
  keyring_ = {};
  ASSERT_TRUE(secrets_.Save(From("Settings", "old"), settings_, cancel_));
  profile::SettingsStore elsewhere("/dev/null/settings.db");
  EXPECT_FALSE(secrets_.Save(From("Keyring", "old"), elsewhere, cancel_));
  EXPECT_EQ(keyring_.Only() + " " + Stored(), " Settings:old");
}

TEST_F(AccountSecretsTest, ResetTakesItOutOfTheKeyringToo) {
  for (const bool refuses : {false, true}) {
    ASSERT_TRUE(secrets_.Save(From("Keyring", "old"), settings_, cancel_));
    keyring_.refuses = refuses;
    const auto reset = secrets_.Reset(settings_, cancel_);
    ASSERT_TRUE(reset);
    EXPECT_EQ(Stored(), "Settings:");
    EXPECT_EQ(keyring_.Only(), refuses ? "old" : "");
    EXPECT_EQ(reset->in_keyring ? InOneLine(*reset->in_keyring) : "",
              refuses
                  ? "The keyring still has the password: The keyring was not unlocked. Delete its entry for Quillcast "
                    "Classic in the keyring's own window."
                  : "");
    keyring_ = {};
  }
  ASSERT_TRUE(secrets_.Save(From("Settings", "old"), settings_, cancel_));
  keyring_.calls.clear();  // of what could not be deleted before
  EXPECT_TRUE(secrets_.Reset(settings_, cancel_));
  EXPECT_TRUE(keyring_.calls.empty()) << "it has nothing of this account";
}

// What the keyring has is of the server and the user before.
TEST_F(AccountSecretsTest, AnImportedAccountGetsNoPasswordOfAnother) {
  const FoundAccount other{
      .name = "Ada", .email = "ada@other.example", .server = "smtp.other.example", .user_name = "ada"};
  for (const bool refuses : {false, true}) {
    SCOPED_TRACE(refuses);
    keyring_ = {};
    ASSERT_TRUE(secrets_.Save(From("Keyring", "old"), settings_, cancel_));
    ASSERT_TRUE(ImportAccount(settings_, other, {.user_name = true}));
    auto account = *AccountSettings::Load(settings_);
    account.Set(kPasswordFrom, "Keyring");
    EXPECT_TRUE(secrets_.SavingAsksKeyring(account, settings_));
    keyring_.refuses = refuses;
    EXPECT_EQ(static_cast<bool>(secrets_.Save(account, settings_, cancel_)), !refuses);
    EXPECT_EQ(PasswordOf(*AccountSettings::Load(settings_)).substr(0, 44),
              refuses ? "" : "The keyring has no password of this account.");
    // It is deleted as soon as that can be.
    keyring_.refuses = false;
    ASSERT_TRUE(secrets_.Reset(settings_, cancel_));
    EXPECT_EQ(keyring_.Only(), "");
  }
}

TEST_F(AccountSecretsTest, ComesFromWhereTheAccountSays) {
  EXPECT_EQ(PasswordOf(From("Settings", "typed")), "typed");
  EXPECT_EQ(
      PasswordOf(From("Vault", "typed")),
      "The account's PasswordFrom is \"Vault\", which is none of its choices. Choose one: Settings, Keyring, Command.");
  EXPECT_EQ(PasswordOf(From("Keyring", "")).substr(0, 44), "The keyring has no password of this account.");
  ASSERT_TRUE(secrets_.Save(From("Keyring", "kept"), settings_, cancel_));
  EXPECT_EQ(PasswordOf(From("Keyring", "")), "kept");
  EXPECT_EQ(PasswordOf(From("Keyring", "on its way")), "on its way");
  EXPECT_EQ(AccountSecrets(keyring_, folder_ / "." / "settings.db").PasswordOf(From("Keyring", ""), cancel_)->view(),
            "kept");
  EXPECT_EQ(AccountSecrets(keyring_, folder_ / "other.db").PasswordOf(From("Keyring", ""), cancel_).error().failure,
            Failure::kNotConfigured)
      << "another profile has another password";
  keyring_.calls.clear();
  AccountSettings signs_in_nowhere = From("Keyring", "");
  signs_in_nowhere.Set(kAuth, "0");
  EXPECT_EQ(PasswordOf(signs_in_nowhere), "");
  EXPECT_TRUE(keyring_.calls.empty());
  EXPECT_EQ(secrets_.SignInOptionsOf(From("Command", "", "echo told"), cancel_)->password.view(), "told");
}

// Those that the command itself is asked with are in its own tests.
TEST_F(AccountSecretsTest, AHangingCommandIsEndedWithAllThatItStarted) {
  const auto command = "exec 3>&1; sleep 60 & echo $! >" + (folder_ / "pid").string() + "; echo unlock it >&2; wait";
  EXPECT_EQ(PasswordOf(From("Command", "", command.c_str())),
            "The password command did not end within 1 seconds, and said: \"unlock it\". It has no terminal to ask on: "
            "unlock what it "
            "reads from first, or let it ask in a window of its own.");
  const auto pid = platform::ReadFile(folder_ / "pid", 100);
  ASSERT_TRUE(pid);
  const auto is_alive = [&] {  // one that nobody asks after stays as a name
    std::string line;
    std::getline(std::ifstream("/proc/" + std::to_string(std::stoi(*pid)) + "/stat"), line);
    return !line.empty() && line.find(") Z ") == std::string::npos;
  };
  for (int tries = 0; tries < 100 && is_alive(); ++tries) ::usleep(10'000);
  EXPECT_FALSE(is_alive()) << "its child lives on";
  EXPECT_EQ(PasswordOf(From("Command", "", "exec >&- 2>&-; sleep 60")).substr(0, 53),
            "The password command did not end within 1 seconds. It")
      << "it closed what is read";
}

}  // namespace
}  // namespace quillcast::account
