// What is shown of a run: its results as a list, its report by lines, its rate, and what it came to.
#include "run/run_results.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "run/report_lines.h"
#include "run/run_rate.h"
#include "run/run_words.h"
#include "smtp/outcome_text.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

RecipientResult Result(std::int64_t position, const char* address, smtp::State state, smtp::ResultCode code,
                       smtp::ServerReply reply = {}) {
  return {position, address, {.state = state, .code = code, .reply = std::move(reply), .reason = ""}};
}

RunResults SomeResults() {
  RunResults results;
  results.Add(Result(1, "ada@example.org", smtp::State::kSent, smtp::ResultCode::kSuccess, {250, "2.0.0", "queued"}));
  results.Add(Result(2, "bob@example.net", smtp::State::kRefused, smtp::ResultCode::kRecipientRefused,
                     {550, "5.1.1", "no\tsuch\nuser"}));
  results.Add(Result(3, "eve\n@example.net", smtp::State::kUnknown, smtp::ResultCode::kReplyTimeout));
  results.AddNotTried(4, "mallory@example.net", ResultState::kNotTried);
  return results;
}

TEST(RunResults, AreFilteredByStateAndText) {
  const RunResults results = SomeResults();
  using Rows = std::vector<std::uint32_t>;
  EXPECT_EQ(results.Matching({}, 0), (Rows{0, 1, 2, 3}));
  EXPECT_EQ(results.Matching({}, 2), (Rows{2, 3}));
  EXPECT_EQ(results.Matching({.state = {}, .unsent_only = true, .text = ""}, 0), (Rows{1, 2, 3}));
  EXPECT_EQ(results.Matching({.state = ResultState::kUnknown, .unsent_only = false, .text = ""}, 0), (Rows{2}));
  EXPECT_EQ(results.Matching({.state = {}, .unsent_only = false, .text = "EXAMPLE.NET"}, 0), (Rows{1, 2, 3}));
  EXPECT_EQ(results.Matching({.state = {}, .unsent_only = false, .text = "550"}, 0), (Rows{1}));
}

TEST(RunResults, AsTextKeepEachRowOnItsLine) {
  RunResults results = SomeResults();
  results.AddNotTried(5, "late@example.net", ResultState::kDeferred);
  EXPECT_EQ(results.AsText({0, 1, 2, 3, 4}),
            "1\tada@example.org\tsent\t\n"
            "2\tbob@example.net\trefused\t550 5.1.1 no?such / user (Error 8: An error was reported in response to a "
            "recipient "
            "address. The SMTP server may refuse to handle mail for unknown recipients.)\n"
            "3\teve?@example.net\tunknown\tError 27: Socket Timeout Error.\n"
            "4\tmallory@example.net\tnot tried\tThe run ended before this recipient.\n"
            "5\tlate@example.net\tnot tried\tThe run ended before this recipient, who stays deferred.\n");
}

TEST(RunResults, HaveTheLastOfEachWhoIsTriedAgain) {
  RunResults results;
  for (std::int64_t position : {2, 5, 9})
    results.Add(Result(position, "ada@example.org", smtp::State::kDeferred, smtp::ResultCode::kRecipientRefused));
  EXPECT_EQ(results.changes(), 0);
  auto again = Result(5, "ada@example.org", smtp::State::kSent, smtp::ResultCode::kSuccess);
  again.tries = 2;
  results.Add(again);
  EXPECT_EQ(results.size(), 3U);
  EXPECT_EQ(results.At(1).state, ResultState::kSent);
  EXPECT_EQ(results.At(1).detail, "");
  EXPECT_EQ(results.At(2).state, ResultState::kDeferred);
  EXPECT_EQ(results.changes(), 1);
}

TEST(ReportLines, FollowAFileThatGrows) {
  const test::TemporaryFolder folder;
  const auto file = folder.Write("report.txt", "one\r\n\r\nthr");
  auto lines = ReportLines::Open(file);
  ASSERT_TRUE(lines);
  EXPECT_TRUE(*lines->Update());
  ASSERT_EQ(lines->size(), 2U);
  EXPECT_EQ(lines->At(0), "one");
  EXPECT_EQ(lines->At(1), "");
  EXPECT_FALSE(*lines->Update());
  std::ofstream(file, std::ios::app) << "ee\r\n" << std::string(100000, 'x') << "\n";
  EXPECT_TRUE(*lines->Update());
  ASSERT_EQ(lines->size(), 4U);
  EXPECT_EQ(lines->At(2), "three");
  EXPECT_EQ(lines->At(3), std::string(65536, 'x'));
  EXPECT_FALSE(ReportLines::Open(folder / "missing.txt"));
}

TEST(RunSummary, IsSaidInWords) {
  const Error full{Failure::kIo, "The disk is full.", ""};
  struct Case {
    RunSummary summary;
    const char* counts;
    const char* left;  // "" for nobody
    bool reached_its_end, everybody_got_it;
  };
  for (const Case& c : std::initializer_list<Case>{
           {{1, 0, 0, 0, 1, "", 0, false, {}}, "1 message was sent, 0 failed.", "", true, true},
           {{1200, 1000, 0, 0, 2200, "", 0, false, {}}, "1,200 messages were sent, 1,000 failed.", "", true, false},
           {{0, 0, 1, 7, 7, "", 0, true, {}},
            "0 messages were sent, 0 failed.",
            "1 recipient was not tried (#7); nothing was sent there.",
            false,
            false},
           {{2, 0, 1500, 3, 1502, "", 0, false, {}},
            "2 messages were sent, 0 failed.",
            "1,500 recipients were not tried (from #3 to #1502); nothing was sent to them.",
            false,
            false},
           {{2, 0, 2, 2, 5, "", 0, false, {}},
            "2 messages were sent, 0 failed.",
            "2 recipients were not tried, #2 the first of them and #5 the last; nothing was sent to them.",
            false,
            false},
           {{3, 1, 0, 0, 4, "", 0, false, {}, Delivery::kWritten},
            "3 messages were written, 1 failed. Nothing was sent.",
            "",
            true,
            false},
           {{2, 0, 0, 0, 2, "", 0, false, full}, "2 messages were sent, 0 failed.", "", false, false},
       }) {
    EXPECT_EQ(CountsOf(c.summary).InEnglish(), c.counts);
    const auto left = NotTriedIn(c.summary);
    EXPECT_EQ(left ? left->InEnglish() : "", c.left) << c.counts;
    EXPECT_EQ(c.summary.reached_its_end(), c.reached_its_end) << c.counts;
    EXPECT_EQ(c.summary.everybody_got_it(), c.everybody_got_it) << c.counts;
  }
}

// Those of its mailing whom a run was not for are told apart from its own.
TEST(RunSummary, NamesWhoIsUnknownStill) {
  std::string left;
  for (const Sentence& sentence : LeftBy({.sent = 5, .failed = 1, .unknown = 1, .unknown_before = 4})) {
    left += sentence.InEnglish() + "\n";
  }
  EXPECT_EQ(left, UnknownOnes(1).InEnglish() +
                      "\n4 recipients were unknown before this run and still are. They are not sent again unless you "
                      "ask for it.\n");
}

// A reply is a sentence of its own, whether or not its server ends it.
TEST(Outcome, SaysItsReplyAndItsReasonAsSentences) {
  for (const auto& [text, said] : std::initializer_list<std::pair<const char*, const char*>>{
           {"not right", "535 5.7.8 not right. The server did not take it."},
           {"Not right!", "535 5.7.8 Not right! The server did not take it."},
           {"see https://example.org.", "535 5.7.8 see https://example.org. The server did not take it."}}) {
    const smtp::ServerReply reply{535, "5.7.8", text};
    EXPECT_EQ(smtp::ReplyAndReason(reply, "The server did not take it."), said);
  }
  EXPECT_EQ(smtp::ReplyAndReason({550, "", "no"}, ""), "550 no");
  EXPECT_EQ(smtp::ReplyAndReason({}, "Lost."), "Lost.");
}

// Where there is room for a few words, they are those that were said of this message.
TEST(Outcome, BeginsWithWhatIsKnownOfThisOne) {
  using enum smtp::ResultCode;
  const char* general = "(Error 24: ESMTP Authentication failed.)";
  for (const auto& [outcome, why] : std::initializer_list<std::pair<smtp::Outcome, std::string>>{
           {{.state = smtp::State::kRefused, .code = kAuthRefused, .reply = {535, "5.7.8", "no"}, .reason = ""},
            fmt::format("535 5.7.8 no {}", general)},
           {{.state = smtp::State::kRefused, .code = kAuthRefused, .reply = {535, "", "no"}, .reason = "Look."},
            fmt::format("535 no. Look. {}", general)},
           {{.state = smtp::State::kFailed, .code = kAuthRefused, .reply = {}, .reason = "No trust."},
            fmt::format("No trust. {}", general)},
           {{.state = smtp::State::kFailed, .code = kAuthRefused, .reply = {}, .reason = ""},
            "Error 24: ESMTP Authentication failed."}}) {
    EXPECT_EQ(smtp::WhyText(outcome), why);
    EXPECT_EQ(smtp::OutcomeText(outcome), fmt::format("{}. {}", smtp::Name(outcome.state), why));
    RunResults results;
    results.Add({1, "ada@example.org", outcome});
    EXPECT_EQ(results.At(0).detail, why);
  }
  const smtp::Outcome sender{smtp::State::kRefused, kSenderRefused, {553, "5.1.8", "not wanted"}, ""};
  EXPECT_TRUE(
      RefusedTheSame(sender, 20, Then::kWaits)
          .InEnglish()
          .starts_with("The server refused the same 20 times in a row, so the run waits: 553 5.1.8 not wanted "));
}

TEST(RunRate, IsSaidInWords) {
  using std::chrono::milliseconds;
  struct Case {
    std::int64_t done, total;
    int elapsed;
    const char* text;
  };
  for (const Case& c : std::initializer_list<Case>{
           {0, 100, 5000, ""},
           {5, 100, 100, ""},
           {2500, 5000, 2000, "1,250 messages a second, 2 seconds left"},
           {10, 100, 10000, "1.0 messages a second, 2 minutes left"},
           {10, 100000, 10000, "1.0 messages a second, 27 hours and 46 minutes left"},
           {100, 100, 1000, "100 messages a second"},
           {1000, 1001, 1000, "1,000 messages a second, less than a second left"},
       }) {
    EXPECT_EQ(DescribeRate({c.done, milliseconds(c.elapsed)}, {c.total - c.done}).InEnglish(), c.text);
  }
  EXPECT_EQ(DescribeRate({1000, milliseconds(1000)}, {1, Certainty::kAtLeast}).InEnglish(), "1,000 messages a second")
      << "an end that nobody knows is not told as near";
}

}  // namespace
}  // namespace quillcast::run
