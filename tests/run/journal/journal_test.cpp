// What the journal keeps of a mailing and its runs, and how it tells it.
#include <algorithm>
#include <array>
#include <functional>

#include "run/journal/journal_fixture.h"

namespace quillcast::run {
namespace {

using Positions = std::vector<std::int64_t>;

TEST_F(JournalTest, FreezesTheRowsOfARangeWithTheirPlaces) {
  std::vector<std::string> entries;
  for (std::int64_t i = 1; i <= 400; ++i) entries.push_back(test::FakeRows::AddressAt(i));
  test::FakeRows rows(entries);
  const auto journal = OpenJournal();
  const auto run = Take(journal->Begin({"S", "G", "i", {}}, rows, recipients::PartialRange{101, 290}, {"base"}));
  EXPECT_EQ(run->size(), 190);
  const auto given = Given(*run);
  EXPECT_EQ(given.size(), 190U);
  EXPECT_EQ(given.front(), 101);
  EXPECT_EQ(given.back(), 290);
  EXPECT_EQ(RowAt(*journal, 150).position, 250);
  EXPECT_EQ(RowAt(*journal, 150).recipient.email(), "r250@example.org");
}

TEST_F(JournalTest, KeepsEveryFieldAsItWas) {
  class OneRow final : public recipients::RowSource {
   public:
    explicit OneRow(recipients::Recipient row) : row_(std::move(row)) {}
    Result<bool> Next(recipients::Recipient& recipient) override {
      recipient = row_;
      return std::exchange(left_, false);
    }

   private:
    recipients::Recipient row_;
    bool left_ = true;
  };
  recipients::Recipient row;
  for (std::size_t i = 0; i < recipients::kFieldCount; ++i) row.values.at(i) = std::string(i * i * i * 20, 'a' + i);
  row.values[2] = std::string("\0\x80\xFF", 3) + "Zoë";
  const auto journal = OpenJournal();
  OneRow rows(row);
  const auto run = Take(journal->Begin({"S", "G", "i", {}}, rows, {}, {"base"}));
  EXPECT_EQ(RowAt(*journal, 1).recipient, row);
  recipients::Recipient given;
  std::int64_t position = 0;
  ASSERT_TRUE(Take(run->Next(given, position)));
  EXPECT_EQ(given, row);
  EXPECT_FALSE(Take(run->Next(given, position)));
}

TEST_F(JournalTest, LeavesNothingOfAMailingThatFailsToBegin) {
  const auto journal = OpenJournal();
  for (const int unreadable : {1, 2, 128, 129, 300}) {
    test::FakeRows rows(299);
    rows.unreadable = unreadable;
    const auto run = journal->Begin({"S", "G", "i", {}}, rows, {}, {"base"});
    ASSERT_FALSE(run) << unreadable;
    EXPECT_EQ(run.error().what.InEnglish(), "The store cannot be read.");
    EXPECT_TRUE(Take(journal->List()).mailings.empty());
  }
  platform::CancelToken cancel;
  auto place = Place();
  place.patience.cancel = &cancel;
  const auto cancelled = Take(SqliteRunJournal::Open(place));
  test::FakeRows rows(100'000);
  rows.unreadable = 100'000;
  rows.before_failing = [&] { cancel.Request(); };
  EXPECT_FALSE(cancelled->Begin({"S", "G", "i", {}}, rows, {}, {"base"}));
  EXPECT_EQ(std::filesystem::file_size(root_ / "runs.db-wal"), 0U);
  EXPECT_TRUE(Take(journal->List()).mailings.empty());
  EXPECT_EQ(BeginWith(*journal, 1)->size(), 1) << "and another begins";
}

// What is told of one recipient, a letter for each: it goes out, its result is sent, deferred, failed, or that nothing
// of it was begun, Record, End. Then how it stands to who looks on, after the program has died, and after the computer
// has.
TEST_F(JournalTest, KnowsWhereARecipientIs) {
  struct Row {
    const char* told;
    char living, killed, without_power;
    int attempts;
  };
  // All are among the first, who are reserved when the run begins.
  const auto rows = {Row{"", '-', '-', 'u', 0},      {"g", '-', '-', 'u', 0},      {"gR", 'o', 'u', 'u', 1},
                     {"gRs", 'o', 'u', 'u', 1},      {"gRsR", 's', 's', 's', 1},   {"gsR", 's', 's', 's', 1},
                     {"gRn", 'o', 'u', 'u', 1},      {"gRnR", '-', '-', '-', 0},   {"gnR", '-', '-', '-', 0},
                     {"nR", '-', '-', '-', 0},       {"fR", 'f', 'f', 'f', 1},     {"gRgRsR", 's', 's', 's', 1},
                     {"gRdR", 'd', 'd', 'd', 1},     {"gRdRgR", 'o', 'u', 'u', 2}, {"gRdRgRnR", 'd', 'd', 'd', 1},
                     {"gRdRgRsR", 's', 's', 's', 2}, {"E", '-', '-', '-', 0},      {"gRE", 'u', 'u', 'u', 1},
                     {"gE", 'u', 'u', 'u', 1},       {"gRsE", 's', 's', 's', 1},   {"gRnRgRsR", 's', 's', 's', 1}};
  int number = 0;
  for (const Row& row : rows) {
    const auto folder = root_ / std::to_string(++number);
    std::filesystem::create_directories(folder);
    const auto journal = OpenJournal("monday", folder);
    auto run = BeginWith(*journal, 3);
    Given(*run);
    for (const char told : std::string_view(row.told)) {
      if (told == 'g') run->GoesOut(2);
      if (told == 's') run->Settled(2, Sent(2));
      if (told == 'd') run->Settled(2, Deferred(2));
      if (told == 'f') run->Settled(2, Failed());
      if (told == 'n') run->Settled(2, smtp::Left());
      if (told == 'R') Take(run->Record());
      if (told == 'E') Take(run->End());
    }
    EXPECT_EQ(States(*journal)[1], row.living) << row.told;
    EXPECT_EQ(RowAt(*journal, 2).attempts, row.attempts) << row.told;
    for (const auto& [boot, state] : {std::pair{"monday", row.killed}, {"tuesday", row.without_power}}) {
      CopyFiles(folder, root_ / "copy");
      const auto later = OpenJournal(boot, root_ / "copy");
      EXPECT_EQ(States(*later)[1], state) << row.told << " " << boot;
      const auto counts = Take(later->List()).mailings.front().counts;
      EXPECT_EQ(counts.at(kLetters.find(state)) > 0, true) << row.told;
      const auto again = later->GoOn(1, RunKind::kResume, kAll, {"again"});
      EXPECT_EQ(States(*later)[1], state) << row.told << ": the same once it is written";
    }
  }
}

TEST_F(JournalTest, TellsWhatTheServerSaidAndWhen) {
  const auto journal = OpenJournal();
  const auto run = BeginWith(*journal, 300);
  for (const std::int64_t position : Given(*run)) {
    run->GoesOut(position);
    run->Settled(position, position % 3 == 0 ? Deferred(position) : position == 200 ? Refused() : Sent(position));
    if (position % 7 == 0) Take(run->Record());
    if (position == 150) clock_.now += std::chrono::hours(1);
  }
  Take(run->Record());
  std::int64_t seen = 0;
  Take(journal->Visit(1, kAll, 0, [&](const JournalRow& row) -> Result<bool> {
    const std::int64_t position = ++seen;
    const smtp::Outcome told = position % 3 == 0 ? Deferred(position) : position == 200 ? Refused() : Sent(position);
    EXPECT_EQ(row.position, position);
    EXPECT_EQ(row.recipient.email(), test::FakeRows::AddressAt(position));
    EXPECT_EQ(row.reply.code, told.reply.code);
    EXPECT_EQ(row.reply.enhanced, told.reply.enhanced);
    EXPECT_EQ(row.reply.text, told.reply.text);
    EXPECT_EQ(row.reason, told.reason);
    EXPECT_EQ(row.code, static_cast<std::int32_t>(told.code));
    EXPECT_EQ(row.run, run->id());
    EXPECT_EQ(row.when,
              std::chrono::floor<std::chrono::seconds>(clock_.now) - std::chrono::hours(position <= 150 ? 1 : 0));
    return true;
  }));
  EXPECT_EQ(seen, 300);
  // Long replies are cut, at a whole character.
  auto long_reply = Sent(1);
  long_reply.reply.text = "x";
  for (int i = 0; i < 3000; ++i) long_reply.reply.text += "é";
  run->Settled(1, long_reply);
  Take(run->Record());
  EXPECT_EQ(RowAt(*journal, 1).reply.text.size(), 4095U);
  EXPECT_EQ(RowAt(*journal, 2).reply.text, Sent(2).reply.text);
}

TEST_F(JournalTest, VisitsFromAPlaceOnUntilItIsEnough) {
  const auto journal = OpenJournal();
  const auto run = BeginWith(*journal, 500);
  for (const std::int64_t position : Given(*run, 400)) {
    run->GoesOut(position);
    run->Settled(position, position % 100 == 50 ? Deferred(position) : Sent(position));
  }
  Take(run->Record());
  struct Row {
    StateSet states;
    std::int64_t skip;
    std::size_t most;
    Positions expected;
  };
  for (const Row& row :
       {Row{SetOf({ResultState::kDeferred}), 0, 9, {50, 150, 250, 350}},
        Row{SetOf({ResultState::kDeferred}), 1, 2, {150, 250}}, Row{SetOf({ResultState::kDeferred}), 4, 9, {}},
        Row{SetOf({ResultState::kSent}), 300, 3, {304, 305, 306}},
        Row{SetOf({ResultState::kNotTried, ResultState::kDeferred}), 3, 3, {350, 401, 402}}, Row{{}, 0, 9, {}}}) {
    Positions visited;
    Take(journal->Visit(1, row.states, row.skip, [&](const JournalRow& each) -> Result<bool> {
      visited.push_back(each.position);
      return visited.size() < row.most;
    }));
    EXPECT_EQ(visited, row.expected);
  }
  const auto failed = journal->Visit(1, kAll, 0, [](const JournalRow&) -> Result<bool> {
    return Error{Failure::kBadData, "The list is damaged.", "Mend it."};
  });
  ASSERT_FALSE(failed);
  EXPECT_EQ(Describe(failed.error()), "The list is damaged.\nMend it.") << "it is not the journal that is";
}

// A mailing of eight that was cut off: goes on with some of them, and what they are then stands beside the others.
TEST_F(JournalTest, GoesOnWithThoseOfItsStates) {
  struct Row {
    RunKind kind;
    RecipientChoice choice;
    Positions positions;
  };
  int number = 0;
  for (const Row& row :
       {Row{RunKind::kResume, kLeft, {6, 8}},
        Row{RunKind::kResume, SetOf({ResultState::kNotTried, ResultState::kUnknown}), {5, 6, 8}},
        Row{RunKind::kRetry, SetOf({ResultState::kDeferred}), {3, 7}},
        Row{RunKind::kRetry, SetOf({ResultState::kRefused, ResultState::kFailed}), {2, 4}},
        Row{RunKind::kRetry, {kAll, {"5.1"}}, {2}}, Row{RunKind::kRetry, {kAll, {"4.2.0", "550"}}, {2, 3, 7}},
        Row{RunKind::kRetry, {SetOf({ResultState::kRefused, ResultState::kFailed}), {"5", "4"}}, {2}},
        Row{RunKind::kRetry, kAll, {1, 2, 3, 4, 5, 6, 7, 8}}}) {
    const auto folder = root_ / std::to_string(++number);
    std::filesystem::create_directories(folder);
    const auto journal = OpenJournal("monday", folder);
    auto first = BeginWith(*journal, 8);
    Given(*first);
    for (const std::int64_t position : {1, 3, 5, 7}) first->GoesOut(position);
    first->Settled(1, Sent(1));
    first->Settled(2, Refused());
    first->Settled(3, Deferred(3));
    first->Settled(4, Failed());
    first->Settled(7, Deferred(7));
    Take(first->Record());
    const RunId first_id = first->id();
    first.reset();
    EXPECT_EQ(States(*journal), "srdfu-d-");
    EXPECT_EQ(Take(journal->Count(1, row.choice)), std::ssize(row.positions));
    auto run = Take(journal->GoOn(1, row.kind, row.choice, {"second"}));
    EXPECT_GT(run->id(), first_id);
    EXPECT_EQ(run->size(), std::ssize(row.positions));
    EXPECT_EQ(Given(*run), row.positions);
    // A loss of power now leaves those in doubt who are for this run, and nobody of the run before.
    std::string doubtful = "srdfu-d-";
    for (const std::int64_t position : row.positions) doubtful[position - 1] = 'u';
    CopyFiles(folder, root_ / "copy");
    EXPECT_EQ(States(*OpenJournal("tuesday", root_ / "copy")), doubtful);
    for (const std::int64_t position : row.positions) {
      run->GoesOut(position);
      Take(run->Record());
      run->Settled(position, Sent(position + 100));
    }
    Take(run->End());
    std::string expected = "srdfu-d-";
    for (const std::int64_t position : row.positions) expected[position - 1] = 's';
    EXPECT_EQ(States(*journal), expected);
    const JournalRow tried = RowAt(*journal, row.positions.front());
    EXPECT_EQ(tried.run, run->id());
    EXPECT_EQ(tried.reply.text, Sent(row.positions.front() + 100).reply.text);
    const MailingEntry entry = Take(journal->Find(run->id()));
    ASSERT_EQ(entry.runs.size(), 2U);
    EXPECT_EQ(entry.runs[0].standing, RunStanding::kCutOff);
    EXPECT_EQ(entry.runs[1].standing, RunStanding::kEnded);
    EXPECT_EQ(entry.runs[1].kind, row.kind);
    EXPECT_EQ(entry.runs[1].recipients, std::ssize(row.positions));
    EXPECT_EQ(entry.runs[1].history, "second");
    EXPECT_EQ(entry.counts.at(0), std::ranges::count(expected, 's'));
  }
}

// A run that ended while some waited for another try, by a kill or in its own way.
TEST_F(JournalTest, KnowsWhoWasToBeTriedAgainAndHowOftenItWas) {
  for (const bool is_killed : {true, false}) {
    SCOPED_TRACE(is_killed);
    const auto folder = root_ / (is_killed ? "killed" : "ended");
    std::filesystem::create_directories(folder);
    const auto journal = OpenJournal("monday", folder);
    auto run = BeginWith(*journal, 6);
    Given(*run, 5);
    for (const std::int64_t position : {1, 2, 3, 4, 5}) run->GoesOut(position);
    run->Settled(1, Sent(1));
    for (const std::int64_t position : {2, 3, 4, 5}) run->Settled(position, Deferred(position));
    for (const auto& [position, tries] : {std::pair{2, 1}, {3, 14}, {4, 1}}) run->IsTriedAgain(position, tries);
    run->GoesOut(4);  // for another try, which the server did not wait for
    run->Settled(4, smtp::Left());
    run->GoesOut(2);
    run->Settled(2, Deferred(2));
    run->IsTriedAgain(2, 2);
    Take(run->Record());
    if (!is_killed) Take(run->End());
    CopyFiles(folder, root_ / "copy");
    run.reset();
    RecipientChoice left(kLeft);
    left.tried_again = true;
    const MailingEntry entry = Take(journal->List()).mailings.front();
    EXPECT_EQ(entry.tried_again, 3);
    EXPECT_EQ(Take(journal->Count(1, left)), 4);
    EXPECT_TRUE(RowAt(*journal, 2).again);
    EXPECT_FALSE(RowAt(*journal, 5).again);
    EXPECT_EQ(Take(OpenJournal("tuesday", root_ / "copy")->List()).mailings.front().tried_again, 3)
        << "they were settled";

    run = Take(journal->GoOn(1, RunKind::kResume, left, {"second", "slowly"}));
    EXPECT_EQ(run->size(), 4);
    std::map<std::int64_t, int> tries;
    recipients::Recipient row;
    for (std::int64_t position = 0; Take(run->Next(row, position));) tries[position] = run->before().tries;
    EXPECT_EQ(tries, (std::map<std::int64_t, int>{{2, 2}, {3, 14}, {4, 1}, {6, 0}}));
    run->GoesOut(2);
    Take(run->Record());
    EXPECT_EQ(Take(journal->List()).mailings.front().tried_again, 2) << "it is in flight";
    run->Settled(2, Deferred(2));  // for the last time
    Take(run->End());
    EXPECT_EQ(Take(journal->List()).mailings.front().tried_again, 2);
    EXPECT_EQ(Take(journal->Find(1)).runs.back().pace, "slowly");

    run = Take(journal->GoOn(1, RunKind::kRetry, SetOf({ResultState::kDeferred}), {"third"}));
    EXPECT_EQ(Given(*run), (Positions{2, 3, 4, 5}));
    EXPECT_EQ(run->before().tries, 0) << "that begins anew";
    EXPECT_EQ(run->before().state, ResultState::kDeferred);
  }
}

TEST_F(JournalTest, TakesOverAFileOfTheFirstLayout) {
  auto run = BeginWith(*OpenJournal(), 3);
  Given(*run, 2);
  run->GoesOut(1);
  run->Settled(1, Deferred(1));
  Take(run->End());
  run.reset();
  Take(Take(platform::Database::Open(Place().file, platform::OpenMode::kCreate))
           .Execute("ALTER TABLE runs DROP COLUMN round; ALTER TABLE runs DROP COLUMN pace; PRAGMA user_version = 1; "
                    "UPDATE mailings SET counts = substr(counts, 1, length(counts) - 1)"));
  const auto journal = OpenJournal();
  const MailingEntry entry = Take(journal->List()).mailings.front();
  EXPECT_EQ(entry.counts, (StateCounts{0, 0, 1, 0, 0, 2, 0}));
  EXPECT_EQ(entry.tried_again, 0);
  EXPECT_EQ(entry.runs.front().pace, "");
  Take(Take(journal->GoOn(1, RunKind::kResume, kLeft, {"second", "slowly"}))->End());
  EXPECT_EQ(Take(journal->Find(1)).runs.back().pace, "slowly");
}

TEST_F(JournalTest, SaysWhyItIsUnknownWhatBecameOfSomebody) {
  const auto journal = OpenJournal();
  auto run = BeginWith(*journal, 3);
  Given(*run);
  run->GoesOut(2);
  Take(run->Record());
  run.reset();
  constexpr const char* kDied = "The program ended before the server's answer came.";
  constexpr const char* kPower = "The computer stopped before it was kept what became of this message.";
  CopyFiles(root_.path(), root_ / "copy");
  EXPECT_EQ(RowAt(*journal, 2).reason, kDied);
  EXPECT_EQ(RowAt(*journal, 1).reason, "");
  const auto later = OpenJournal("tuesday", root_ / "copy");
  EXPECT_EQ(RowAt(*later, 2).reason, kPower);
  EXPECT_EQ(RowAt(*later, 1).reason, kPower) << "it was reserved";
  run = Take(journal->GoOn(1, RunKind::kResume, kLeft, {"second"}));
  EXPECT_EQ(RowAt(*journal, 2).reason, kDied);
  EXPECT_EQ(RowAt(*journal, 2).when, std::chrono::floor<std::chrono::seconds>(clock_.now)) << "when it went out";
}

// As where a connection is lost and the message goes over another one.
TEST_F(JournalTest, AMessageThatGoesOutTwiceIsOneAttempt) {
  const auto journal = OpenJournal();
  auto run = BeginWith(*journal, 1);
  Given(*run);
  run->GoesOut(1);
  run->GoesOut(1);
  Take(run->Record());
  run.reset();
  EXPECT_EQ(RowAt(*journal, 1).attempts, 1);
}

TEST_F(JournalTest, ListsTheNewestMailingFirst) {
  const auto journal = OpenJournal();
  EXPECT_TRUE(Take(journal->List()).mailings.empty());
  const auto first = BeginWith(*journal, 5);
  first->GoesOut(Given(*first, 1).front());
  Take(first->Record());
  clock_.now -= std::chrono::hours(24);  // somebody set it back
  auto second = BeginWith(*journal, 200);
  Take(second->End());
  auto third = BeginWith(*journal, 0);
  third.reset();
  const auto list = Take(journal->List()).mailings;
  ASSERT_EQ(list.size(), 3U);
  EXPECT_EQ(list[0].runs[0].standing, RunStanding::kCutOff);
  EXPECT_EQ(list[0].recipients, 0);
  EXPECT_EQ(list[1].runs[0].standing, RunStanding::kEnded);
  EXPECT_EQ(list[1].counts, (StateCounts{0, 0, 0, 0, 0, 200, 0}));
  EXPECT_EQ(list[2].runs[0].standing, RunStanding::kGoesOn);
  EXPECT_EQ(list[2].counts, (StateCounts{0, 0, 0, 0, 0, 4, 1}));
  EXPECT_EQ(list[2].subject + list[2].group + list[2].runs[0].history, "SubjectGroupbase");
  EXPECT_EQ(Take(journal->Find(list[1].runs[0].id)).id, list[1].id);
  second = Take(journal->GoOn(list[1].id, RunKind::kResume, kLeft, {"again"}));
  second->GoesOut(Given(*second, 1).front());
  Take(second->Record());
  EXPECT_EQ(Take(journal->Find(second->id())).counts, (StateCounts{0, 0, 0, 0, 0, 199, 1})) << "no longer as it ended";
  EXPECT_EQ(Take(journal->Inputs(list[1].id)).inputs, "inputs");
}

TEST_F(JournalTest, RefusesWhatIsNotThere) {
  const auto journal = OpenJournal();
  const auto run = BeginWith(*journal, 2);
  const auto enough = [](const JournalRow&) -> Result<bool> { return true; };
  for (const auto& [name, failure] : std::initializer_list<std::pair<const char*, Failure>>{
           {"find", journal->Find(77).error().failure},
           {"inputs", journal->Inputs(77).error().failure},
           {"visit", journal->Visit(77, kAll, 0, enough).error().failure},
           {"forget", journal->Forget(77).error().failure},
           {"open", journal->Open(KeptFile{"a", "00"}).error().failure},
           {"go on", journal->GoOn(77, RunKind::kResume, kAll, {""}).error().failure}}) {
    EXPECT_EQ(failure, Failure::kNoInput) << name;
  }
  Take(run->End());
  EXPECT_EQ(journal->GoOn(1, RunKind::kRetry, SetOf({ResultState::kSent}), {""}).error().failure, Failure::kNoInput);
  EXPECT_EQ(Take(journal->List()).mailings.front().runs.size(), 1U) << "nothing was begun";
}

}  // namespace
}  // namespace quillcast::run
