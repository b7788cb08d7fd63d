// The file of what went out, in the hands of others: damaged, removed, full, grown old.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <functional>

#include "run/pace/sliding_limit.h"
#include "run/pace/turns.h"
#include "run/pace/zoned_clock.h"
#include "support/room_on_disk.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr std::uintmax_t kEntry = kDepartureSize;
const PaceRules kFourAnHour{.rate = MessageLimit{4, 1h}};

class DepartureFile : public testing::Test {
 protected:
  Turns Program(const PaceRules& rules = {}) {
    return {rules, file_, clock_, [this](const Error& error) { told_.push_back(InOneLine(error)); }};
  }
  void Send(Turns& turns, int messages) {
    for (Turn turn{DomainOf("example.org")}; messages > 0; --messages) turns.GoesOut(turn);
    turns.Record();
  }
  // Sends as many as may go out now, up to some; gives how many that were.
  static int SendWhatMay(Turns& turns, int most = 9) {
    int sent = 0;
    for (Turn turn{DomainOf("example.org")}; sent < most && !turns.Take(turn).why; ++sent) {
      turns.GoesOut(turn);
      turns.Record();
    }
    return sent;
  }
  std::string Bytes() const {
    std::ifstream stream(file_, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  void Replace(const std::string& bytes) const { std::ofstream(file_, std::ios::binary) << bytes; }

  test::ZonedClock clock_;
  test::TemporaryFolder folder_;
  fs::path file_ = folder_ / "runs.pace";
  std::vector<std::string> told_;
};

TEST_F(DepartureFile, LossAndDamageAreToldOnceAndStopNoRun) {
  const std::string alone = " From now on a pace goes by this run alone.";
  const std::string damaged = "which keeps when messages went out, is damaged.";
  const std::string removed = "which keeps when messages went out, has been removed." + alone;
  const auto zeros = [this](std::size_t entry) { Replace(Bytes().replace(entry * kEntry, kEntry, kEntry, '\0')); };
  const struct {
    const char* name;
    std::function<void()> spoil;  // a clock and three entries
    int free;                     // of four, for a program that begins then
    std::string told;
    std::string told_under_way;  // to one that knows three
  } kCases[] = {
      {"as it was", [] {}, 1, "", ""},
      {"a piece of an entry behind the last", [&] { Replace(Bytes() + "torn"); }, 1, "", ""},
      {"an entry of zeros", [&] { zeros(3); }, 2, damaged, ""},
      {"zeros for whose time it is", [&] { zeros(1); }, 1, damaged, ""},
      {"one bit", [&] { Replace(Bytes().replace(3 * kEntry + 9, 1, 1, '!')); }, 2, damaged, ""},
      {"cut", [&] { fs::resize_file(file_, 3 * kEntry + 3); }, 3, "", damaged},
      {"something else", [&] { Replace("Dear reader, this is no such file."); }, 4, damaged, damaged},
      {"empty", [&] { Replace(""); }, 4, "", damaged},
      {"removed", [&] { fs::remove(file_); }, 4, "", removed},
      {"of a newer version", [&] { Replace("Quillcast out 2\n" + std::string(64, 'x')); }, 4,
       "version of this program." + alone, ""},
      {"a folder", [&] { fs::remove(file_), fs::create_directory(file_); }, 4, "Is a directory." + alone, removed},
      {"a link", [&] { fs::remove(file_), fs::create_symlink(folder_ / "elsewhere", file_); }, 4,
       "symbolic links." + alone, removed},
  };
  for (const bool under_way : {false, true}) {
    for (const auto& each : kCases) {
      SCOPED_TRACE(std::string(each.name) + (under_way ? ", under way" : ""));
      fs::remove_all(file_);
      told_.clear();
      Turns without = Program();
      Send(without, 2);
      std::optional<Turns> turns(Program(kFourAnHour));
      EXPECT_EQ(SendWhatMay(*turns, 1), 1);
      EXPECT_TRUE(told_.empty());
      each.spoil();
      if (!under_way) turns.emplace(Program(kFourAnHour));
      EXPECT_EQ(SendWhatMay(*turns), under_way ? 1 : each.free);
      EXPECT_EQ(SendWhatMay(*turns), 0);
      const std::string& told = under_way ? each.told_under_way : each.told;
      ASSERT_EQ(told_.size(), told.empty() ? 0U : 1U);
      EXPECT_THAT(told.empty() ? "" : told_.front(), testing::HasSubstr(told));
    }
  }
}

TEST_F(DepartureFile, AFullDiskLeavesThePaceToTheRun) {
  Turns turns = Program(kFourAnHour);
  EXPECT_EQ(SendWhatMay(turns, 1), 1);
  {
    const test::RoomOnDisk full(3 * kEntry + 5);
    EXPECT_EQ(SendWhatMay(turns), 3);
  }
  EXPECT_EQ(told_.size(), 1U);
  Turns next = Program(kFourAnHour);  // what was written of the second entry is none
  EXPECT_EQ(SendWhatMay(next), 3);
  EXPECT_EQ(told_.size(), 1U);
}

TEST_F(DepartureFile, CountsTheTimeThatPassedWhateverTheClockSays) {
  struct At {
    std::uint32_t boot = 1;  // 0: of an earlier version, which tells of no clock
    std::chrono::nanoseconds set{};
  };
  const auto to_1970 = test::ZonedClock::At("1970-01-01 00:01") - clock_.now;
  const struct {
    const char* name;
    At before;  // four go out; then half an hour passes, and a new start is ten minutes ago
    At after;
    std::chrono::minutes left;
    bool put_right = false;  // when the first is out
    bool cut = false;        // down to its header, before that
  } kCases[] = {
      {"as it was", {}, {}, 30min},
      {"set back", {}, {1, -3h}, 30min},
      {"set forward", {1, -3h}, {}, 30min},
      {"set from 1970, before which no time is kept", {1, to_1970}, {}, 30min},
      {"cut under way, and set back", {}, {1, -3h}, 30min, false, true},
      {"started again", {}, {2}, 30min},
      {"put right by a minute, and started again", {1, -1min}, {2}, 30min, true},
      {"started again with a clock that is behind", {}, {2, -3h}, 50min},
      {"started again with a clock that is no longer ahead", {1, 24h}, {2}, 50min},
      {"kept by an earlier version", {0}, {}, 30min},
      {"kept by an earlier version, set back since", {0}, {1, -3h}, 60min},
  };
  for (const auto& each : kCases) {
    SCOPED_TRACE(each.name);
    fs::remove(file_);
    const auto is = [this](const At& at) { clock_.boot = at.boot, clock_.set = at.set; };
    is(each.before);
    {
      Turns turns = Program(kFourAnHour);
      if (each.cut) fs::resize_file(file_, kEntry);
      EXPECT_EQ(SendWhatMay(turns, 1), 1);
      if (each.put_right) clock_.set = {};
      EXPECT_EQ(SendWhatMay(turns), 3);
    }
    clock_.now += 30min;
    is(each.after);
    if (each.after.boot == 2) clock_.booted = clock_.now - 10min;
    for (const auto left : {each.left, each.left - 1min}) {  // once, and not anew for each program
      Turns turns = Program(kFourAnHour);
      Turn turn{DomainOf("example.org")};
      EXPECT_EQ(turns.Take(turn).until - clock_.Now(), left + SlidingLimit::kFirstOctet);
      clock_.now += 1min;
    }
    if (each.before.boot != 0) is({each.after.boot});  // and right in the end
    EXPECT_EQ(SendWhatMay(*std::make_unique<Turns>(Program(kFourAnHour))), 0);
    clock_.now += each.left - 2min + SlidingLimit::kFirstOctet;
    EXPECT_EQ(SendWhatMay(*std::make_unique<Turns>(Program(kFourAnHour))), 4);
  }
  EXPECT_TRUE(told_.empty());
}

// As where a container that shares the file counts the time since the start from another moment.
TEST_F(DepartureFile, WhatSaysThatItGoesOutLaterIsOut) {
  Send(*std::make_unique<Turns>(Program()), 1);
  const DepartureOctets later = OctetsOf({DepartureState::kOut, clock_.Now() + 24h, DomainOf("example.org")});
  Replace(Bytes() + std::string(later.data(), later.size()));
  Turns turns = Program({.rate = MessageLimit{1, 1h}});
  Turn turn{DomainOf("example.org")};
  EXPECT_EQ(turns.Take(turn).until - clock_.Now(), 1h + SlidingLimit::kFirstOctet);
}

TEST(SystemClock, KnowsTheStartOfTheComputer) {
  const platform::SystemClock clock;
  EXPECT_NE(clock.Boot(), 0U);
  EXPECT_GE(clock.SinceBoot().time_since_epoch(), clock.Monotonic().time_since_epoch() - 1s);
}

TEST_F(DepartureFile, IsPrivateAndCutToADay) {
  {
    Turns old = Program();
    Send(old, 1500);
  }
  clock_.now += 23h;
  std::optional<Turns> turns(Program());
  Send(*turns, 10);
  clock_.now += 1h + SlidingLimit::kFirstOctet;
  std::optional<Turns> beside(Program(kFourAnHour));
  EXPECT_EQ(fs::file_size(file_), 1512 * kEntry) << "somebody has it open";
  turns.reset();
  beside.reset();
  clock_.set = -3h;
  beside.emplace(Program(kFourAnHour));
  EXPECT_EQ(fs::file_size(file_), 12 * kEntry);
  EXPECT_EQ(SendWhatMay(*beside), 4) << "the ten are an hour old";
  EXPECT_EQ(fs::status(file_).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_TRUE(told_.empty());
}

}  // namespace
}  // namespace quillcast::run
