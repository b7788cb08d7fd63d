// A computer that loses its power at any moment: nobody whose message may be out counts as not tried, and few are in
// doubt.
#include "run/journal/power_cut.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <thread>

#include "run/journal/sending.h"

namespace quillcast::run {
namespace {

class PowerCutTest : public JournalTest {
 protected:
  // Where the power goes now.
  void Check(const Sending& sending, const std::string& when) {
    const auto journal = OpenJournal("tuesday", root_ / "left");
    const auto list = Take(journal->List()).mailings;
    const std::string states = list.empty() ? "" : States(*journal);
    const std::string told = sending.After();
    std::int64_t doubtful = 0;
    for (std::size_t i = 0; i < told.size(); ++i) {
      const char state = i < states.size() ? states[i] : '-';
      const bool is_out = sending.out.contains(static_cast<std::int64_t>(i) + 1);
      EXPECT_FALSE(is_out && state == '-') << when << ": " << i + 1 << " would get it twice";
      EXPECT_TRUE(state == '-' || state == 'u' || state == told[i]) << when << ": " << i + 1 << " " << state << told[i];
      if (state == 'u' && told[i] != 'u') ++doubtful;
    }
    EXPECT_LE(doubtful, kDoubtful) << when;
  }
};

TEST_F(PowerCutTest, LeavesFewInDoubtAndNobodyForgotten) {
  using std::chrono::hours;  // between commits that nobody waits for
  for (const auto& [window, recipients, seldom] :
       {std::tuple{1, 700, hours(1)}, {8, 1500, hours(0)}, {100, 1500, hours(1)}}) {
    std::filesystem::remove_all(root_.path());
    std::filesystem::create_directories(root_.path() / "journal");
    std::mt19937 random(window);
    test::PowerCut power(root_ / "journal");
    auto place = Place("monday", root_ / "journal");
    place.between_commits = seldom;
    place.long_log = 60;  // it is taken into the file several times
    const auto journal = Take(SqliteRunJournal::Open(place));
    auto run = BeginWith(*journal, recipients);
    Sending sending(*run, std::string(recipients, '-'), random, window);
    for (int turn = 0; sending.Turn(); ++turn) {
      const std::string when = std::to_string(window) + " in flight, turn " + std::to_string(turn);
      if (random() % 8 != 0) continue;
      power.Leave(root_ / "left");
      Check(sending, when);
      power.LeaveTorn(root_ / "left", random);
      Check(sending, when + ", torn");
    }
    EXPECT_LT(std::filesystem::file_size(root_ / "journal/runs.db-wal"), 2'500'000U) << "it begins anew";
    Take(run->End());
    power.Leave(root_ / "left");
    EXPECT_EQ(States(*OpenJournal("tuesday", root_ / "left")), sending.After()) << "whoever ended has lost nothing";
    run.reset();
  }
}

TEST_F(PowerCutTest, WaitsForTheDiskThatReservesAndForNoOther) {
  std::filesystem::create_directories(root_ / "journal");
  test::PowerCut power(root_ / "journal");
  const auto journal = OpenJournal("monday", root_ / "journal");
  auto run = BeginWith(*journal, 1000);
  const auto first = Given(*run, kDoubtful / 2);
  for (const std::int64_t position : first) run->GoesOut(position);
  Take(run->Record());
  power.Hold();
  for (const std::int64_t position : first) run->Settled(position, Sent(position));
  Take(run->Record());  // which reserves as many again
  const auto record = [&] { Take(run->Record()); };
  const auto goes_out = [&](std::int64_t most) {
    for (const std::int64_t position : Given(*run, most)) run->GoesOut(position);
    return std::async(std::launch::async, record);
  };
  auto reserved_before = goes_out(kDoubtful / 2);
  EXPECT_EQ(reserved_before.wait_for(std::chrono::seconds(10)), std::future_status::ready) << "they were on the disk";
  power.LetGo();
  reserved_before.get();
  power.Hold();
  auto reserved_since = goes_out(kDoubtful);  // more than were on the disk by any means
  EXPECT_EQ(reserved_since.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout) << "they are out";
  power.LetGo();
  reserved_since.get();
}

TEST_F(PowerCutTest, WhoWasAnsweredIsSoonInDoubtNoLonger) {
  for (const std::int64_t recipients : {kDoubtful + 10, 4 * kDoubtful}) {
    std::filesystem::remove_all(root_.path());
    std::filesystem::create_directories(root_ / "journal");
    test::PowerCut power(root_ / "journal");
    const auto journal = OpenJournal("monday", root_ / "journal");
    auto run = BeginWith(*journal, recipients);
    const auto all = Given(*run);
    for (const std::int64_t position : all) run->GoesOut(position);
    Take(run->Record());
    power.Leave(root_ / "left");
    EXPECT_EQ(States(*OpenJournal("tuesday", root_ / "left")), std::string(all.size(), 'u')) << "all may be out";
    for (const std::int64_t position : all) run->Settled(position, Sent(position));
    Take(run->Record());
    std::int64_t doubtful = recipients;
    for (int turn = 0; turn < 500 && doubtful > 0; ++turn) {
      power.Leave(root_ / "left");
      const std::string states = States(*OpenJournal("tuesday", root_ / "left"));
      doubtful = std::ranges::count(states, 'u');
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_EQ(doubtful, 0) << "of " << recipients;
  }
}

TEST_F(PowerCutTest, NothingGoesOutWhereTheDiskDoesNotTake) {
  std::filesystem::create_directories(root_ / "journal");
  test::PowerCut power(root_ / "journal");
  const auto journal = OpenJournal("monday", root_ / "journal");
  auto run = BeginWith(*journal, 1000);
  std::mt19937 random(1);
  Sending sending(*run, std::string(1000, '-'), random, 20);
  for (int turn = 0; turn < 40; ++turn) sending.Turn();
  power.Break();
  try {
    for (int turn = 0; turn < 200; ++turn) sending.Turn();
    ADD_FAILURE() << "they went out";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string_view(error.what()).find("runs.db-wal"), std::string_view::npos) << error.what();
  }
  EXPECT_LT(sending.out.size(), 1000U);
  power.Leave(root_ / "left");
  Check(sending, "broken");
  // Nobody goes out from then on, and what becomes of the others is kept all the same.
  for (const std::int64_t position : Given(*run, 200)) run->GoesOut(position);
  const auto again = run->Record();
  ASSERT_FALSE(again);
  EXPECT_EQ(again.error().failure, Failure::kIo);
  const std::int64_t answered = sending.out.rbegin()->first;
  run->Settled(answered, Sent(answered));
  Take(run->Record());
  EXPECT_EQ(States(*journal)[answered - 1], 's');
}

}  // namespace
}  // namespace quillcast::run
