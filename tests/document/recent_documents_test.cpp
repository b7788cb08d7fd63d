// The list of the documents that were open last.
#include "document/recent_documents.h"

#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace quillcast::document {
namespace {

class RecentDocumentsTest : public testing::Test {
 protected:
  // The list, a missing one in brackets.
  std::vector<std::string> List() {
    std::vector<std::string> names;
    const auto documents = RecentDocuments(settings_);
    EXPECT_TRUE(documents);
    for (const auto& document : *documents) {
      EXPECT_TRUE(document.file.is_absolute());
      const std::string name = document.file.filename().string();
      names.push_back(document.is_there ? name : '(' + name + ')');
    }
    return names;
  }
  void Add(const std::string& name) { EXPECT_TRUE(AddRecentDocument(settings_, folder_.path() / name)); }

  test::TemporaryFolder folder_;
  profile::SettingsStore settings_{folder_.path() / "settings.db"};
};

TEST_F(RecentDocumentsTest, KeepsTheLastTenEachOnceTheLastFirst) {
  using Names = std::vector<std::string>;
  EXPECT_EQ(List(), Names());
  folder_.Write("a", "x");
  folder_.Write("two\nlines; \"\xC3\xA9\"", "x");
  for (const char* name : {"a", "two\nlines; \"\xC3\xA9\"", "gone", "./b/../a"}) Add(name);
  EXPECT_EQ(List(), (Names{"a", "(gone)", "two\nlines; \"\xC3\xA9\""})) << "one file under two names is one";
  for (int n = 1; n <= 9; ++n) Add(std::to_string(n));
  EXPECT_EQ(List(), (Names{"(9)", "(8)", "(7)", "(6)", "(5)", "(4)", "(3)", "(2)", "(1)", "a"}));
  Add("5");
  EXPECT_EQ(List(), (Names{"(5)", "(9)", "(8)", "(7)", "(6)", "(4)", "(3)", "(2)", "(1)", "a"})) << "none is lost";
  EXPECT_TRUE(ForgetRecentDocument(settings_, folder_.path() / "5"));
  EXPECT_TRUE(ForgetRecentDocument(settings_, folder_.path() / "5")) << "not on the list";
  EXPECT_EQ(List(), (Names{"(9)", "(8)", "(7)", "(6)", "(4)", "(3)", "(2)", "(1)", "a"}));
  EXPECT_TRUE(ForgetRecentDocuments(settings_));
  EXPECT_EQ(List(), Names());
}

TEST_F(RecentDocumentsTest, TellsOfSettingsThatCannotBeUsed) {
  folder_.Write("settings.db", "no database at all, and long enough to be looked at as one");
  EXPECT_FALSE(RecentDocuments(settings_));
  EXPECT_FALSE(AddRecentDocument(settings_, "/a"));
  EXPECT_FALSE(ForgetRecentDocument(settings_, "/a"));
}

}  // namespace
}  // namespace quillcast::document
