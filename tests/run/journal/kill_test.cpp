// A program that is killed at any moment: what it had told is known, and who was in flight is named.
#include <zlib.h>

#include <array>
#include <cstring>
#include <fstream>
#include <future>

#include "run/journal/each_write.h"
#include "run/journal/sending.h"
#include "support/full_disk.h"
#include "support/room_on_disk.h"

namespace quillcast::run {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds kAtOnce{0};
constexpr auto kSeldom = std::chrono::hours(1);
constexpr std::size_t kNothingBehind = 12;  // octets of a short file that say so

class KillTest : public JournalTest {
 protected:
  // How the recipients stand for whoever finds the files as they are now; "none" where there is no mailing.
  std::string Found() {
    is_looking_ = true;
    CopyFiles(root_.path(), root_ / "copy");
    const auto journal = OpenJournal("monday", root_ / "copy");
    const std::string found = Take(journal->List()).mailings.empty() ? "none" : States(*journal);
    is_looking_ = false;
    return found;
  }
  void KillAtAnyWrite();
  // A frame of the short file, as it would stand there.
  static std::string FrameOf(std::string_view told, std::uint32_t round) {
    const auto check = static_cast<std::uint32_t>(
        ::crc32(round, reinterpret_cast<const Bytef*>(told.data()), static_cast<uInt>(told.size())));
    const std::array<std::uint32_t, 3> head{static_cast<std::uint32_t>(told.size()), check, round};
    return std::string(reinterpret_cast<const char*>(head.data()), sizeof(head)) + std::string(told);
  }

  bool is_looking_ = false;
};

void KillTest::KillAtAnyWrite() {
  std::mt19937 random(22);
  std::function<void()> look = [&] { EXPECT_EQ(Found(), "none"); };
  int looks = 0;
  const test::EachWrite killed([&] {
    if (is_looking_) return;
    ++looks;
    look();
  });
  const auto journal = OpenJournal();
  auto run = BeginWith(*journal, 100);
  std::string states(100, '-');
  for (const auto& [kind, among] :
       {std::pair{RunKind::kFirst, kLeft}, {RunKind::kRetry, SetOf({ResultState::kDeferred})}}) {
    if (kind == RunKind::kRetry) {
      look = [&] { EXPECT_EQ(Found(), states); };
      run = Take(journal->GoOn(1, kind, among, {"again"}));
    }
    Sending sending(*run, states, random, 12);
    look = [&] {
      const std::string found = Found();
      EXPECT_TRUE(found == sending.Before() || found == sending.After()) << found << "\n" << sending.After();
    };
    while (sending.Turn()) EXPECT_EQ(Found(), sending.After());
    states = sending.After();
    Take(run->End());
    look = [&] { EXPECT_EQ(Found(), states); };
    run.reset();
  }
  EXPECT_GT(looks, between_commits_ == kAtOnce ? 150 : 40);
  EXPECT_EQ(states.find('o'), std::string::npos);
  EXPECT_EQ(Found(), states);
}

TEST_F(KillTest, AtAnyWriteOfARun) { KillAtAnyWrite(); }

TEST_F(KillTest, AtAnyWriteOfARunThatSeldomCommits) {
  between_commits_ = kSeldom;
  KillAtAnyWrite();
}

// What its last Records told, torn, damaged, gone, or of somebody else: who may be out is in doubt then.
TEST_F(KillTest, TakesOfWhatWasToldLastWhatIsWhole) {
  between_commits_ = kSeldom;
  const auto journal = OpenJournal();
  auto run = BeginWith(*journal, 40);
  const fs::path recent = root_ / "runs.db-recent-1";
  std::vector<std::string> told = {std::string(40, '-')};
  const std::string begun = Take(platform::ReadFile(recent, 1 << 20));
  std::vector<std::uintmax_t> ends = {begun.size() - 2 * kNothingBehind};
  std::string states = told[0];
  for (const std::int64_t position : Given(*run, 20)) {
    run->GoesOut(position);
    states[position - 1] = 'u';
    if (position > 3) run->Settled(position - 3, position % 5 == 0 ? Deferred(position - 3) : Sent(position - 3));
    if (position > 3) states[position - 4] = position % 5 == 0 ? 'd' : 's';
    Take(run->Record());
    told.push_back(states);
    ends.push_back(fs::file_size(recent) - kNothingBehind);
  }
  const std::string octets = Take(platform::ReadFile(recent, 1 << 20));
  const auto found_with = [&](const std::string& left) {
    CopyFiles(root_.path(), root_ / "torn");
    std::ofstream(root_ / "torn/runs.db-recent-1", std::ios::binary) << left;
    const auto found = OpenJournal("monday", root_ / "torn");
    Take(found->List());
    EXPECT_FALSE(fs::exists(root_ / "torn/runs.db-recent-1")) << "what is taken is not taken again";
    return States(*found);
  };
  const auto in_doubt = [](std::string those) {
    std::ranges::replace(those, '-', 'u');
    return those;
  };
  for (std::size_t record = 1; record < ends.size(); ++record) {
    EXPECT_EQ(found_with(octets.substr(0, ends[record])), in_doubt(told[record]));
    EXPECT_EQ(found_with(octets.substr(0, ends[record] - 1)), in_doubt(told[record - 1]));
    std::string damaged = octets;
    damaged[ends[record] - 2] ^= 0x10;
    EXPECT_EQ(found_with(damaged), in_doubt(told[record - 1]));
  }
  EXPECT_EQ(found_with(begun), told[0]);
  for (const std::size_t zeros : {std::size_t{0}, kNothingBehind, octets.size()}) {
    EXPECT_EQ(found_with(octets.substr(0, ends[0]) + std::string(zeros, '\0')), in_doubt(told[0])) << zeros;
  }
  std::uint32_t round = 0;
  std::memcpy(&round, octets.data() + ends[0] + 2 * sizeof(round), sizeof(round));
  const std::string record = octets.substr(ends[0] + kNothingBehind + 2, kRecordSize);
  // Nothing that a run tells, one who is not there, cut behind its number, of no known kind, and of an earlier round.
  for (const std::string& nonsense : {FrameOf("x", round), FrameOf("r\x28" + record, round), FrameOf("r\x05", round),
                                      FrameOf("x\x05", round), FrameOf("", round - 1)}) {
    EXPECT_EQ(found_with(octets.substr(0, ends.back()) + nonsense + std::string(kNothingBehind, '\0')),
              in_doubt(told.back()));
  }
  EXPECT_EQ(found_with("quillcast" + octets), in_doubt(told[0])) << "of another run";
  EXPECT_EQ(found_with(""), in_doubt(told[0]));
  std::string large = octets;
  large.resize(65 << 20);
  EXPECT_EQ(found_with(large), in_doubt(told[0])) << "nobody's";
  const auto torn = OpenJournal("monday", root_ / "torn");
  constexpr const char* kLost = "What the program last kept of this message is lost.";
  EXPECT_EQ(RowAt(*torn, 1).reason, kLost);
  const auto resumed = Take(torn->GoOn(1, RunKind::kResume, SetOf({ResultState::kUnknown}), {"second"}));
  EXPECT_EQ(RowAt(*torn, 1).reason, kLost) << "as well once it is written";
  EXPECT_EQ(Found(), told.back());
  EXPECT_EQ(RowAt(*OpenJournal("monday", root_ / "copy"), 1).reply.text, Sent(1).reply.text);
}

// Whose journal does not say which round of the short file follows its last commit: it may be an earlier one.
TEST_F(KillTest, LeavesInDoubtWhomARunOfAnEarlierLayoutToldLast) {
  between_commits_ = kSeldom;
  const auto journal = OpenJournal();
  auto run = BeginWith(*journal, 3);
  std::string whose = Take(platform::ReadFile(root_ / "runs.db-recent-1", 1 << 20));
  whose.erase(whose.find('\n') + 1);
  run->GoesOut(Given(*run, 1).front());
  Take(run->Record());
  for (const std::uint32_t round : {1, 2, 3}) {
    CopyFiles(root_.path(), root_ / "copy");
    std::ofstream(root_ / "copy/runs.db-recent-1", std::ios::binary)
        << whose << FrameOf("", round) << std::string(kNothingBehind, '\0');
    Take(Take(platform::Database::Open(root_ / "copy/runs.db", platform::OpenMode::kReadWrite))
             .Execute("ALTER TABLE runs DROP COLUMN round; PRAGMA user_version = 2"));
    EXPECT_EQ(States(*OpenJournal("monday", root_ / "copy")), "uuu") << round;
  }
}

// Nobody has looked at it before.
TEST_F(KillTest, AResumeTakesInItselfWhatWasToldLast) {
  between_commits_ = kSeldom;
  const auto journal = OpenJournal();
  auto run = BeginWith(*journal, 4);
  Given(*run);
  run->GoesOut(1);
  run->Settled(1, Sent(1));
  run->GoesOut(2);
  Take(run->Record());
  CopyFiles(root_.path(), root_ / "copy");
  const auto found = OpenJournal("monday", root_ / "copy");
  const auto resumed = Take(found->GoOn(1, RunKind::kResume, kLeft, {"second"}));
  EXPECT_EQ(Given(*resumed), (std::vector<std::int64_t>{3, 4}));
  EXPECT_EQ(States(*found), "su--");
}

TEST_F(KillTest, WhatWasToldLastOutlivesADiskThatFails) {
  between_commits_ = kSeldom;
  const auto journal = OpenJournal();
  auto run = BeginWith(*journal, 3);
  run->GoesOut(Given(*run).front());
  Take(run->Record());
  int good_writes = 0;
  for (bool has_failed = true; has_failed; ++good_writes) {
    CopyFiles(root_.path(), root_ / "copy");
    const auto found = OpenJournal("monday", root_ / "copy");
    {
      const test::FullDisk disk(test::FullDisk::Kind::kBroken, good_writes);
      IgnoreErrors(found->List());
      has_failed = test::FullDisk::has_failed();
    }
    EXPECT_EQ(States(*found), "u--") << good_writes;
  }
  EXPECT_GT(good_writes, 2);
}

TEST_F(KillTest, ShowsWhatWasToldToWhoeverLooksMeanwhile) {
  between_commits_ = std::chrono::milliseconds(5);
  const auto journal = OpenJournal();
  auto run = BeginWith(*journal, 3);
  Given(*run);
  const auto go = [&](std::int64_t position) {
    run->GoesOut(position);
    Take(run->Record());
  };
  go(1);
  EXPECT_EQ(States(*journal), "---") << "a commit has only just been made";
  run->Show();
  EXPECT_EQ(States(*journal), "o--");
  clock_.monotonic += std::chrono::milliseconds(5);
  go(2);
  EXPECT_EQ(States(*journal), "oo-");
  EXPECT_EQ(Found(), "uu-");
  go(3);
  EXPECT_EQ(Found(), "uuu");
  Take(run->End());
  EXPECT_FALSE(fs::exists(root_ / "runs.db-recent-1"));
}

TEST_F(KillTest, WhoeverLooksAtOnceSeesTheSame) {
  between_commits_ = kSeldom;
  const auto journal = OpenJournal();
  auto run = BeginWith(*journal, 300);
  for (const std::int64_t position : Given(*run, 60)) {
    run->GoesOut(position);
    if (position % 2 == 0) run->Settled(position, Sent(position));
    Take(run->Record());
  }
  const std::string states = Found();
  for (int round = 0; round < 30; ++round) {
    CopyFiles(root_.path(), root_ / "copy");
    std::vector<std::future<std::string>> looks;
    for (int n = 0; n < 8; ++n) {
      looks.push_back(std::async(std::launch::async, [&] {
        const auto found = OpenJournal("monday", root_ / "copy");
        const auto standing = Take(found->List()).mailings.front().runs.back().standing;
        return (standing == RunStanding::kCutOff ? "" : "in hand: ") + States(*found);
      }));
    }
    for (auto& look : looks) EXPECT_EQ(look.get(), states);
  }
}

// What stands behind what was told since the last commit, at the very place where more would.
TEST_F(KillTest, TakesNothingOfBeforeTheLastCommit) {
  between_commits_ = kSeldom;
  const auto journal = OpenJournal();
  auto run = BeginWith(*journal, 3);
  for (const std::int64_t position : Given(*run)) {
    run->GoesOut(position);
    Take(run->Record());
  }
  const auto at = root_ / "runs.db-recent-1";
  const std::string earlier = Take(platform::ReadFile(at, 1 << 20));
  run->Show();
  EXPECT_EQ(Found(), "uuu");
  run->Settled(2, smtp::Left());
  Take(run->Record());
  EXPECT_EQ(Found(), "u-u");
  run->Show();
  EXPECT_EQ(Found(), "u-u");
  std::ofstream(at, std::ios::binary) << earlier;
  EXPECT_EQ(Found(), "u-u") << "which has what was told up to two commits ago";
}

TEST_F(KillTest, OneMailingThatIsDamagedStopsNoOther) {
  between_commits_ = kSeldom;
  const auto journal = OpenJournal();
  auto run = BeginWith(*journal, 3);
  run->GoesOut(Given(*run, 1).front());
  Take(run->Record());
  run.reset();
  Take(BeginWith(*journal, 2)->End());
  Take(Take(platform::Database::Open(Place().file, platform::OpenMode::kCreate))
           .Execute(("DELETE FROM states WHERE id < " + std::to_string(BlockKey(2, 0))).c_str()));
  EXPECT_FALSE(journal->Count(1, kAll));
  EXPECT_EQ(Take(journal->Count(2, kAll)), 2);
  Take(journal->Forget(2));
  EXPECT_TRUE(fs::exists(root_ / "runs.db-recent-1")) << "it is none the less what was told last";
}

TEST_F(KillTest, NothingBeginsWhereWhatIsToldCouldBeLost) {
  const auto journal = OpenJournal();
  const fs::path recent = root_ / "runs.db-recent-1";
  fs::create_directories(recent / "in the way");
  test::FakeRows rows(2);
  const auto run = journal->Begin({"Subject", "Group", "inputs", {}}, rows, {}, {"base"});
  ASSERT_FALSE(run);
  EXPECT_EQ(Describe(run.error()),
            "Cannot create " + recent.string() + ": File exists.\nMove away what has that name, and try again.");
  EXPECT_TRUE(Take(journal->List()).mailings.empty());
  fs::remove_all(recent);
  EXPECT_EQ(BeginWith(*journal, 2)->size(), 2);
}

// What was told is longer than what is committed.
TEST_F(KillTest, CommitsAtOnceWhatCannotBeToldOtherwise) {
  between_commits_ = kSeldom;
  const auto journal = OpenJournal();
  auto run = BeginWith(*journal, 3);
  const fs::path recent = root_ / "runs.db-recent-1";
  for (int tries = 0; fs::file_size(recent) < 2 * fs::file_size(root_ / "runs.db-wal"); ++tries) {
    run->IsTriedAgain(3, tries % 2);
    Take(run->Record());
  }
  run->GoesOut(Given(*run, 1).front());
  {
    const test::RoomOnDisk full(fs::file_size(recent));
    Take(run->Record());
  }
  EXPECT_EQ(States(*journal), "o--");
  EXPECT_EQ(Found(), "u--");
}

TEST_F(KillTest, TellsLaterWhatCouldNotBeTold) {
  between_commits_ = kSeldom;
  const auto journal = OpenJournal();
  auto run = BeginWith(*journal, 3);
  Given(*run);
  run->GoesOut(1);
  {
    const test::RoomOnDisk none(0);
    EXPECT_FALSE(run->Record());
    run->Show();
  }
  run->GoesOut(2);
  Take(run->Record());
  EXPECT_EQ(States(*journal), "---") << "nothing was committed";
  EXPECT_EQ(Found(), "uu-");
}

TEST_F(KillTest, WhatTheDiskTookInPartWasNotTold) {
  between_commits_ = kSeldom;
  const auto journal = OpenJournal();
  auto run = BeginWith(*journal, 3);
  Given(*run);
  std::string found = "---";
  for (const std::int64_t position : {1, 2, 3}) {
    run->GoesOut(position);
    {
      const test::RoomOnDisk full(fs::file_size(root_ / "runs.db-recent-1") + 6);
      EXPECT_FALSE(run->Record());
    }
    EXPECT_EQ(Found(), found);
    Take(run->Record());
    found[position - 1] = 'u';
  }
  EXPECT_EQ(Found(), "uuu");
}

// Where the system does not tell which start of the computer this is, it may be another one.
TEST_F(KillTest, CountsAsALossOfPowerWhereNobodyKnows) {
  between_commits_ = kSeldom;
  const auto journal = OpenJournal("");
  auto run = BeginWith(*journal, 2);
  run->GoesOut(Given(*run, 1).front());
  Take(run->Record());
  CopyFiles(root_.path(), root_ / "copy");
  const auto found = OpenJournal("", root_ / "copy");
  EXPECT_EQ(States(*found), "uu");
  EXPECT_EQ(RowAt(*found, 2).reason, "The computer stopped before it was kept what became of this message.");
}

// Killed again and again, by death or by loss of power, until nobody is left: nobody has got it twice, and everybody
// has got it, or was told of, or is unknown.
TEST_F(KillTest, AgainAndAgainUntilNobodyIsLeft) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    std::mt19937 random(seed);
    between_commits_ = seed > 20 ? kSeldom : kAtOnce;
    std::string states(300, '-');
    std::map<std::int64_t, int> out;
    std::filesystem::path place = root_ / "a";
    std::filesystem::remove_all(place);
    std::filesystem::create_directories(place);
    int boot = 0;
    auto journal = OpenJournal("0", place);
    auto run = BeginWith(*journal, 300);
    for (int life = 0; states.find('-') != std::string::npos; ++life) {
      ASSERT_LT(life, 100);
      Sending sending(*run, states, random, 1 + random() % 30);
      for (std::size_t turns = random() % 40; turns > 0 && sending.Turn(); --turns) {
      }
      for (const auto& [position, times] : sending.out) out[position] += times;
      const std::filesystem::path next = place == root_ / "a" ? root_ / "b" : root_ / "a";
      CopyFiles(place, next);
      run.reset();
      journal.reset();
      place = next;
      if (random() % 3 == 0) ++boot;
      journal = OpenJournal(std::to_string(boot), place);
      states = States(*journal);
      if (states.find('-') == std::string::npos) break;
      run = Take(journal->GoOn(1, RunKind::kResume, kLeft, {"again"}));
      ASSERT_EQ(States(*journal), states);
    }
    run.reset();
    for (std::int64_t position = 1; position <= 300; ++position) {
      EXPECT_LE(out[position], 1) << seed;
      EXPECT_TRUE(out[position] == 1 || states[position - 1] == 'f' || states[position - 1] == 'u')
          << seed << " " << position << states[position - 1];
    }
  }
}

}  // namespace
}  // namespace quillcast::run
