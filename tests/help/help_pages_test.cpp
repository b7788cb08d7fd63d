#include "help/help_pages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace quillcast::help {
namespace {

using ::testing::ElementsAre;

class HelpPages : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_.Write("help/Welcome.htm",
                  "<title>Welcome</title><p>See <a href='Zebra%20Crossing.htm#stripes'>zebras</a>.</p><p>All: "
                  "<a href='Apes.htm'>apes</a>, <a href=\"Zebra%20Crossing.htm\">zebras</a>, <a href='http://x/B.htm'>x"
                  "</a></p>");
    folder_.Write("help/Apes.htm", "<title>Apes &amp; men</title><p>They eat <b>bananas</b>.</p>");
    folder_.Write("help/Zebra Crossing.htm", "<title>Stripes</title><h2>Stripes</h2><p>Apes cross here.</p>");
    folder_.Write("help/Aside.htm", "<p>No title, and nobody links here.</p>");
    folder_.Write("help/Vast.htm", std::string((1 << 20) + 1, 'x'));
    folder_.Write("help/note.txt", "bananas");
    auto pages = LoadPages(folder_ / "help");
    ASSERT_TRUE(pages);
    pages_ = *std::move(pages);
  }
  test::TemporaryFolder folder_;
  std::vector<Page> pages_;
};

TEST_F(HelpPages, StandAsTheWelcomePageNamesThem) {
  std::vector<std::string> topics;
  for (const Page& page : pages_) topics.push_back(page.topic);
  EXPECT_THAT(topics, ElementsAre("Welcome.htm", "Apes.htm", "Zebra Crossing.htm", "Aside.htm"));
  EXPECT_EQ(pages_[1].title, "Apes & men");
  EXPECT_EQ(pages_[3].title, "Aside.htm");
  std::filesystem::remove(folder_ / "help/Welcome.htm");
  for (const char* folder : {"help", "nowhere"}) {
    const auto none = LoadPages(folder_ / folder);
    ASSERT_FALSE(none) << folder;
    EXPECT_EQ(none.error().failure, Failure::kNoInput);
  }
}

TEST_F(HelpPages, AreFoundByNameAndByTheirWords) {
  struct Case {
    const char* words;
    std::vector<std::string> named, holding;
  };
  for (const Case& c :
       {Case{"zebra crossing", {"Stripes"}, {}}, Case{"Zebra Crossing.htm", {"Stripes"}, {}},
        Case{"APES & MEN", {"Apes & men"}, {"Apes & men"}},
        Case{"a", {"Apes & men", "Stripes", "Aside.htm"}, {"Apes & men", "Aside.htm", "Welcome", "Stripes"}},
        Case{"apes", {"Apes & men"}, {"Apes & men", "Welcome", "Stripes"}}, Case{"Cross  apes", {}, {"Stripes"}},
        Case{"bananas", {}, {"Apes & men"}}, Case{"title", {}, {"Aside.htm"}}, Case{"", {}, {}},
        Case{"../help/Apes.htm", {}, {}}}) {
    std::vector<std::string> named;
    for (const Page* page : PagesNamed(pages_, c.words)) named.push_back(page->title);
    std::vector<std::string> holding;
    for (const Hit& hit : Search(pages_, c.words)) holding.push_back(hit.page->title);
    EXPECT_EQ(named, c.named) << c.words;
    EXPECT_EQ(holding, c.holding) << c.words;
  }
}

TEST_F(HelpPages, ShowTheWordsThatWereFoundInWholeWords) {
  std::string long_text;
  for (int i = 0; i < 100; ++i) long_text += "word" + std::to_string(i) + ' ';
  pages_ = {{"Long.htm", "Long", "<p>" + long_text + "</p>"}};
  EXPECT_EQ(
      Search(pages_, "word50").front().excerpt,
      "… word43 word44 word45 word46 word47 word48 word49 word50 word51 word52 word53 word54 word55 word56 word57 "
      "word58 word59 word60 word61 word62 word63 word64 …");
  EXPECT_TRUE(Search(pages_, "long").front().excerpt.starts_with("word0 word1 "));
  EXPECT_TRUE(Search(pages_, "word99").front().excerpt.ends_with("word98 word99"));
  pages_ = {{"Long.htm", "Long", "<p>Read <a href=\"Apes.htm\">apes</a>, or (<a href=\"B.htm\">more</a>).</p>"}};
  EXPECT_EQ(Search(pages_, "read").front().excerpt, "Read apes, or (more).");
}

TEST_F(HelpPages, AreTextThatNamesItsLinksByTopic) {
  EXPECT_EQ(TextOf(pages_[0]),
            "See zebras <Zebra Crossing>.\n\nAll: apes <Apes>, zebras <Zebra Crossing>, x <http://x/B.htm>\n");
}

}  // namespace
}  // namespace quillcast::help
