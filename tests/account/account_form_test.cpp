// The account dialog without its window: what it shows, what can be used, what its rules change, what its buttons do.
#include "account/account_form.h"

#include <gtest/gtest.h>

#include "account/account_steps.h"
#include "account/component_values.h"
#include "platform/text.h"
#include "support/fake_clock.h"
#include "support/fake_keyring.h"
#include "support/scripted_prompts.h"
#include "support/temporary_folder.h"

namespace quillcast::account {
namespace {

using enum AccountKey;
using Values = std::vector<std::pair<AccountKey, const char*>>;

AccountSettings With(const Values& values) {
  AccountSettings account;
  for (const auto& [key, value] : values) account.Set(key, value);
  return account;
}

// Every control that a rule speaks of; the rest is always enabled.
constexpr auto kRuled = std::to_array<AccountControl>(
    {ControlOf(kUsername), ControlOf(kPassword), ControlOf(kAuthMode), ControlOf(kPipeline), ControlOf(kNoAuth),
     ControlOf(kPasswordFrom), ControlOf(kPasswordCommand), ControlOf(kToField), ControlOf(kBccField),
     ControlOf(kThirdField), ControlOf(kThirdPath), AccountControl::kPickThirdPath, ControlOf(kAutoWrap),
     ControlOf(kWrap), AccountControl::kWrapArrows});

std::string Enabled(const AccountSettings& shown) {
  std::string marks;
  for (const AccountControl control : kRuled) marks += IsEnabled(shown, control) ? 'x' : '-';
  return marks;
}

TEST(AccountForm, EnablesWhatItsRulesSay) {
  struct Case {
    Values stored;
    const char* enabled;  // sign-in, where the password is, personal, bulk, third, wrap
  };
  for (const Case& c : std::initializer_list<Case>{
           {{}, "-------x-------"},
           {{{kAuth, "1"}}, "xxxxxx-x-------"},
           {{{kAuth, "1"}, {kPasswordFrom, "Keyring"}}, "x-xxxx-x-------"},
           {{{kAuth, "1"}, {kPasswordFrom, "Command"}}, "x-xxxxxx-------"},
           {{{kPasswordFrom, "Command"}}, "-------x-------"},
           {{{kAuth, "yes"}}, "-------x-------"},
           {{{kMethod, "Bulk"}}, "-------xx------"},
           {{{kMethod, "Third"}}, "-------x-xxx---"},
           {{{kMethod, "third"}}, "-------x-------"},
           {{{kEncoding, "None"}}, "-------x----x--"},
           {{{kEncoding, "None"}, {kAutoWrap, "1"}}, "-------x----xxx"},
           {{{kEncoding, "Base 64"}, {kAutoWrap, "1"}}, "-------x-------"},
       }) {
    EXPECT_EQ(Enabled(ShownInDialog(With(c.stored))), c.enabled);
  }
  EXPECT_TRUE(IsEnabled(AccountSettings(), ControlOf(kPort)));
}

TEST(AccountForm, ShowsStoredValuesAsItsBoxesCan) {
  struct Case {
    AccountKey key;
    const char* stored;
    const char* shown;
    Values beside = {};
  };
  for (const Case& c : std::initializer_list<Case>{
           {kName, " Ada\tof \xC3\xA9\n", " Ada\tof \xC3\xA9\n"},
           {kUsername, "ada", ""},
           {kPassword, "p", ""},
           {kAuthMode, "NTLM", "AUTH LOGIN"},
           {kAuthMode, "NTLM", "NTLM", {{kAuth, "1"}}},
           {kAuthMode, "ntlm", "AUTH LOGIN", {{kAuth, "1"}}},
           {kPipeline, "1", "0"},
           {kNoAuth, "1", "0"},
           {kBoundary, "2", "0"},
           {kTextPart, "", "0"},
           {kMethod, "Bulk Sending", "Personal"},
           {kBccField, "Friends", "Friends"},
           {kHeaderEncoding, "base 64", "None"},
           {kEncoding, "8bit", "None"},
           {kDsnNotify, "Always", "Do not send command to server"},
           {kSecurity, "SSL", "Automatic"},
           {kPasswordFrom, "Keyring", "Settings"},
           {kPasswordFrom, "Keyring", "Keyring", {{kAuth, "1"}}},
           {kPassword, "on its way", "on its way", {{kAuth, "1"}, {kPasswordFrom, "Keyring"}}},
           {kToField, "Shoe Size", "Shoe Size"},
           {kThirdField, "Another Server", "Another Server"},
           {kCharSet, "Klingon", "Klingon"},
           {kAutoWrap, "1", "0"},
           {kAutoWrap, "1", "1", {{kEncoding, "None"}}},
           {kWrap, "100", "76"},
           {kWrap, "100", "76", {{kEncoding, "None"}}},
           {kWrap, "100", "100", {{kEncoding, "None"}, {kAutoWrap, "1"}}},
       }) {
    AccountSettings stored = With(c.beside);
    stored.Set(c.key, c.stored);
    EXPECT_EQ(ShownInDialog(stored)[c.key], c.shown) << RowOf(c.key).name << "=" << c.stored;
  }
}

TEST(AccountForm, FollowsEachChange) {
  AccountSettings shown =
      ShownInDialog(With({{kAuth, "1"}, {kUsername, "ada"}, {kPassword, "p"}, {kPipeline, "1"}, {kNoAuth, "1"}}));
  const auto change = [&](AccountKey key, const char* value) {
    shown.Set(key, value);
    ApplyRules(shown);
  };
  change(kAuth, "0");
  change(kAuth, "1");
  for (const auto key : {kUsername, kPassword}) EXPECT_EQ(shown[key], "");
  for (const auto key : {kPipeline, kNoAuth}) EXPECT_EQ(shown[key], "0");

  change(kEncoding, "None");
  change(kAutoWrap, "1");
  change(kWrap, "1");  // half of "100" is typed
  EXPECT_EQ(shown[kWrap], "1");
  change(kEncoding, "Base 64");
  change(kEncoding, "None");
  EXPECT_EQ(shown[kAutoWrap] + " " + shown[kWrap], "0 76");

  change(kMethod, "Bulk");
  change(kBccField, "Friends");
  change(kMethod, "Personal");
  EXPECT_EQ(shown[kBccField], "Friends");
  EXPECT_STREQ(TimeoutUnit("1"), "Minute");
  for (const char* text : {"", "01", "1 ", "10"}) EXPECT_STREQ(TimeoutUnit(text), "Minutes") << text;
}

TEST(AccountForm, TakesDigitsAlone) {
  EXPECT_EQ(platform::DigitsOf("port 5\t8-7\b\n"), "587");
  EXPECT_EQ(platform::DigitsOf("\xD9\xA3\xEF\xBC\x92 1e3"), "13") << "an Arabic 3 and a fullwidth 2";
}

TEST(AccountForm, SaysWhatTheDialogWouldTidy) {
  const auto told = [](const Values& stored, std::vector<AccountKey> asked) {
    std::vector<std::string> sentences;
    for (const Sentence& sentence : TidiedByDialog(With(stored), asked)) sentences.push_back(sentence.InEnglish());
    return sentences;
  };
  using Sentences = std::vector<std::string>;
  EXPECT_EQ(told({}, {}), Sentences{});
  EXPECT_EQ(told({{kPipeline, "1"}, {kAuthMode, "NTLM"}}, {kPipeline}),
            Sentences{"Stored as asked. Without Auth=1 the account dialog will set back: AuthMode, Pipeline."});
  EXPECT_EQ(
      told({{kAutoWrap, "1"}, {kWrap, "99"}}, {}),
      (Sentences{"Stored as asked. Without Encoding=None the account dialog will set back: AutoWrap.",
                 "Stored as asked. Without Encoding=None and AutoWrap=1 the account dialog will set back: Wrap."}));
  EXPECT_EQ(told({{kAutoWrap, "1"}, {kWrap, "99"}, {kEncoding, "None"}}, {kWrap}), Sentences{});
  const Values other = {{kMethod, "Third"}, {kBccField, "x"}, {kThirdPath, "/q"}};
  EXPECT_EQ(told(other, {kBccField, kThirdPath}),
            Sentences{"Stored as asked. Without Method=Bulk the account dialog will keep but not offer: BCCField."});
  EXPECT_EQ(told(other, {kPort}), Sentences{}) << "it was not asked for now";
}

TEST(AccountSteps, TellTheMainWindow) {
  const Values ada = {{kName, "Ada"}, {kEmail, "ada@example.org"}};
  for (const auto& [method, text] : std::initializer_list<std::pair<const char*, const char*>>{
           {"Personal", "Personal Sending"}, {"Bulk", "Bulk Sending"}, {"Third", "3rd Party Sending"}}) {
    AccountSettings saved = With(ada);
    saved.Set(kMethod, method);
    EXPECT_EQ(TextsOf(saved).method, text);
    EXPECT_EQ(TextsOf(saved).from, "Ada <ada@example.org>");
  }
}

TEST(AccountSteps, ResetOnlyAfterYesAndOnlyTheAccount) {
  const test::TemporaryFolder folder;
  profile::SettingsStore store(folder / "settings.db");
  ASSERT_TRUE(With({{kName, "Ada"}, {kEmail, "ada@example.org"}, {kMethod, "Bulk"}}).Save(store));
  ASSERT_TRUE(store.Write("Account", "Unknown", "x"));
  ASSERT_TRUE(store.Write("Signature", "Status", "1"));
  test::ScriptedPrompts prompts;
  EXPECT_FALSE(AgreesToReset(prompts));
  prompts.answers = {platform::Answer::kYes};
  EXPECT_TRUE(AgreesToReset(prompts));
  test::FakeKeyring keyring;
  ASSERT_TRUE(AccountSecrets(keyring, store.file()).Reset(store, platform::CancelToken()));
  const auto texts = TextsAfterReset(store);
  ASSERT_TRUE(texts);
  EXPECT_EQ(texts->from + "|" + texts->method, "|Personal");
  EXPECT_EQ(*store.Read("Account", "Method", "none"), "none");
  EXPECT_EQ(*store.Read("Account", "Unknown", "none"), "none");
  EXPECT_EQ(*store.Read("Signature", "Status", "none"), "1");
  EXPECT_EQ(prompts.shown.back(),
            "ask: You are just about to wipe out all your SMTP settings.\r\nAre you sure you want to proceed?");
}

TEST(AccountSteps, PickTheQueueFolderWithItsSeparator) {
  for (const auto& [picked, path] : std::initializer_list<std::pair<const char*, const char*>>{
           {"", "before"}, {"/var/queue", "/var/queue/"}, {"/var/queue/", "/var/queue/"}, {"/", "/"}}) {
    AccountSettings shown = With({{kThirdPath, "before"}});
    test::ScriptedPrompts prompts;
    if (*picked != 0) prompts.files = {picked};
    PickQueueFolder(shown, prompts);
    EXPECT_EQ(shown[kThirdPath], path);
    EXPECT_EQ(prompts.shown.back(), "folder: Please select the destination folder.");
  }
}

// Other outcomes are told by the command's own test.
TEST(AccountSteps, TestTellsAPortThatIsNone) {
  test::FakeKeyring keyring;
  const test::FakeClock clock;
  const platform::CancelToken cancel;
  const auto test =
      TestAccount(With({{kServer, "127.0.0.1"}, {kPort, ""}}), AccountSecrets(keyring, "settings.db"), clock, cancel);
  EXPECT_FALSE(test.Works());
  EXPECT_EQ(test.text, "Error 1: An exception has occurred.");
  EXPECT_NE(test.outcome.reason, "");
}

TEST(ComponentValues, AreTheComponentsNumbers) {
  for (const auto& [mode, number] :
       std::initializer_list<std::pair<const char*, int>>{{"AUTH LOGIN", 1}, {"CRAM MD5", 2}, {"NTLM", 4}, {"x", 1}}) {
    EXPECT_EQ(account::ComponentValuesOf(With({{kAuthMode, mode}}), ThreadMode::kSecond).auth_mode, number);
  }
  const auto options = [](const char* no_auth, const char* extended) {
    return account::ComponentValuesOf(With({{kNoAuth, no_auth}, {kExtended, extended}}), ThreadMode::kNo).options;
  };
  EXPECT_EQ(options("0", "0"), std::nullopt);
  EXPECT_EQ(options("1", "0"), 256);
  EXPECT_EQ(options("0", "1"), 16);
  EXPECT_EQ(options("1", "1"), 272);
  for (const auto& [minutes, seconds] : std::initializer_list<std::pair<const char*, int>>{
           {"1", 60}, {"10", 600}, {"007", 420}, {"11", 60}, {"0", 60}, {"", 60}, {" 5", 60}}) {
    EXPECT_EQ(account::ComponentValuesOf(With({{kTimeout, minutes}}), ThreadMode::kNo).timeout_seconds, seconds)
        << minutes;
  }
}

TEST(ThreadModes, AreSecondUnlessStoredOtherwise) {
  const test::TemporaryFolder folder;
  profile::SettingsStore store(folder / "settings.db");
  using enum ThreadProtocol;
  for (const auto& [stored, mode, value] : std::initializer_list<std::tuple<const char*, const char*, int>>{
           {nullptr, "Second", 1}, {"No", "No", 2}, {"Single", "Single", 0}, {"no", "Second", 1}, {"", "Second", 1}}) {
    ASSERT_TRUE(stored == nullptr || store.Write("POP3-Thread", "Mode", stored));
    const auto modes = ThreadModes::Load(store);
    ASSERT_TRUE(modes);
    EXPECT_EQ(Name((*modes)[kPop3]), mode);
    EXPECT_EQ(ComponentValue((*modes)[kPop3]), value);
    EXPECT_EQ((*modes)[kSmtp], ThreadMode::kSecond);
  }
  ThreadModes modes;
  modes.Set(kSmtp, ThreadMode::kNo);
  modes.Set(kImap4, ThreadMode::kSingle);
  ASSERT_TRUE(modes.Save(store));
  EXPECT_EQ(*store.Read("SMTP-Thread", "Mode", "") + *store.Read("POP3-Thread", "Mode", "") +
                *store.Read("IMAP4-Thread", "Mode", ""),
            "NoSecondSingle");
}

}  // namespace
}  // namespace quillcast::account
