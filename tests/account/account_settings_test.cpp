// The account: what is stored, which checks refuse it, what it contributes to a connection and a message.
#include "account/account_settings.h"

#include <gtest/gtest.h>

#include "account/account_checks.h"
#include "account/account_connection.h"
#include "account/account_message.h"
#include "platform/text.h"
#include "support/temporary_folder.h"

namespace quillcast::account {
namespace {

using enum AccountKey;

AccountSettings Good() {
  AccountSettings account;
  account.Set(kName, "Ada");
  account.Set(kEmail, "ada@example.org");
  account.Set(kServer, "mail.example.org");
  return account;
}

TEST(Account, StartsFromItsDefaultsAndComesBackAsSaved) {
  const test::TemporaryFolder folder;
  profile::SettingsStore store(folder / "settings.db");
  auto loaded = AccountSettings::Load(store);
  ASSERT_TRUE(loaded);
  std::string values;
  for (const auto& row : AccountKeyRows()) values += (*loaded)[row.key] + "|";
  EXPECT_EQ(values,
            "|||25|0|||AUTH LOGIN|0|0|0|1|Personal|Email Address|Group|Quiksoft SMTP Express Service||None|"
            "Quoted Printable|Base 64|Western European (Windows)|0|76|1|0|Do not send command to server|"
            "Do not send command to server|Automatic|Settings||||||||||||0||");
  AccountSettings account = Good();
  account.Set(kPassword, "p'\"\\ \xC3\xA9\t");
  ASSERT_TRUE(account.Save(store));
  loaded = AccountSettings::Load(store);
  for (const auto& row : AccountKeyRows()) EXPECT_EQ((*loaded)[row.key], account[row.key]) << row.name;
}

TEST(Account, TheFirstCheckThatFailsIsTold) {
  struct Case {
    std::vector<std::pair<AccountKey, const char*>> set;
    const char* message;
    AccountControl control;
  };
  for (const Case& c : std::initializer_list<Case>{
           {{{kName, ""}, {kEmail, ""}}, "Please enter your name.", ControlOf(kName)},
           {{{kEmail, "ada"}, {kServer, ""}}, "", ControlOf(kEmail)},
           {{{kServer, ""}, {kPort, ""}}, "Please enter your mail server.", ControlOf(kServer)},
           {{{kPort, ""}}, "Please enter your port.", ControlOf(kPort)},
           {{{kPort, "x"}}, "Please enter a valid port.", ControlOf(kPort)},
           {{{kPort, "0"}}, "Please enter a valid port.", ControlOf(kPort)},
           {{{kPort, "65536"}}, "Please enter a valid port.", ControlOf(kPort)},
           {{{kPort, " 25"}}, "Please enter a valid port.", ControlOf(kPort)},
           {{{kPort, "x"}, {kAuth, "1"}, {kWrap, ""}}, "Please enter a valid port.", ControlOf(kPort)},
           {{{kAuth, "1"}}, "You must enter the username.", ControlOf(kUsername)},
           {{{kAuth, "1"}, {kUsername, "a"}, {kTimeout, ""}}, "You must enter the password.", ControlOf(kPassword)},
           {{{kAuth, "1"}, {kPasswordFrom, "Keyring"}, {kTimeout, ""}},
            "You must enter the username.",
            ControlOf(kUsername)},
           {{{kAuth, "1"}, {kUsername, "a"}, {kPasswordFrom, "Keyring"}, {kTimeout, ""}},
            "Please enter your timeout.",
            ControlOf(kTimeout)},
           {{{kAuth, "1"}, {kUsername, "a"}, {kPasswordFrom, "Vault"}},
            "You must enter the password.",
            ControlOf(kPassword)},
           {{{kAuth, "1"}, {kUsername, "a"}, {kPasswordFrom, "Command"}, {kPasswordCommand, " "}, {kWrap, "31"}},
            "Please enter a valid wrap characters.",
            ControlOf(kWrap)},
           {{{kAuth, "1"}, {kUsername, "a"}, {kPasswordFrom, "Command"}, {kPasswordCommand, " "}},
            "",
            ControlOf(kPasswordCommand)},
           {{{kServer, " ; "}}, "Please enter your mail server.", ControlOf(kServer)},
           {{{kName, "Ada\u202E"}, {kServer, "-h"}}, "", ControlOf(kName)},
           {{{kName, "\u2067Ada"}}, "", ControlOf(kName)},
           {{{kName, "Ada\r\nBcc: eve@a.example"}}, "", ControlOf(kName)},
           {{{kEmail, "Ada\u202C <ada@example.org>"}}, "", ControlOf(kEmail)},
           {{{kServer, "a.example:0"}, {kWrap, "31"}}, "Please enter a valid wrap characters.", ControlOf(kWrap)},
           {{{kTimeout, ""}}, "Please enter your timeout.", ControlOf(kTimeout)},
           {{{kTimeout, "11"}}, "Please enter a valid timeout.", ControlOf(kTimeout)},
           {{{kTimeout, "0"}}, "Please enter a valid timeout.", ControlOf(kTimeout)},
           {{{kMethod, "Bulk"}, {kBccField, ""}}, "You must enter the BCC Field.", ControlOf(kBccField)},
           {{{kMethod, "Third"}, {kWrap, ""}}, "You must enter the queue directory.", AccountControl::kPickThirdPath},
           {{{kEncoding, "Base 64"}, {kWrap, ""}}, "Please enter your wrap characters.", ControlOf(kWrap)},
           {{{kWrap, "31"}}, "Please enter a valid wrap characters.", ControlOf(kWrap)},
           {{{kWrap, "129"}}, "Please enter a valid wrap characters.", ControlOf(kWrap)},
       }) {
    AccountSettings account = Good();
    for (const auto& [key, value] : c.set) account.Set(key, value);
    const auto complaint = CheckAccount(account, "");
    ASSERT_TRUE(complaint) << c.message;
    EXPECT_EQ(complaint->message, c.message);
    EXPECT_NE(complaint->message.empty(), complaint->reason.empty()) << "a silent refusal has its reason";
    EXPECT_EQ(complaint->control, c.control);
  }
  for (const auto& [key, value] : std::initializer_list<std::pair<AccountKey, const char*>>{
           {kPort, "1"}, {kPort, "65535"}, {kTimeout, "10"}, {kWrap, "32"}, {kWrap, "128"}, {kBccField, ""}}) {
    AccountSettings account = Good();
    account.Set(key, value);
    EXPECT_FALSE(CheckAccount(account, "")) << value;
  }
  AccountSettings persian = Good();
  persian.Set(kName, "\u0646\u0627\u0645\u0647\u200C\u0627\u06CC\u200D\u200E\u200F");
  EXPECT_FALSE(CheckAccount(persian, ""));
}

TEST(Account, GivesTheConnection) {
  AccountSettings account = Good();
  account.Set(kServer, " a.example ; ;b.example:2525;[::1]:26;fe80::1; 10.0.0.1 : 27");
  account.Set(kPort, "587");
  account.Set(kTimeout, "10");
  account.Set(kSecurity, "TLS");
  const auto options = account::ConnectionOptionsOf(account);
  ASSERT_TRUE(options);
  std::vector<std::string> servers;
  for (const auto& server : options->servers) servers.push_back(server.host + " " + std::to_string(server.port));
  EXPECT_EQ(servers,
            (std::vector<std::string>{"a.example 587", "b.example 2525", "::1 26", "fe80::1 587", "10.0.0.1 27"}));
  EXPECT_EQ(options->timeout, std::chrono::seconds(600));
  EXPECT_EQ(options->security, smtp::Security::kTls);

  account.Set(kAuthMode, "DIGEST MD5");
  for (const char* signs_in : {"0", "1"}) {
    account.Set(kAuth, signs_in);
    EXPECT_EQ(static_cast<bool>(account::ConnectionOptionsOf(account)), signs_in[0] == '0')
        << "a way that nobody goes stops nothing";
  }
  account.Set(kAuthMode, "NTLM");
  EXPECT_EQ(account::ConnectionOptionsOf(account)->auth_mode, smtp::AuthMode::kNtlm);
}

TEST(Account, TakesForAServerWhatCanBeAskedFor) {
  AccountSettings account = Good();
  const std::string label(63, 'a');
  const std::string long_name = label + "." + label + "." + label + "." + label.substr(2);  // 253 octets
  const auto takes = [&](const std::string& server) {
    account.Set(kServer, server);
    EXPECT_FALSE(CheckAccount(account, "")) << server;
  };
  const auto refuses = [&](const std::string& server) {
    account.Set(kServer, "a.example;" + server);
    const auto complaint = CheckAccount(account, "");
    ASSERT_TRUE(complaint) << server;
    EXPECT_EQ(complaint->control, ControlOf(kServer));
    EXPECT_TRUE(complaint->reason.InEnglish().starts_with("Server: \"")) << complaint->reason.InEnglish();
    EXPECT_FALSE(account::ConnectionOptionsOf(account)) << server;  // one that was stored before
  };
  takes(long_name);
  constexpr std::string_view kGood =
      "localhost mail_1.a.example. 12 1.a.example m\u00FCller.example:465 xn--mller-kva.example [mx.example]:25 "
      "fe80::1%nowhere7 \u0646\u0627\u0645\u0647\u200C\u0627\u06CC.example";
  for (const auto good : platform::Split(kGood, ' ')) takes(std::string(good));
  refuses("a" + long_name);
  refuses(label + "a.example");
  refuses("a b");
  constexpr std::string_view kBad =
      "mx.example\\ mx\r.example mx\u200B.example m\u00FC\u00ADx.example -h --help mx-.example a..example a.example.. "
      ". "
      "10.0.0.256 10.1. https://mx.example mx.example::587 mx.example,a.example <mx.example> ada@mx.example "
      "mx.example?x mx.example#1 % mx.example/25 :2525 []:25 m\xFC.example a.example:0 a.example:65536 a.example:x";
  for (const auto bad : platform::Split(kBad, ' ')) refuses(std::string(bad));
}

TEST(Account, GivesTheMessage) {
  AccountSettings account = Good();
  account.Set(kToField, "First Name");
  account.Set(kDsnNotify, "Notify me if message is delayed");
  account.Set(kDsnReturn, "Return the full message");
  account.Set(kHeaderEncoding, "Base 64");
  account.Set(kEmail, "Ada <ada@example.org>");
  const auto options = account::MessageOptionsOf(account, "MIME");
  ASSERT_TRUE(options);
  EXPECT_EQ(options->sender_address.text(), "ada@example.org");
  EXPECT_EQ(options->name_field, 2U);
  EXPECT_EQ(options->notify, smtp::DsnNotify::kDelay);
  EXPECT_EQ(options->dsn_return, smtp::DsnReturn::kFull);
  EXPECT_EQ(options->header_encoding, mime::HeaderEncoding::kB);
  for (const char* email : {"", "ada", "ada@"}) {
    AccountSettings nobody = account;
    nobody.Set(kEmail, email);
    const auto refused = account::MessageOptionsOf(nobody, "MIME");
    ASSERT_FALSE(refused) << email;
    EXPECT_EQ(refused.error().failure, Failure::kNotConfigured);
    EXPECT_TRUE(refused.error().what.InEnglish().starts_with("The account")) << refused.error().what.InEnglish();
  }
  for (const AccountKey key : {kToField, kEncoding, kAttachmentEncoding, kHeaderEncoding, kDsnNotify}) {
    AccountSettings wrong = account;
    wrong.Set(key, "Shoe Size");
    EXPECT_FALSE(account::MessageOptionsOf(wrong, "MIME"));
  }
}

TEST(Account, ReadsWhatTheDialogWouldNotHaveStored) {
  struct Case {
    AccountKey key;
    const char* value;
    std::size_t wrap;
    bool own_prefix;
  };
  for (const auto& [key, value, wrap, own_prefix] : std::initializer_list<Case>{
           Case{kWrap, "60", 60, false}, Case{kWrap, "129", 76, false}, Case{kAutoWrap, "0", 0, false},
           Case{kAutoWrap, "yes", 0, false}, Case{kEncoding, "Base 64", 0, false},
           Case{kEncoding, "Quoted Printable", 0, false}, Case{kBoundary, "1", 76, true},
           Case{kBoundary, " 01 ", 76, true}, Case{kBoundary, "2", 76, false}, Case{kBoundary, "-1", 76, false},
           Case{kBoundary, "yes", 76, false}, Case{kBoundary, "", 76, false}}) {
    AccountSettings account = Good();
    account.Set(kEncoding, "None");
    account.Set(kAutoWrap, "1");
    account.Set(key, value);
    const auto options = account::MessageOptionsOf(account, "MIME");
    ASSERT_TRUE(options);
    EXPECT_EQ(options->wrap, wrap) << value;
    EXPECT_EQ(options->own_boundary_prefix, own_prefix) << value;
  }
  for (const auto& [format, is_bare] : std::initializer_list<std::pair<const char*, bool>>{
           {"Plain", true}, {"MIME", false}, {"plain", false}, {"", false}, {"other", false}}) {
    EXPECT_EQ(account::MessageOptionsOf(Good(), format)->is_bare, is_bare) << format;
  }
}

}  // namespace
}  // namespace quillcast::account
