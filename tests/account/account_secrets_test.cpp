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
#include "account/practice.h"
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
                                                                   {kEmail, "ada@example.org"},
                                                                   {kServer, "mail.example.org"},
                                                                   {kAuth, "1"},
                                                                   {kUsername, "ada"},
                                                                   {kPassword, password},
                                                                   {kPasswordFrom, place},
                                                                   {kPasswordCommand, command}})
      account.Set(key, value);
    return account;
  }
  // As somebody does who saw the account just then.
  Result<SavedAccount> Save(const AccountSettings& wanted) {
    return secrets_.Save({*AccountSettings::Load(settings_), wanted}, settings_, cancel_);
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
           {"another one", From("Keyring", "old"), From("Keyring", "new"), false, "Keyring:", "new", "find; keep",
            true},
           {"another, refused", From("Keyring", "old"), From("Keyring", "new"), true, "Keyring:", "old", "find", true},
           {"no change", From("Keyring", "old"), From("Keyring", ""), true, "Keyring:", "old", "", false},
           {"back", From("Keyring", "old"), From("Settings", "new"), false, "Settings:new", "", "forget it", true},
           {"back, refused", From("Keyring", "old"), From("Settings", "new"), true, "Settings:new", "old", "forget it",
            true},
           {"to a command", From("Keyring", "old"), From("Command", "", "true"), false, "Command:", "", "forget it",
            true},
           {"a command from the start", From("Settings", "old"), From("Command", "old", "true"), true, "Command:", "",
            "", false}}) {
    SCOPED_TRACE(c.name);
    keyring_ = {};
    ASSERT_TRUE(Save(c.before));
    keyring_.calls.clear();
    keyring_.refuses = c.refuses;
    EXPECT_EQ(secrets_.SavingAsksKeyring(c.saved, settings_), c.asks);
    const auto saved = Save(c.saved);
    const bool only_forgets = std::string_view(c.calls) == "forget it";
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
  ASSERT_TRUE(Save(From("Settings", "old")));
  profile::SettingsStore elsewhere("/dev/null/settings.db");
  EXPECT_FALSE(secrets_.Save({AccountSettings(), From("Keyring", "old")}, elsewhere, cancel_));
  EXPECT_EQ(keyring_.Only() + " " + Stored(), " Settings:old");
}

TEST_F(AccountSecretsTest, ResetTakesItOutOfTheKeyringToo) {
  for (const bool refuses : {false, true}) {
    ASSERT_TRUE(Save(From("Keyring", "old")));
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
  ASSERT_TRUE(Save(From("Settings", "old")));
  ASSERT_TRUE(secrets_.Reset(settings_, cancel_));
  EXPECT_EQ(keyring_.calls, std::vector<std::string>{"forget all"}) << "of what could not be deleted before";
  keyring_.calls.clear();
  ASSERT_TRUE(Save(From("Settings", "old")));
  EXPECT_TRUE(secrets_.Reset(settings_, cancel_));
  EXPECT_TRUE(keyring_.calls.empty()) << "it has nothing of this account";
  ASSERT_TRUE(Save(From("Settings", "old")));
  EXPECT_EQ(*settings_.Read("Keyring", "Entry", "no such row"), "no such row") << "nor have the settings of a keyring";
  // What no note names any more goes too.
  ASSERT_TRUE(Save(From("Keyring", "old")));
  auto orphan = *keyring_.kept.begin();
  keyring_.kept[{orphan.first[0], orphan.first[1], "eve"}] = "theirs";
  EXPECT_FALSE(secrets_.Reset(settings_, cancel_)->in_keyring);
  EXPECT_TRUE(keyring_.kept.empty());
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
    ASSERT_TRUE(Save(From("Keyring", "old")));
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
    ASSERT_TRUE(Save(account));
    EXPECT_EQ(keyring_.Only() + " " + PasswordOf(*AccountSettings::Load(settings_)), "new new");
  }
}

TEST_F(AccountSecretsTest, AnImportedAccountAsksNoCommandOfAnother) {
  const FoundAccount other{.name = "Ada", .email = "ada@other.example", .server = "smtp.other.example"};
  ASSERT_TRUE(Save(From("Command", "", "echo told")));
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
    bool is_damaged = false;  // what it had cannot be read
  };
  auto other = From("Keyring", "new");
  other.Set(kUsername, "bob");
  for (const Case& c : std::initializer_list<Case>{
           {"into it", From("Settings", "old"), From("Keyring", "old"), false, "", "Nothing was saved. "},
           {"another password", From("Keyring", "old"), From("Keyring", "new"), false, "old", "Nothing was saved. "},
           {"another user", From("Keyring", "old"), other, false, "old", "Nothing was saved. "},
           {"not taken back", From("Keyring", "old"), From("Keyring", "new"), true, "new",
            "The settings are as they were, but the keyring has the new password"},
           {"the old one unreadable", From("Keyring", "old"), From("Keyring", "new"), false, "",
            "The settings are as they were, but the keyring has no password for ada at mail.example.org any more",
            true}}) {
    SCOPED_TRACE(c.name);
    keyring_ = {};
    ASSERT_TRUE(secrets_.Reset(settings_, cancel_));
    ASSERT_TRUE(Save(c.before));
    keyring_.is_damaged = c.is_damaged;
    keyring_.after_keep = [&] {
      keyring_.refuses = c.refuses_then;
      std::filesystem::rename(settings_.file(), set_aside);
      std::filesystem::create_directory(settings_.file());
    };
    const auto saved = Save(c.saved);
    std::filesystem::remove(settings_.file());
    std::filesystem::rename(set_aside, settings_.file());
    keyring_.refuses = false;
    ASSERT_FALSE(saved);
    EXPECT_EQ(InOneLine(saved.error()).substr(0, std::string_view(c.told).size()), c.told);
    EXPECT_EQ(keyring_.Only(), c.in_keyring);
    const bool had_one = c.before[kPasswordFrom] == "Keyring";
    EXPECT_EQ(PasswordOf(*AccountSettings::Load(settings_)).substr(0, 23), c.is_damaged     ? "The keyring is damaged."
                                                                           : c.refuses_then ? "new"
                                                                                            : "old");
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
    ASSERT_TRUE(Save(before));
    const std::string stored = Stored();
    keyring_.is_late = true;
    const auto done = Save(saved);
    keyring_.is_late = false;
    ASSERT_FALSE(done);
    EXPECT_EQ(InOneLine(done.error()),
              "The settings are as they were. It gave no answer; it may have the password. Unlock it.");
    EXPECT_EQ(Stored(), stored);
    EXPECT_TRUE(secrets_.ResettingAsksKeyring(settings_));
    if (before[kPasswordFrom] == "Keyring") {
      ASSERT_TRUE(Save(From("Keyring", "newest")));
      EXPECT_EQ(keyring_.Only(), "newest") << "what it may have goes with the next one that is kept";
    }
    keyring_.refuses = true;
    const auto reset = secrets_.Reset(settings_, cancel_);
    ASSERT_TRUE(reset && reset->in_keyring);
    EXPECT_EQ(reset->in_keyring->what.InEnglish(),
              before[kPasswordFrom] == "Settings"
                  ? "The keyring may still have the password: The keyring was not unlocked."
                  : "The keyring still has the password: The keyring was not unlocked.");
    keyring_.refuses = false;
    ASSERT_TRUE(secrets_.Reset(settings_, cancel_));
    EXPECT_TRUE(keyring_.kept.empty());
  }
}

// A keyring that was never given the password has nothing to be told of, now or at a reset.
TEST_F(AccountSecretsTest, AKeyringThatDidNotGetItHasNoneOfIt) {
  for (const auto& [before, told_first] : std::initializer_list<std::pair<AccountSettings, const char*>>{
           {From("Settings", "old"), ""}, {From("Keyring", "old"), "ada at mail.example.org"}}) {
    ASSERT_TRUE(Save(before));
    keyring_.hangs = true;
    platform::CancelToken stop;
    stop.Request();
    const auto done = secrets_.Save({*AccountSettings::Load(settings_), From("Keyring", "new")}, settings_, stop);
    keyring_.hangs = false;
    ASSERT_FALSE(done);
    EXPECT_EQ(InOneLine(done.error()), "Nothing was saved. Asking the keyring was cancelled.");
    EXPECT_EQ(KeyringNoteOf(settings_).kept_for, told_first);
    EXPECT_FALSE(KeyringNoteOf(settings_).has_leftover);
    EXPECT_EQ(secrets_.ResettingAsksKeyring(settings_), *told_first != 0);
    ASSERT_TRUE(secrets_.Reset(settings_, cancel_));
  }
  // One that had nothing before has nothing of before, though it cannot be asked for that.
  ASSERT_TRUE(Save(From("Settings", "old")));
  keyring_.after_keep = [&] { keyring_.refuses = true; };
  const auto saved = Save(From("Keyring", "old"));
  ASSERT_TRUE(saved);
  EXPECT_FALSE(saved->in_keyring);
  EXPECT_FALSE(KeyringNoteOf(settings_).has_leftover);
}

// Nobody saves or resets beside another; whoever waits for that can be stopped, and a window does not wait at all.
TEST_F(AccountSecretsTest, WaitsForWhoElseSavesTheAccount) {
  ASSERT_TRUE(Save(From("Settings", "old")));
  const AccountChange change(From("Settings", "old"), From("Settings", "new"));
  auto held = LockAccount(settings_, {}, cancel_);
  ASSERT_TRUE(held);
  EXPECT_FALSE(secrets_.SaveAtOnce(change, settings_) || secrets_.ResetAtOnce(settings_));
  platform::CancelToken stop;
  stop.Request();
  const std::string told = "Waiting for another window or program that saves the account was cancelled.";
  const auto saved = secrets_.Save(change, settings_, stop);
  ASSERT_FALSE(saved);
  EXPECT_EQ(InOneLine(saved.error()), "Nothing was saved. " + told);
  const auto reset = secrets_.Reset(settings_, stop);
  ASSERT_FALSE(reset);
  EXPECT_EQ(InOneLine(reset.error()), "Nothing was reset. " + told);
  EXPECT_FALSE(ImportAccount(settings_, {.server = "smtp.other.example"}, {}, std::chrono::milliseconds(1)));
  const platform::SystemClock clock;
  Practice practice(settings_, clock, folder_ / "Practice");
  EXPECT_FALSE(practice.Begin([] {}));
  EXPECT_EQ(Stored(), "Settings:old");
  held = Error{};
  auto without_server = From("Settings", "old");
  without_server.Set(kServer, "");
  ASSERT_TRUE(without_server.Save(settings_));  // else practice has no place
  EXPECT_TRUE(practice.Begin([] {}));
  EXPECT_FALSE(secrets_.Save(change, settings_, cancel_)) << "the account has another server by now";
  const AccountChange name_alone(From("Settings", "old"), [] {
    auto account = From("Settings", "old");
    account.Set(kName, "Eve");
    return account;
  }());
  EXPECT_TRUE(*secrets_.SaveAtOnce(name_alone, settings_));
  EXPECT_TRUE(practice.Serves()) << "this change keeps that server";
}

// Each deletes what the account had before: not what the other has just kept.
TEST_F(AccountSecretsTest, TwoWhoSaveAtOnceDoSoOneAfterTheOther) {
  ASSERT_TRUE(Save(From("Keyring", "old")));
  auto bob = From("Keyring", "bob's");
  bob.Set(kUsername, "bob");
  auto eve = From("Keyring", "eve's");
  eve.Set(kUsername, "eve");
  std::thread other;
  std::atomic<bool> done = false;
  keyring_.after_keep = [&] {
    other = std::thread([&] {
      profile::SettingsStore settings(folder_ / "settings.db");
      EXPECT_TRUE(AccountSecrets(keyring_, folder_ / "settings.db")
                      .Save({*AccountSettings::Load(settings), eve}, settings, cancel_));
      done = true;
    });
    for (int tries = 0; tries < 30 && !done; ++tries) ::usleep(10'000);
  };
  EXPECT_TRUE(Save(bob));
  other.join();
  EXPECT_EQ(PasswordOf(*AccountSettings::Load(settings_)), "eve's");
  EXPECT_EQ(keyring_.Only(), "eve's");
  EXPECT_EQ(KeyringNoteOf(settings_).kept_for, "eve at mail.example.org");
}

// A keyring that cannot be asked any more is told of once, and keeps nobody waiting after that.
TEST_F(AccountSecretsTest, TellsOnceWhatTheKeyringStillHas) {
  ASSERT_TRUE(Save(From("Keyring", "old")));
  keyring_.refuses = true;
  EXPECT_TRUE(Save(From("Settings", "new"))->in_keyring);
  keyring_.calls.clear();
  EXPECT_FALSE(secrets_.SavingAsksKeyring(From("Settings", "new"), settings_));
  EXPECT_FALSE(Save(From("Settings", "new"))->in_keyring);
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
  ASSERT_TRUE(Save(From("Keyring", "kept")));
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
