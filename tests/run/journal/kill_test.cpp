// A program that is killed at any moment: what it had told is known, and who was in flight is named.
#include "run/journal/each_write.h"
#include "run/journal/sending.h"

namespace quillcast::run {
namespace {

class KillTest : public JournalTest {
 protected:
  // How the recipients stand for whoever finds the files as they are now; "none" where there is no mailing.
  std::string Found() {
    CopyFiles(root_.path(), root_ / "copy");
    const auto journal = OpenJournal("monday", root_ / "copy");
    return Take(journal->List()).empty() ? "none" : States(*journal);
  }
};

TEST_F(KillTest, AtAnyWriteOfARun) {
  std::mt19937 random(22);
  std::function<void()> look = [&] { EXPECT_EQ(Found(), "none"); };
  int looks = 0;
  const test::EachWrite killed([&] {
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
  EXPECT_GT(looks, 150);
  EXPECT_EQ(states.find('o'), std::string::npos);
  EXPECT_EQ(Found(), states);
}

// Killed again and again, by death or by loss of power, until nobody is left: nobody has got it twice, and everybody
// has got it, or was told of, or is unknown.
TEST_F(KillTest, AgainAndAgainUntilNobodyIsLeft) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    std::mt19937 random(seed);
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
