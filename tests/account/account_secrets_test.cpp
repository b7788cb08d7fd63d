// Where the account's password comes from, and what is where after saving and resetting, whatever the keyring does.
#include "account/account_secrets.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <thread>

#include "account/import/account_import.h"
#include "account/keyring_note.h"
#include "platform/file.h"
#include "platform/text.h"
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
           {"into the keyring", From("Settings", "old"), From("Keyring", "old"), false, "Keyring:", "old",
            "keep; forget others", true},
           {"refused", From("Settings", "old"), From("Keyring", "old"), true, "Settings:old", "", "keep", true},
           {"another one", From("Keyring", "old"), From("Keyring", "new"), false, "Keyring:", "new",
            "find; keep; forget others", true},
           {"another, refused", From("Keyring", "old"), From("Keyring", "new"), true, "Keyring:", "old", "find", true},
           {"no change", From("Keyring", "old"), From("Keyring", ""), true, "Keyring:", "old", "", false},
           {"back", From("Keyring", "old"), From("Settings", "new"), false, "Settings:new", "", "forget all", true},
           {"back, refused", From("Keyring", "old"), From("Settings", "new"), true, "Settings:new", "old", "forget all",
            true},
           {"to a command", From("Keyring", "old"), From("Command", "", "true"), false, "Command:", "", "forget all",
            true},
           {"a command from the start", From("Settings", "old"), From("Command", "old", "true"), true, "Command:", "",
            "", false}}) {
    SCOPED_TRACE(c.name);
    keyring_ = {};
    ASSERT_TRUE(secrets_.Save(c.before, settings_, cancel_));
    keyring_.calls.clear();
    keyring_.refuses = c.refuses;
    EXPECT_EQ(secrets_.SavingAsksKeyring(c.saved, settings_), c.asks);
    const auto saved = secrets_.Save(c.saved, settings_, cancel_);
    const bool only_forgets = std::string_view(c.calls) == "forget all";
    EXPECT_EQ(saved && saved->in_keyring, c.refuses && only_forgets) << "saved, and told that it is still there";
    EXPECT_EQ(static_cast<bool>(saved), !c.refuses || only_forgets || *c.calls == '\0');
    EXPECT_EQ(Stored(), c.stored);
    EXPECT_EQ(keyring_.Only(), c.kept);
    std::string calls;
    for (const auto& call : keyring_.calls) calls += (calls.empty() ? "" : "; ") + call;
    EXPECT_EQ(platform::ReplaceAll(calls, " Quillcast Classic: ada at mail.example.org", ""), c.calls);
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
  ASSERT_TRUE(secrets_.Reset(settings_, cancel_));
  EXPECT_EQ(keyring_.calls, std::vector<std::string>{"forget all"}) << "of what could not be deleted before";
  keyring_.calls.clear();
  ASSERT_TRUE(secrets_.Save(From("Settings", "old"), settings_, cancel_));
  EXPECT_TRUE(secrets_.Reset(settings_, cancel_));
  EXPECT_TRUE(keyring_.calls.empty()) << "it has nothing of this account";
}

// However the account got another server or user, the password stays with those that it was kept for.
TEST_F(AccountSecretsTest, GoesToNobodyButWhomItWasKeptFor) {
  const FoundAccount other{
      .name = "Ada", .email = "ada@other.example", .server = "smtp.other.example", .user_name = "bob"};
  const auto set = [this](AccountKey key, const char* value) {
    return [=, this] { ASSERT_TRUE(settings_.Write(kAccountSection, RowOf(key).name, value)); };
  };
  const auto import_it = [&](bool user_name) {
    return [=, this] { ASSERT_TRUE(ImportAccount(settings_, other, {.user_name = user_name})); };
  };
  const auto make_anew = [this](const char* user) {
    return [=, this] {
      ASSERT_TRUE(std::filesystem::remove(settings_.file()));
      auto account = From("Keyring", "");
      account.Set(kUsername, user);
      ASSERT_TRUE(account.Save(settings_));
    };
  };
  struct Case {
    const char* name;
    std::function<void()> change;
    const char* password;  // or for whom there is none
  };
  for (const Case& c :
       std::initializer_list<Case>{{"another port", set(kPort, "587"), "old"},
                                   {"the server written otherwise", set(kServer, " MAIL.example.org:587 ;"), "old"},
                                   {"another server", set(kServer, "mail.evil.example"), "ada at mail.evil.example"},
                                   {"a second server", set(kServer, "mail.example.org;mail.evil.example"),
                                    "ada at mail.example.org;mail.evil.example"},
                                   {"another user", set(kUsername, "Ada"), "Ada at mail.example.org"},
                                   {"imported", import_it(false), "ada at smtp.other.example"},
                                   {"imported with the user", import_it(true), "bob at smtp.other.example"},
                                   {"a profile made anew for another", make_anew("bob"), "bob at mail.example.org"}}) {
    SCOPED_TRACE(c.name);
    keyring_ = {};
    ASSERT_TRUE(secrets_.Reset(settings_, cancel_));
    ASSERT_TRUE(secrets_.Save(From("Keyring", "old"), settings_, cancel_));
    c.change();
    const std::string whom = c.password;
    EXPECT_EQ(PasswordOf(*AccountSettings::Load(settings_)),
              whom == "old"
                  ? whom
                  : "The keyring has no password for " + whom +
                        ". Give the account its password; it goes into the keyring when the account is saved.");
    // What is kept for the changed account takes its place.
    auto account = *AccountSettings::Load(settings_);
    account.Set(kPassword, "new");
    ASSERT_TRUE(secrets_.Save(account, settings_, cancel_));
    EXPECT_EQ(keyring_.Only() + " " + PasswordOf(*AccountSettings::Load(settings_)), "new new");
  }
}

TEST_F(AccountSecretsTest, AnImportedAccountAsksNoCommandOfAnother) {
  const FoundAccount other{.name = "Ada", .email = "ada@other.example", .server = "smtp.other.example"};
  ASSERT_TRUE(secrets_.Save(From("Command", "", "echo told"), settings_, cancel_));
  ASSERT_TRUE(ImportAccount(settings_, other, {}));
  EXPECT_EQ(PasswordOf(*AccountSettings::Load(settings_)), "");
}

// The settings fail once the keyring has the new password: both stay as they were, and what is told is true.
TEST_F(AccountSecretsTest, TheKeyringAgreesWithSettingsThatCannotBeWritten) {
  const auto set_aside = folder_ / "aside";
  struct Case {
    const char* name;
    AccountSettings before, saved;
    bool refuses_then;
    const char* in_keyring;
    const char* told;
  };
  auto other = From("Keyring", "new");
  other.Set(kUsername, "bob");
  for (const Case& c : std::initializer_list<Case>{
           {"into it", From("Settings", "old"), From("Keyring", "old"), false, "", "Nothing was saved. "},
           {"another password", From("Keyring", "old"), From("Keyring", "new"), false, "old", "Nothing was saved. "},
           {"another user", From("Keyring", "old"), other, false, "old", "Nothing was saved. "},
           {"not taken back", From("Keyring", "old"), From("Keyring", "new"), true, "new",
            "The settings are as they were, but the keyring has the new password"}}) {
    SCOPED_TRACE(c.name);
    keyring_ = {};
    ASSERT_TRUE(secrets_.Reset(settings_, cancel_));
    ASSERT_TRUE(secrets_.Save(c.before, settings_, cancel_));
    keyring_.after_keep = [&] {
      keyring_.refuses = c.refuses_then;
      std::filesystem::rename(settings_.file(), set_aside);
      std::filesystem::create_directory(settings_.file());
    };
    const auto saved = secrets_.Save(c.saved, settings_, cancel_);
    std::filesystem::remove(settings_.file());
    std::filesystem::rename(set_aside, settings_.file());
    keyring_.refuses = false;
    ASSERT_FALSE(saved);
    EXPECT_EQ(InOneLine(saved.error()).substr(0, std::string_view(c.told).size()), c.told);
    EXPECT_EQ(keyring_.Only(), c.in_keyring);
    EXPECT_EQ(PasswordOf(*AccountSettings::Load(settings_)), c.refuses_then ? "new" : "old");
    const bool had_one = c.before[kPasswordFrom] == "Keyring";
    EXPECT_EQ(KeyringNoteOf(settings_).kept_for, had_one ? "ada at mail.example.org" : "");
  }
}

// It may have taken the password, so nobody says that it has not, and what it may have goes with the account.
TEST_F(AccountSecretsTest, AKeyringThatAnswersTooLateMayHaveIt) {
  auto other = From("Keyring", "new");
  other.Set(kUsername, "bob");
  for (const auto& [before, saved] : std::initializer_list<std::pair<AccountSettings, AccountSettings>>{
           {From("Settings", "old"), From("Keyring", "new")},
           {From("Keyring", "old"), From("Keyring", "new")},
           {From("Keyring", "old"), other}}) {
    ASSERT_TRUE(secrets_.Save(before, settings_, cancel_));
    const std::string stored = Stored();
    keyring_.is_late = true;
    const auto done = secrets_.Save(saved, settings_, cancel_);
    keyring_.is_late = false;
    ASSERT_FALSE(done);
    EXPECT_EQ(InOneLine(done.error()),
              "The settings are as they were. It gave no answer; it may have the password. Unlock it.");
    EXPECT_EQ(Stored(), stored);
    EXPECT_TRUE(secrets_.ResettingAsksKeyring(settings_));
    ASSERT_TRUE(secrets_.Reset(settings_, cancel_));
    EXPECT_TRUE(keyring_.kept.empty());
  }
}

// Each deletes what the account had before: not what the other has just kept.
TEST_F(AccountSecretsTest, TwoWhoSaveAtOnceDoSoOneAfterTheOther) {
  ASSERT_TRUE(secrets_.Save(From("Keyring", "old"), settings_, cancel_));
  auto bob = From("Keyring", "bob's");
  bob.Set(kUsername, "bob");
  auto eve = From("Keyring", "eve's");
  eve.Set(kUsername, "eve");
  std::thread other;
  std::atomic<bool> done = false;
  keyring_.after_keep = [&] {
    other = std::thread([&] {
      profile::SettingsStore settings(folder_ / "settings.db");
      EXPECT_TRUE(AccountSecrets(keyring_, folder_ / "settings.db").Save(eve, settings, cancel_));
      done = true;
    });
    for (int tries = 0; tries < 30 && !done; ++tries) ::usleep(10'000);
  };
  EXPECT_TRUE(secrets_.Save(bob, settings_, cancel_));
  other.join();
  EXPECT_EQ(PasswordOf(*AccountSettings::Load(settings_)), "eve's");
  EXPECT_EQ(keyring_.Only(), "eve's");
  EXPECT_EQ(KeyringNoteOf(settings_).kept_for, "eve at mail.example.org");
}

// A keyring that cannot be asked any more is told of once, and keeps nobody waiting after that.
TEST_F(AccountSecretsTest, TellsOnceWhatTheKeyringStillHas) {
  ASSERT_TRUE(secrets_.Save(From("Keyring", "old"), settings_, cancel_));
  keyring_.refuses = true;
  EXPECT_TRUE(secrets_.Save(From("Settings", "new"), settings_, cancel_)->in_keyring);
  keyring_.calls.clear();
  EXPECT_FALSE(secrets_.SavingAsksKeyring(From("Settings", "new"), settings_));
  EXPECT_FALSE(secrets_.Save(From("Settings", "new"), settings_, cancel_)->in_keyring);
  EXPECT_TRUE(keyring_.calls.empty());
  EXPECT_TRUE(secrets_.Reset(settings_, cancel_)->in_keyring) << "it was asked to delete it";
  keyring_.refuses = false;
  EXPECT_FALSE(secrets_.Reset(settings_, cancel_)->in_keyring);
  EXPECT_EQ(keyring_.Only(), "");
}

TEST_F(AccountSecretsTest, ComesFromWhereTheAccountSays) {
  EXPECT_EQ(PasswordOf(From("Settings", "typed")), "typed");
  EXPECT_EQ(
      PasswordOf(From("Vault", "typed")),
      "The account's PasswordFrom is \"Vault\", which is none of its choices. Choose one: Settings, Keyring, Command.");
  EXPECT_EQ(PasswordOf(From("Keyring", "")).substr(0, 55), "The keyring has no password for ada at mail.example.org");
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
