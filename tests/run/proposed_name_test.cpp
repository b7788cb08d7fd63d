// What a file of a mailing is called, whatever its subject and its group are.
#include "run/proposed_name.h"

#include <gtest/gtest.h>

#include <string>

#include "support/fake_clock.h"

namespace quillcast::run {
namespace {

TEST(ProposedName, IsSafeAndKeepsDayAndEnding) {
  struct Row {
    std::string subject, group, name;
  };
  const test::FakeClock clock;
  const auto began = std::chrono::sys_seconds(std::chrono::sys_days(std::chrono::year(2026) / 11 / 27));
  const std::string kLong(300, 'x');
  for (const auto& [subject, group, name] : {
           Row{"Hello", "Readers", "Hello to Readers 2026-11-27, sent.csv"},
           Row{"", "Readers", "(no subject) to Readers 2026-11-27, sent.csv"},
           Row{"Dear $*MergeFirstName*$", "Grüße", "Dear [FirstName] to Grüße 2026-11-27, sent.csv"},
           Row{"../../etc/passwd", "a\\b\n", "_-..-etc-passwd to a-b 2026-11-27, sent.csv"},
           Row{"~ada: \"50 %\"?", "<b>", "_~ada_ _50 %__ to _b_ 2026-11-27, sent.csv"},
           Row{kLong, kLong, kLong.substr(0, 61) + "... to " + kLong.substr(0, 61) + "... 2026-11-27, sent.csv"},
       }) {
    EXPECT_EQ(ProposedName({subject, group, began}, "sent", ".csv", clock), name);
  }
  EXPECT_EQ(ProposedName({"Hello", "Readers", began}, "", ".txt", clock), "Hello to Readers 2026-11-27.txt");
  EXPECT_EQ(WhatIsIn(SetOf({ResultState::kNotTried})), "not tried");
  EXPECT_EQ(WhatIsIn(SetOf({ResultState::kDeferred, ResultState::kFailed})), "recipients");
}

}  // namespace
}  // namespace quillcast::run
