// What becomes of a change of the account where others have changed it since it was seen.
#include "account/account_change.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace quillcast::account {
namespace {

using enum AccountKey;
using Values = std::vector<std::pair<AccountKey, const char*>>;

AccountSettings With(const Values& values) {
  AccountSettings account;
  for (const auto& [key, value] : Values{{kName, "Ada"},
                                         {kEmail, "ada@example.org"},
                                         {kServer, "mail.example.org"},
                                         {kAuth, "1"},
                                         {kUsername, "ada"},
                                         {kPasswordFrom, "Keyring"}})
    account.Set(key, value);
  for (const auto& [key, value] : values) account.Set(key, value);
  return account;
}

TEST(AccountChange, GoesOnWhatIsStoredByThenOrNotAtAll) {
  struct Case {
    const char* name;
    Values wanted;     // otherwise than it was seen
    Values meanwhile;  // changed by another
    Values becomes;    // none: it is refused
    std::vector<AccountKey> included = {};
  };
  for (const Case& c : std::vector<Case>{
           {"two other keys", {{kTimeout, "2"}}, {{kName, "Eve"}}, {{kTimeout, "2"}, {kName, "Eve"}}},
           {"the same key", {{kName, "Bob"}}, {{kName, "Eve"}}, {{kName, "Bob"}}},
           {"another user meanwhile", {{kTimeout, "2"}}, {{kUsername, "bob"}}, {{kTimeout, "2"}, {kUsername, "bob"}}},
           {"it practises meanwhile", Values{{kName, "Bob"}}, Values{{kServer, "127.0.0.1"}, {kAuth, "0"}},
            Values{{kName, "Bob"}, {kServer, "127.0.0.1"}, {kAuth, "0"}}},
           {"another user in both", {{kUsername, "bob"}}, {{kUsername, "eve"}}, {{kUsername, "bob"}}},
           {"a password, and another user meanwhile", {{kPassword, "new"}}, {{kUsername, "eve"}}, {}},
           {"a password, and another server meanwhile", {{kPassword, "new"}}, {{kServer, "evil.example"}}, {}},
           {"another server, and another user meanwhile", {{kServer, "mx.example"}}, {{kUsername, "eve"}}, {}},
           {"a password, and another place meanwhile", {{kPassword, "new"}}, {{kPasswordFrom, "Settings"}}, {}},
           {"another server, and a password meanwhile", {{kServer, "mx.example"}}, {{kPassword, "theirs"}}, {}},
           {"another user, and a server with its password meanwhile", Values{{kUsername, "bob"}},
            Values{{kServer, "mx.example"}, {kPassword, "theirs"}}, Values{}},
           {"another server in both, and a password meanwhile", Values{{kServer, "mx.example"}},
            Values{{kServer, "mx3.example"}, {kPassword, "theirs"}}, Values{}},
           {"security, and another's server meanwhile", {{kSecurity, "None"}}, {{kServer, "mx.example"}}, {}},
           {"a port, and another's server meanwhile", {{kPort, "26"}}, {{kServer, "mx.example"}, {kPort, "587"}}, {}},
           {"a way to sign in, and another's server meanwhile", Values{{kAuthMode, "CRAM MD5"}},
            Values{{kServer, "mx.example"}}, Values{}},
           {"security of before asked for, and another's server", {}, {{kServer, "mx.example"}}, {}, {kSecurity}},
           {"security, and another's port meanwhile", {{kSecurity, "None"}}, {{kPort, "465"}}, {}},
           {"a password, and security meanwhile", {{kPassword, "new"}}, {{kSecurity, "None"}}, {}},
           {"another server, and security meanwhile", {{kServer, "mx.example"}}, {{kSecurity, "None"}}, {}},
           {"security in both", {{kSecurity, "TLS"}}, {{kSecurity, "None"}}, {{kSecurity, "TLS"}}},
           {"security, and their password for the same server", Values{{kSecurity, "TLS"}},
            Values{{kPassword, "theirs"}, {kName, "Eve"}},
            Values{{kSecurity, "TLS"}, {kPassword, "theirs"}, {kName, "Eve"}}},
           {"asked for as it was seen", {}, {{kName, "Eve"}}, {{kName, "Ada"}}, {kName}},
           {"the user of before asked for", {}, {{kUsername, "eve"}}, {{kUsername, "ada"}}, {kUsername}}}) {
    SCOPED_TRACE(c.name);
    AccountChange change(With({}), With(c.wanted));
    for (const AccountKey key : c.included) change.Include(key);
    const auto became = change.Onto(With(c.meanwhile));
    EXPECT_EQ(static_cast<bool>(became), !c.becomes.empty());
    if (!became || c.becomes.empty()) continue;
    const auto expected = With(c.becomes);
    for (const auto& row : AccountKeyRows()) EXPECT_EQ((*became)[row.key], expected[row.key]) << row.name;
  }
}

// A note that was lost, or is another's, keeps nobody from changing anything else.
TEST(AccountChange, ThePasswordThatTheKeyringLacksRefusesOnlyWhatConcernsIt) {
  for (const auto& [wanted, kept_for, is_refused] : std::vector<std::tuple<Values, const char*, bool>>{
           {{{kTimeout, "2"}}, "", false},
           {{{kTimeout, "2"}, {kPort, "587"}}, "bob at mail.example.org", false},
           {{{kTimeout, "x"}}, "", true},
           {{{kUsername, "bob"}}, "ada at mail.example.org", true},
           {{{kServer, "mx.example"}}, "ada at mail.example.org", true},
           {{{kServer, "mx.example"}, {kPassword, "new"}}, "ada at mail.example.org", false}}) {
    const AccountChange change(With({}), With(wanted));
    EXPECT_EQ(change.Refusal(change.wanted(), kept_for).has_value(), is_refused) << wanted.front().second;
  }
}

}  // namespace
}  // namespace quillcast::account
