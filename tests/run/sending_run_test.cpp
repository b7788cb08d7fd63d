// A run without a store and without a server: rows and letters are the test's own. Whatever happens, and whenever,
// everybody in the range is told once, in the order of the list, and the report says the same.
#include "run/sending_run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "run/fake_sending.h"
#include "support/fake_clock.h"
#include "support/room_on_disk.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

class SendingRun : public ::testing::Test {
 protected:
  SendingRun() : template_(ALetter(), FromAda(), folder_.path(), clock_, entropy_) {}

  struct Setting {
    Fates fates;
    std::size_t window = 1;
    std::optional<PartialRange> range = {};
    std::function<void(FakeCarrier&, Told&)> change = {};
    int unreadable = 0;               // the row that cannot be read
    bool copy_fails = false;          // the rows for the run
    bool list_fails = false;          // those for who is left as well
    std::optional<rlim_t> room = {};  // octets that a file may have while it runs
    int counted_more = 0;             // when the group was chosen than there are rows
    int journal_fails_at = 0;         // the record that cannot be kept, as those behind it; 0 for none
  };

  // Runs once; what came of it is in told_, summary_, carried_ and report_.
  void Run(const Setting& setting) {
    platform::CancelToken& cancel = cancel_.emplace();
    FakeCarrier carrier(setting.fates, setting.window, cancel);
    told_ = Told();
    if (setting.change) setting.change(carrier, told_);
    const auto open = [&](bool is_copy) {
      auto source = std::make_unique<FakeRows>(AddressesOf(setting.fates));
      source->is_copy = is_copy;
      source->unreadable = setting.unreadable;
      return std::unique_ptr<recipients::RowSource>(std::move(source));
    };
    const Error no_room{Failure::kIo, "No room for a copy.", ""};
    kept_ = Kept{.states = {}, .fails_at = setting.journal_fails_at};
    const BeginRun begin = [&](const std::string&) -> Result<std::unique_ptr<JournalledRun>> {
      if (setting.copy_fails) return no_room;
      return std::unique_ptr<JournalledRun>(std::make_unique<FakeRun>(open(true), setting.range, kept_));
    };
    const OpenRows rows = [&]() -> Result<std::unique_ptr<recipients::RowSource>> {
      if (setting.list_fails) return no_room;
      return open(false);
    };
    auto entry = BeginHistoryEntry(folder_.path(), clock_, "Hello");
    ASSERT_TRUE(entry);
    const std::filesystem::path report = entry->report.path();
    entry->message = folder_ / "nowhere" / "copy.eml";  // waits for no disk, and is no reason to stop
    const std::int64_t counted = std::ssize(setting.fates) + setting.counted_more;
    carrier.is_out = [this](std::int64_t position) {
      EXPECT_EQ(kept_.states[position], ResultState::kInFlight) << "#" << position << " was out and not recorded";
    };
    const RunParts parts{template_, counted, setting.range, begin, rows, carrier, cancel, clock_};
    {
      const test::RoomOnDisk room(setting.room);
      summary_ = SendLetters(parts, std::move(*entry), told_);
    }
    carried_ = carrier.carried;
    messages_ = carrier.messages.size();
    report_ = test::ReadAll(report);
    for (const auto& file : std::filesystem::directory_iterator(folder_.path())) std::filesystem::remove(file);
    ExpectTheSameFromAll(setting);
  }

  // Report, summary and listener agree, whatever happened.
  void ExpectTheSameFromAll(const Setting& setting) {
    const std::int64_t known = std::ssize(setting.fates) + (setting.list_fails ? setting.counted_more : 0);
    auto range = setting.range.value_or(PartialRange{1, known});
    range.last = std::clamp(range.last, range.first - 1, std::max(known, range.first - 1));
    const bool all_can_be_named = setting.unreadable == 0 && !setting.list_fails;
    const auto named = all_can_be_named ? range.last : range.first - 1 + std::ssize(told_.order);
    EXPECT_EQ(told_.order, Places(range.first, named)) << "none lost, none twice, in order";
    std::int64_t failed = 0;
    for (const auto& [state, count] : told_.results) failed += state == State::kSent ? 0 : count;
    EXPECT_EQ(summary_.sent, std::ssize(told_.sent));
    EXPECT_EQ(summary_.failed, failed);
    EXPECT_EQ(summary_.sent + summary_.failed + summary_.not_tried, range.last - range.first + 1);
    EXPECT_TRUE(!all_can_be_named || summary_.not_tried == told_.not_tried);
    std::vector<std::int64_t> delivered;
    for (const auto place : carried_) {
      if (setting.fates[static_cast<std::size_t>(place - 1)] == 's') delivered.push_back(place);
    }
    std::ranges::sort(delivered);
    EXPECT_EQ(told_.sent, delivered) << "sent is who was delivered to";
    EXPECT_LE(told_.NotesOn("The history has no copy"), 1);
    EXPECT_TRUE(setting.copy_fails || told_.total == range.last - range.first + 1);
    EXPECT_EQ(std::set(carried_.begin(), carried_.end()).size(), carried_.size()) << "nobody gets two";
    if (!setting.copy_fails) ExpectTheJournalKnows(setting);
    if (setting.room || summary_.delivery == Delivery::kWritten) return;
    EXPECT_EQ(Count(report_, "Message sent successfully."), summary_.sent);
    EXPECT_EQ(Count(report_, "There was an error sending your message."), summary_.failed);
    EXPECT_TRUE(platform::Trim(report_).ends_with(
        failed > 0          ? std::to_string(failed) + " messages failed during process."
        : summary_.sent > 0 ? std::to_string(summary_.sent) + " messages sent during process."
                            : "Personal Sending process has been completed."));
  }

  // Everybody's state; where it could not be written any more, whose message is out is in flight at least.
  void ExpectTheJournalKnows(const Setting& setting) {
    EXPECT_EQ(kept_.ended, setting.journal_fails_at == 0);
    const auto state_of = [this](std::int64_t position) {
      const auto kept = kept_.states.find(position);
      return kept == kept_.states.end() ? ResultState::kNotTried : kept->second;
    };
    for (const std::int64_t position : carried_) EXPECT_NE(state_of(position), ResultState::kNotTried);
    if (!kept_.ended) return;
    for (const auto& [position, state] : told_.states) EXPECT_EQ(state_of(position), state) << "#" << position;
    for (const auto& [position, state] : kept_.states) {
      EXPECT_TRUE(state == ResultState::kNotTried || told_.states.contains(position)) << "#" << position;
    }
  }

  test::TemporaryFolder folder_;
  test::FakeClock clock_;
  test::CountingEntropy entropy_;
  message::MessageTemplate template_;
  std::optional<platform::CancelToken> cancel_;
  Told told_;
  RunSummary summary_;
  Kept kept_;
  std::vector<std::int64_t> carried_;
  std::size_t messages_ = 0;  // that were made at a time
  std::string report_;
};

// All lists of five of these fates, with so many letters in flight.
TEST_F(SendingRun, TellsEveryOrderOfResultsAndOfFailuresOfItsOwn) {
  constexpr std::string_view kFates = "srx";
  for (const std::size_t window : {1, 2, 4}) {
    for (int number = 0; number < 243; ++number) {
      Fates fates;
      for (int rest = number; fates.size() < 5; rest /= 3) fates += kFates[static_cast<std::size_t>(rest % 3)];
      SCOPED_TRACE(fates + " window " + std::to_string(window));
      Run({.fates = fates, .window = window});
      EXPECT_EQ(summary_.not_tried, 0);
      EXPECT_FALSE(summary_.stopped || summary_.cancelled);
    }
  }
}

// The others are in the journal as they come; of them no more is kept than what is to be told.
TEST_F(SendingRun, TellsNobodyAheadOfOneWhoIsSlowAndKeepsNoMessageForThat) {
  Fates fates;
  while (fates.size() < 400) fates += "ssrxu";
  const std::ptrdiff_t letters = std::ranges::count_if(fates, [](char fate) { return fate != 'x'; });
  Run({.fates = fates, .window = 4, .change = [&](FakeCarrier& carrier, Told& told) {
         carrier.first_is_slow = true;
         carrier.logs = true;
         carrier.at_step = [&](int) {
           if (std::ssize(carrier.carried) != letters - 1) return;
           EXPECT_TRUE(told.order.empty());
           EXPECT_EQ(kept_.states[2], ResultState::kSent);
           EXPECT_EQ(kept_.states[3], ResultState::kRefused);
         };
       }});
  EXPECT_EQ(std::ssize(carried_), letters);
  EXPECT_EQ(messages_, 4U);
  std::int64_t line = 0;
  for (const std::int64_t position : told_.order) {
    if (fates[static_cast<std::size_t>(position - 1)] == 'x') continue;
    const auto found = report_.find("S: " + std::to_string(position) + "\r\n");
    EXPECT_GE(static_cast<std::int64_t>(found), line);
    line = static_cast<std::int64_t>(found);
  }
}

TEST_F(SendingRun, KeepsToItsRange) {
  for (std::int64_t first = 1; first <= 5; ++first) {
    for (std::int64_t last = first; last <= 5; ++last) {
      SCOPED_TRACE(std::to_string(first) + "-" + std::to_string(last));
      Run({.fates = "sxsrs", .window = 2, .range = PartialRange{first, last}, .change = {}});
      EXPECT_EQ(summary_.not_tried, 0);
    }
  }
}

// Whatever was counted when the group was chosen; it may have changed since.
TEST_F(SendingRun, SendsToWhomTheCopyHolds) {
  struct Case {
    int counted_more;
    std::optional<PartialRange> range;
    std::vector<std::int64_t> told;
    const char* line;
    int notes;
  };
  for (const Case& c : std::initializer_list<Case>{
           {0, {}, Places(1, 5), "Sending to 5 recipients.", 0},
           {-1, {}, Places(1, 5), "Sending to 5 recipients.", 1},
           {1, {}, Places(1, 5), "Sending to 5 recipients.", 1},
           {0, PartialRange{2, 4}, Places(2, 4), "Partial Sending to 3 recipients (from #2 to #4).", 0},
           {-1, PartialRange{2, 4}, Places(2, 4), "Partial Sending to 3 recipients (from #2 to #4).", 1},
           {2, PartialRange{4, 7}, Places(4, 5), "Partial Sending to 2 recipients (from #4 to #5).", 2},
           {2, PartialRange{7, 7}, {}, "Partial Sending to 0 recipients (from #7 to #7).", 1},
       }) {
    for (const bool cancelled : {false, true}) {
      SCOPED_TRACE(std::string(c.line) + (cancelled ? " cancelled " : " ") + std::to_string(c.counted_more));
      Run({.fates = "ssxrs",
           .range = c.range,
           .change =
               [&](FakeCarrier& carrier, Told&) {
                 carrier.at_step = [this, cancelled](int step) {
                   if (cancelled && step == 3) cancel_->Request();
                 };
               },
           .counted_more = c.counted_more});
      EXPECT_EQ(told_.order, c.told);
      EXPECT_EQ(Count(report_, "started.\r\n" + std::string(c.line) + "\r\n"), 1) << report_;
      EXPECT_EQ(told_.NotesOn("The group has changed") + told_.NotesOn("The list ends with"), c.notes);
      EXPECT_EQ(summary_.not_tried > 0, cancelled && !c.told.empty());
      EXPECT_TRUE(c.told.empty() || summary_.last == c.told.back());
      EXPECT_EQ(summary_.stopped.has_value(), c.told.empty()) << "nobody is left";
    }
  }
}

TEST_F(SendingRun, EndsWhereNobodyWantsToGoOn) {
  for (const bool goes_on : {true, false}) {
    for (const std::size_t window : {1, 3}) {
      Run({.fates = "srrxrsss", .window = window, .change = [&](FakeCarrier& carrier, Told& told) {
             carrier.asks_after = 2;
             told.goes_on = goes_on;
           }});
      EXPECT_EQ(told_.asked, 1);
      EXPECT_EQ(Count(told_.report_when_asked, "There was an error sending your message."), told_.failed_when_asked);
      EXPECT_EQ(summary_.not_tried > 0, !goes_on);
      EXPECT_FALSE(summary_.cancelled);
    }
  }
}

TEST_F(SendingRun, LosesNobodyWhereverItIsCancelled) {
  struct Case {
    Stop stop;
    bool withdraws;
  };
  for (const auto& [stop, withdraws] :
       {Case{Stop::kStop, false}, Case{Stop::kStop, true}, Case{Stop::kAbandon, false}}) {
    for (const std::size_t window : {1, 3}) {
      for (int at = 1; at <= 15; ++at) {
        SCOPED_TRACE("step " + std::to_string(at));
        Run({.fates = "sxrsuxs", .window = window, .change = [&](FakeCarrier& carrier, Told&) {
               carrier.withdraws = withdraws;
               carrier.at_step = [this, at, stop](int step) {
                 if (step != at) return;
                 cancel_->Request();
                 if (stop == Stop::kAbandon) cancel_->Request();
               };
             }});
        EXPECT_EQ(summary_.cancelled, summary_.not_tried > 0);
        EXPECT_TRUE(!withdraws || Count(report_, "Error 20:") == 0) << "what was not begun was not tried";
        EXPECT_FALSE(summary_.stopped);
      }
    }
  }
}

TEST_F(SendingRun, ReportsWhyNotAllMessagesWereWrittenAndWhoWasNotTried) {
  struct Case {
    std::optional<std::size_t> full_after;
    bool cancelled;
    const char* end;
  };
  for (const Case& c : {
           Case{{},
                false,
                "The messages have been written into files. Nothing was sent.\r\n"
                "3 messages written during process.\r\n"},
           Case{1, false,
                "Not all messages have been written into files. Nothing was sent.\r\n"
                "The run stopped: The disk is full. Free some of it.\r\n"
                "1 message written during process.\r\n"
                "2 recipients were not tried (from #2 to #3); nothing was sent to them.\r\n"},
           Case{0, false,
                "No message has been written into a file. Nothing was sent.\r\n"
                "The run stopped: The disk is full. Free some of it.\r\n"
                "3 recipients were not tried (from #1 to #3); nothing was sent to them.\r\n"},
           Case{{},
                true,
                "Not all messages have been written into files. Nothing was sent.\r\n"
                "The run was cancelled.\r\n"
                "1 message written during process.\r\n"
                "2 recipients were not tried (from #2 to #3); nothing was sent to them.\r\n"},
       }) {
    Run({.fates = "sss", .change = [&](FakeCarrier& carrier, Told&) {
           carrier.kind = Delivery::kWritten;
           carrier.full_after = c.full_after;
           carrier.at_step = [this, &c](int step) {
             if (c.cancelled && step == 3) cancel_->Request();
           };
         }});
    const std::string expected =
        std::string(summary_.sent > 0 ? "Message written.\r\n\r\n" : "recipients.\r\n") + c.end;
    EXPECT_TRUE(report_.ends_with(expected)) << report_;
  }
}

// For every octet at which the disk is full: what was told is told, what is written is written whole, and at most the
// letters that were on their way go out after it.
TEST_F(SendingRun, StopsWhereverItsReportCannotBeWritten) {
  const Fates fates = "srxss";
  Run({.fates = fates, .window = 2});
  const std::string whole = report_;
  ASSERT_GT(whole.size(), 300U);
  for (rlim_t room = 0; room < whole.size(); ++room) {
    SCOPED_TRACE("room for " + std::to_string(room));
    Run({.fates = fates, .window = 2, .room = room});
    ASSERT_TRUE(summary_.stopped);
    EXPECT_EQ(summary_.stopped->failure, Failure::kIo);
    EXPECT_TRUE(whole.starts_with(report_) && (report_.empty() || report_.ends_with("\r\n")));
    EXPECT_LE(summary_.sent + summary_.failed, Count(report_, "\r\n\r\n") + 3);
    EXPECT_TRUE(!report_.empty() || carried_.empty()) << "what cannot be recorded is not begun";
  }
}

// At every record that cannot be kept: nobody's message goes out that is not in the journal as being on its way.
TEST_F(SendingRun, StopsWhereverItsJournalCannotBeWritten) {
  for (const std::size_t window : {1, 2, 4}) {
    for (int fails_at = 1; fails_at <= 7; ++fails_at) {
      SCOPED_TRACE("record " + std::to_string(fails_at) + " window " + std::to_string(window));
      Run({.fates = "srxssus", .window = window, .journal_fails_at = fails_at});
      if (kept_.ended) continue;  // it took fewer
      ASSERT_TRUE(summary_.stopped);
      EXPECT_EQ(summary_.stopped->what.InEnglish(),
                "The journal is full. The last results that are told here may be kept as unknown.");
      EXPECT_TRUE(fails_at > 1 || carried_.empty()) << "what cannot be recorded is not begun";
      EXPECT_LE(std::ssize(carried_), fails_at * static_cast<std::int64_t>(window));
    }
  }
}

TEST_F(SendingRun, StopsAtARowThatCannotBeRead) {
  for (int unreadable = 1; unreadable <= 6; ++unreadable) {
    for (const std::size_t window : {1, 3}) {
      SCOPED_TRACE(unreadable);
      Run({.fates = "ssxrs", .window = window, .unreadable = unreadable});
      const bool is_behind_the_last = unreadable == 6;
      EXPECT_EQ(std::ssize(told_.order), unreadable - 1) << "nobody knows who comes behind";
      EXPECT_EQ(summary_.stopped.has_value(), !is_behind_the_last);
      EXPECT_EQ(summary_.not_tried, 6 - unreadable);
    }
  }
}

TEST_F(SendingRun, NamesEverybodyWhereNoCopyOfTheRowsCouldBeMade) {
  for (const bool list_fails : {false, true}) {
    Run({.fates = "sss", .copy_fails = true, .list_fails = list_fails, .counted_more = 1});
    EXPECT_TRUE(carried_.empty());
    ASSERT_TRUE(summary_.stopped);
    EXPECT_EQ(summary_.stopped->what, Sentence("No room for a copy."));
    EXPECT_EQ(told_.not_tried, list_fails ? 0 : 3);
    EXPECT_EQ(summary_.not_tried, list_fails ? 4 : 3) << "as far as is known";
  }
}

}  // namespace
}  // namespace quillcast::run
