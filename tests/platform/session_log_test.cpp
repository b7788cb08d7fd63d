#include "platform/session_log.h"

#include <gtest/gtest.h>

#include <barrier>
#include <deque>
#include <thread>
#include <vector>

#include "platform/result.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"

namespace quillcast::platform {
namespace {

namespace fs = std::filesystem;

TEST(SessionLog, HoldsNoAddress) {
  struct Case {
    const char* text;
    const char* logged;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"Cannot read /home/ada/a.txt.", "Cannot read /home/ada/a.txt."},
           {"eve@r.example is not in the group.", "(an address) is not in the group."},
           {"550 <bob+x@example.net>: no", "550 <(an address)>: no"},
           {"\"a b\"@example.org,c@d.example; e", "(an address),(an address); e"},
           {"\"@example.org", "(an address)"},
           {"J\xC3\xBCrg@b\xC3\xBC"
            "cher.example!",
            "(an address)"},
           {"@", "(an address)"},
       }) {
    EXPECT_EQ(WithoutAddresses(c.text), c.logged) << c.text;
  }
}

TEST(SessionLog, TellsWhatWasPassedOverBehindWhatStandsThere) {
  constexpr auto kPrivate = fs::perms::owner_read | fs::perms::owner_write;
  for (const bool is_hard : {false, true}) {
    const test::TemporaryFolder folder;
    const test::FakeClock clock;
    const fs::path target = folder.Write("target", "mine");
    fs::permissions(target, kPrivate);
    const fs::path log_file = folder / "Session.log";
    is_hard ? fs::create_hard_link(target, log_file) : fs::create_symlink(target, log_file);
    for (const char* session : {"first", "second"}) {
      SessionLog log(folder.path(), clock);
      IgnoreErrors(Result<void>());
      Result<int> failed = Error{Failure::kIo, std::string("The ") + session + " line\nof ada@example.org.", "Wait."};
      EXPECT_EQ(IgnoreErrors(std::move(failed), 7), 7) << "and what stands in for the value is given";
      log.Write("again");
      log.Write("again");
    }
    IgnoreErrors(Result<void>(Error{Failure::kIo, "Nobody listens."}));
    const auto expected = [](const std::string& session) {
      return "2026-07-03 09:05:07 The " + session + " line?of (an address) Wait.\n2026-07-03 09:05:07 again\n";
    };
    EXPECT_EQ(test::ReadAll(log_file), expected("first") + expected("second"));
    EXPECT_TRUE(fs::equivalent(folder / "Session.before.log", target)) << "what somebody put there is only moved";
    EXPECT_EQ(test::ReadAll(target), "mine");
    EXPECT_EQ(fs::status(log_file).permissions(), kPrivate);
  }
}

// All find it full at once, and one alone may put it away.
TEST(SessionLog, LosesNobodysLinesWhereManyWrite) {
  const test::TemporaryFolder folder;
  const test::FakeClock clock;
  const fs::path file = folder / "Session.log";
  for (int round = 0; round < 1000; ++round) {
    folder.Write("Session.log", "");
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
    fs::resize_file(file, SessionLog::kLargest);
    std::deque<SessionLog> logs;
    for (int i = 0; i < 4; ++i) logs.emplace_back(folder.path(), clock);
    std::barrier together(4);
    std::vector<std::thread> threads;
    for (auto& log : logs) {
      threads.emplace_back([&] {
        together.arrive_and_wait();
        log.Write("mine");
      });
    }
    for (auto& thread : threads) thread.join();
    ASSERT_EQ(fs::file_size(folder / "Session.before.log") + fs::file_size(file),
              SessionLog::kLargest + 4 * std::string_view("2026-07-03 09:05:07 mine\n").size());
  }
}

TEST(SessionLog, GrowsNoLargerThanItMay) {
  const test::TemporaryFolder folder;
  const test::FakeClock clock;
  SessionLog log(folder.path(), clock);
  for (int i = 0; i < 3000; ++i) log.Write(std::to_string(i) + std::string(1000, 'x'));
  const auto size = fs::file_size(folder / "Session.log");
  const auto before = fs::file_size(folder / "Session.before.log");
  EXPECT_LE(before, SessionLog::kLargest);
  EXPECT_GT(before, SessionLog::kLargest - 2000);
  EXPECT_LE(size, SessionLog::kLargest);
  EXPECT_NE(test::ReadAll(folder / "Session.log").find(" 2999x"), std::string::npos);
  fs::remove_all(folder.path());
  log.Write("there is no place for it");
}

}  // namespace
}  // namespace quillcast::platform
