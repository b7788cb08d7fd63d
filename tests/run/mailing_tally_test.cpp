// What a mailing's page counts, whatever its recipients are called and whenever their results came.
#include "run/mailing_tally.h"

#include <gtest/gtest.h>

#include <numeric>

namespace quillcast::run {
namespace {

using std::chrono::seconds;
using std::chrono::sys_seconds;

constexpr sys_seconds kFirst{seconds(1'700'000'000)};

JournalRow Row(const std::string& address, ResultState state, std::int64_t at, int reply = 250) {
  JournalRow row;
  row.recipient.values[recipients::kEmail] = address;
  row.state = state;
  row.reply.code = reply;
  row.when = kFirst + seconds(at);
  return row;
}

std::int64_t Sum(const std::vector<Tally>& columns) {
  return std::accumulate(columns.begin(), columns.end(), std::int64_t{0},
                         [](std::int64_t sum, const Tally& column) { return sum + column.all(); });
}

TEST(MailingTally, HasFewColumnsOfLengthsThatPeopleCountIn) {
  struct Case {
    std::int64_t whole;  // seconds
    std::int64_t step;
  };
  for (const Case& c : std::initializer_list<Case>{
           {0, 1}, {-5, 1}, {47, 1}, {48, 2}, {3600, 120}, {86400, 3600}, {86400 * 365, 86400 * 8}}) {
    MailingTally tally(kFirst, kFirst + seconds(c.whole));
    EXPECT_EQ(tally.step().count(), c.step) << c.whole;
    EXPECT_LE(tally.columns().size(), MailingTally::kMostColumns) << c.whole;
    // A clock that was set meanwhile loses nobody.
    for (const std::int64_t at : {std::int64_t{-1000}, std::int64_t{0}, c.whole, c.whole + 1000}) {
      tally.Add(Row("a@example.org", ResultState::kSent, at));
    }
    EXPECT_EQ(Sum(tally.columns()), 4) << c.whole;
  }
}

TEST(MailingTally, NamesTheLargestAndCountsTheRestTogether) {
  MailingTally tally(kFirst, kFirst);
  for (int n = 0; n < 5; ++n) tally.Add(Row("Ada <a@Big.example>", ResultState::kSent, 0));
  for (int n = 0; n < 3; ++n) tally.Add(Row("a@mid.example", ResultState::kRefused, 0, 550));
  tally.Add(Row("a@small.example", ResultState::kSent, 0));
  tally.Add(Row("nobody", ResultState::kFailed, 0, 0));
  const auto domains = tally.Domains(2);
  ASSERT_EQ(domains.size(), 3U);
  EXPECT_EQ(domains[0].name, "big.example");
  EXPECT_EQ(domains[0].tally.of(Fate::kSent), 5);
  EXPECT_EQ(domains[1].tally.of(Fate::kNotSent), 3);
  EXPECT_EQ(domains[2].name, "others");
  EXPECT_EQ(domains[2].tally.all(), 2);
  EXPECT_EQ(tally.Replies(5)[0].name, "250");
}

// One recipient's address, or a queue's number, is not told of all.
TEST(MailingTally, TellsTheWordsThatAllRepliesOfACodeShare) {
  struct Case {
    std::vector<std::string> texts;
    std::string words;
  };
  for (const Case& c : std::initializer_list<Case>{
           {{"queued"}, "queued"},
           {{"ok", "ok", "ok"}, "ok"},
           {{"queued r1@d1.example", "queued r2@d2.example", "queued r1@d1.example"}, "queued \xE2\x80\xA6"},
           {{"<a@x>: no such mailbox", "<b@x>: no such mailbox"}, "\xE2\x80\xA6 no such mailbox"},
           {{"Ok: queued as 4AB 7", "Ok: queued as 5CD 8", "Ok: queued as 6EF 9"}, "Ok: queued as \xE2\x80\xA6"},
           {{"full, 3 of 4 parts used", "full, all of it is used", "full, 1 of 4 parts used"},
            "full, \xE2\x80\xA6 used"},
           {{"try later", "no"}, "\xE2\x80\xA6"},
           {{"a a", "a"}, "a \xE2\x80\xA6"},
           {{"ok", ""}, "\xE2\x80\xA6"},
           {{"", "ok"}, "\xE2\x80\xA6"}}) {
    MailingTally tally(kFirst, kFirst);
    for (const auto& text : c.texts) {
      JournalRow row = Row("a@d.example", ResultState::kRefused, 0, 550);
      row.reply.text = text;
      tally.Add(row);
    }
    EXPECT_EQ(tally.Replies(1)[0].words, c.words) << c.texts.back();
  }
}

// Reasons of our own are whole sentences.
TEST(MailingTally, TellsTheReasonThatAllShareOrNone) {
  for (const auto& [reasons, words] :
       {std::pair<std::vector<std::string>, std::string>{{"The program ended.", "The program ended."},
                                                         "The program ended."},
        {{"Cannot read a1.pdf: No such file.", "Cannot read a2.pdf: No such file."},
         "Cannot read \xE2\x80\xA6 No such file."},
        {{"Cannot read a1.pdf: Gone.", "Cannot read a2.pdf: Locked."}, "Cannot read \xE2\x80\xA6"},
        {{"The program ended.", "The program ended while the server had the message."}, "The program \xE2\x80\xA6"},
        {{"The run ended before the answer came.", "The computer stopped.", "The computer stopped."}, ""}}) {
    MailingTally tally(kFirst, kFirst);
    for (const auto& reason : reasons) {
      JournalRow row = Row("a@d.example", ResultState::kUnknown, 0, 0);
      row.reason = reason;
      tally.Add(row);
    }
    EXPECT_EQ(tally.Replies(1)[0].words, words);
  }
}

// More names than it holds: everybody is still counted once.
TEST(MailingTally, IsBounded) {
  MailingTally tally(kFirst, kFirst);
  constexpr int kDomains = static_cast<int>(MailingTally::kMostNames) + 5000;
  for (int n = 0; n < kDomains; ++n) tally.Add(Row("a@d" + std::to_string(n) + ".example", ResultState::kSent, 0));
  const auto domains = tally.Domains(kDomains);
  EXPECT_LE(domains.size(), MailingTally::kMostNames + 1);
  std::int64_t all = 0;
  for (const auto& domain : domains) all += domain.tally.all();
  EXPECT_EQ(all, kDomains);
}

}  // namespace
}  // namespace quillcast::run
