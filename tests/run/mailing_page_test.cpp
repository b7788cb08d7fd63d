// What a mailing's page says of its recipients, as a person reads it.
#include "run/mailing_page.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "profile/folders.h"
#include "run/kept_runs.h"
#include "support/fake_clock.h"
#include "support/kept_mailing.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

// A line for each row of a table, its cells parted by bars; bars of colour are left out.
std::string AsRead(const std::string& page) {
  std::string text;
  std::string_view before;  // the tag right before
  for (std::string_view rest = std::string_view(page).substr(page.find("<body>")); !rest.empty();) {
    const bool is_tag = rest.front() == '<';
    const std::string_view piece = is_tag ? rest.substr(0, rest.find('>') + 1) : rest.substr(0, rest.find('<'));
    rest.remove_prefix(piece.size());
    const bool is_cell =
        (before == "</td>" || before == "</th>") && (piece.starts_with("<td") || piece.starts_with("<th"));
    const bool is_bar = piece == "</span>" && before.starts_with("<span");
    if (is_cell) text += " | ";
    if (piece == "<br>" || (before == "</span>" && piece.starts_with("<span"))) text += "; ";
    if (!is_tag) text += piece;
    before = is_tag && !is_bar ? piece : std::string_view();
  }
  return text;
}

class PageOfMailing : public testing::Test {
 protected:
  // Of one that was cut off, and so were the runs that went on with it: sent, refused, deferred, unknown, and the rest
  // not tried.
  std::string PageAfter(const std::string& subject, int recipients, std::initializer_list<RunKind> went_on = {}) {
    profile::Folders folders;
    folders.data = folder_.path();
    folders.temporary = folder_.path();
    EXPECT_TRUE(test::LeaveCutOff(folders, "Readers", false, recipients));
    const platform::CancelToken none;
    const auto journal = OpenJournal(folders, clock_, none);
    for (const RunKind kind : went_on) EXPECT_TRUE((*journal)->GoOn(1, kind, WhoIsLeft(), {"base"}));
    auto kept = (*journal)->List();
    kept->mailings.front().subject = subject;
    std::string page;
    const auto written = WriteMailingPage(**journal, kept->mailings.front(), clock_, none, [&](std::string_view html) {
      page += html;
      return Result<void>();
    });
    EXPECT_TRUE(written);
    return page;
  }

  test::TemporaryFolder folder_;
  platform::SystemClock clock_;
};

TEST_F(PageOfMailing, CountsWhoIsUnknownOrWasNotTriedApart) {
  std::string text = AsRead(PageAfter("Hello", 7, {RunKind::kResume, RunKind::kRetry}));
  for (const char* line :
       {// By reply, by domain, and what the colours mean.
        "sent; not sent; unknown; not tried\n", "Reply | sent | not sent | unknown | not tried | \n",
        "250 2.0.0; taken | 1 | 0 | 0 | 0 | \n", "451 4.2.0; later | 0 | 1 | 0 | 0 | \n",
        "no answer; The program ended before the server's answer came. | 0 | 0 | 1 | 0 | \n",
        "not tried | 0 | 0 | 0 | 3 | \n", "example.org | 1 | 2 | 1 | 3 | \n", "All | 1 | 2 | 1 | 3 | \n",
        // The head, up to the moment.
        "\nFrom Ada &lt;ada@example.org&gt; to 7 recipients of the group Readers. Sent from 2",
        // By name.
        "Who did not get it\n\n# | Address | State | Why\n2 | r2@example.org | refused | 550 5.1.1 nobody\n"
        "3 | r3@example.org | deferred | 451 4.2.0 later\n\n",
        "Who may have got it\n\n# | Address | State | Why\n4 | r4@example.org | unknown | The program ended before "
        "the server's answer came.\n\n",
        "Who was not tried\n\n# | Address | State | Why\n5 | r5@example.org | not tried | \n"}) {
    EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;
  }
  // In sentences, for somebody who knows nothing of runs.
  text.erase(0, text.find("Readers. ") + std::string_view("Readers. ").size());
  text.erase(text.find('\n'));
  std::erase_if(text, [](char c) { return c >= '0' && c <= '9'; });
  EXPECT_EQ(
      text,
      "Sent from -- :: until it was cut off. The sending was taken up again from -- :: until it was cut off. Some "
      "were tried again from -- :: until it was cut off.");
}

TEST_F(PageOfMailing, SaysAllOrNobodyOnlyWhereItIsSo) {
  const std::string text = AsRead(PageAfter("Hello", 10'000));
  for (const char* share : {" | 1 | 0.1 % | ", " | 9,996 | 99.9 % | "}) {
    EXPECT_NE(text.find(share), std::string::npos) << share << "\n" << text.substr(0, 1000);
  }
}

// By state as parts of all, by reply and by domain as parts of the largest row; of nobody, and of all, no bar.
TEST_F(PageOfMailing, DrawsBarsToOneMeasure) {
  const std::string page = PageAfter("Hello", 7);
  std::string widths;
  constexpr std::string_view kWidth = "style=\"width:";
  for (std::size_t at = 0; (at = page.find(kWidth, at)) != std::string::npos;) {
    at += kWidth.size();
    widths += page.substr(at, page.find('"', at) - at) + " ";
  }
  EXPECT_EQ(widths,
            "14.29% 14.29% 14.29% 14.29% 42.86% "
            "100.00% 33.33% 33.33% 33.33% 33.33% "
            "14.29% 28.57% 14.29% 42.86% ");
}

// Of whom there is nobody there is no column, and of what nobody needs no heading.
TEST_F(PageOfMailing, ShowsNoColumnOfNobody) {
  const std::string text = AsRead(PageAfter("Hello", 4));
  EXPECT_NE(text.find("Reply | sent | not sent | unknown | \n"), std::string::npos) << text;
  EXPECT_EQ(text.find("not tried"), std::string::npos) << text;
}

TEST_F(PageOfMailing, NamesATagOfTheSubjectByItsField) {
  const std::string page = PageAfter("Dear $*MergeFirstName*$, news of $*MergeCity*$ & $*MergeNone*$", 5);
  EXPECT_NE(page.find("<title>Dear [FirstName], news of [City] &amp; $*MergeNone*$</title>"), std::string::npos);
  EXPECT_NE(page.find("<h1>Dear [FirstName], news of [City] &amp; $*MergeNone*$</h1>"), std::string::npos);
}

}  // namespace
}  // namespace quillcast::run
