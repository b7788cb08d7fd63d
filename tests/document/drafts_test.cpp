#include "document/drafts.h"

#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace quillcast::document {
namespace {

Draft FullDraft() {
  Draft draft;
  draft.document.subject = "Caf\xC3\xA9: \\n for $*MergeFirstName*$";
  draft.document.html = "<p>Dear</p>\n";
  draft.document.base_folder = "/home/ada/letters";
  draft.document.format = Format::kText;
  draft.document.priority = Priority::kHigh;
  draft.document.read_receipt = true;
  for (const char* path : {"/b\n.pdf", "/a: \\b.pdf", "/c.pdf"}) draft.document.attachments.Add(path);
  draft.is_changed = false;
  draft.file = "/home/ada/letters/May.html";
  draft.group = "Customers";
  draft.method = "Bulk Sending";
  return draft;
}

TEST(Drafts, ComeBackWithAllTheirFields) {
  const test::TemporaryFolder folder;
  const Drafts drafts(folder.path());
  const Draft before = FullDraft();
  ASSERT_TRUE(drafts.Keep(before));
  EXPECT_FALSE(drafts.AreOffered()) << "it is still being written";
  ASSERT_TRUE(drafts.SetAside());
  EXPECT_EQ(drafts.OfferedSubject(), before.document.subject);
  const auto after = drafts.ReadOffered();
  ASSERT_TRUE(after);
  EXPECT_EQ(after->document.subject, before.document.subject);
  EXPECT_EQ(after->document.html, before.document.html);
  EXPECT_EQ(after->document.base_folder, before.document.base_folder);
  EXPECT_EQ(after->document.format, before.document.format);
  EXPECT_EQ(after->document.priority, before.document.priority);
  EXPECT_EQ(after->document.attachments.paths(), before.document.attachments.paths());
  EXPECT_TRUE(after->document.read_receipt);
  EXPECT_FALSE(after->is_changed);
  EXPECT_EQ(after->file, before.file);
  EXPECT_EQ(after->group, before.group);
  EXPECT_EQ(after->method, before.method);
}

TEST(Drafts, AreOfferedTheOldestFirstAndNoneIsReplaced) {
  const test::TemporaryFolder folder;
  const Drafts drafts(folder.path());
  for (const char* subject : {"first", "second", "third"}) {
    Draft draft;
    draft.document.subject = subject;
    ASSERT_TRUE(drafts.Keep(draft));
    ASSERT_TRUE(drafts.SetAside());
  }
  ASSERT_TRUE(drafts.SetAside());  // nothing is there any more
  for (const char* subject : {"first", "second", "third"}) {
    EXPECT_EQ(drafts.OfferedSubject(), subject);
    drafts.DropOffered();
  }
  EXPECT_FALSE(drafts.AreOffered());
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(Drafts, GoBehindAllThatAreOffered) {
  const test::TemporaryFolder folder;
  const Drafts drafts(folder.path());
  for (const char* other :
       {"Recovered1.htm", "Recovered05.htm", "Recovered x.htm", "Recovered99999999999999999999.htm"})
    folder.Write(other, "of somebody else");
  EXPECT_FALSE(drafts.AreOffered());
  folder.Write("Recovered7.htm", "first");
  folder.Write("Recovered2000.htm", "second");
  folder.Write("Recovered2001.fields", "Subject: of a body that is gone");
  std::vector<std::string> offered;
  for (int i = 0; i < 3; ++i) {
    auto draft = drafts.ReadOffered();
    ASSERT_TRUE(draft);
    offered.push_back(draft->document.html + draft->document.subject);
    draft->document.html = "again " + draft->document.html;
    ASSERT_TRUE(drafts.Keep(*draft));
    drafts.DropOffered();
    ASSERT_TRUE(drafts.SetAside());
  }
  EXPECT_EQ(offered, (std::vector<std::string>{"first", "second", "again first"}));
}

TEST(Drafts, ComeNextWhereOneIsSetAsideForWhatReplacesIt) {
  const test::TemporaryFolder folder;
  const Drafts drafts(folder.path());
  using enum Drafts::Turn;
  for (const auto& [subject, turn] : {std::pair("d", kNext), std::pair("c", kNext), std::pair("e", kLast),
                                      std::pair("b", kNext), std::pair("a", kNext)}) {
    Draft draft;
    draft.document.subject = subject;
    ASSERT_TRUE(drafts.Keep(draft));
    ASSERT_TRUE(drafts.SetAside(turn));
  }
  for (const char* subject : {"a", "b", "c", "d", "e"}) {
    EXPECT_TRUE(drafts.Mention(subject));
    EXPECT_EQ(drafts.OfferedSubject(), subject);
    drafts.DropOffered();
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(Drafts, StayWhereTheyCannotBeSetAside) {
  const test::TemporaryFolder folder;
  const Drafts drafts(folder.path());
  ASSERT_TRUE(drafts.Keep(FullDraft()));
  folder.Write("Recovered.fields/in the way", "");
  const auto failed = drafts.SetAside();
  ASSERT_FALSE(failed);
  EXPECT_NE(failed.error().what.InEnglish().find("Recovered.fields"), std::string::npos)
      << failed.error().what.InEnglish();
  EXPECT_FALSE(drafts.AreOffered());
  EXPECT_TRUE(std::filesystem::exists(folder / "Autosave.htm"));
}

TEST(Drafts, AreKeptForWorkAlone) {
  const test::TemporaryFolder folder;
  const Drafts drafts(folder.path());
  Draft nothing;
  nothing.is_changed = false;
  nothing.group = "Customers";
  nothing.document.priority = Priority::kHigh;
  ASSERT_TRUE(drafts.Keep(FullDraft()));
  ASSERT_TRUE(drafts.Keep(nothing));
  EXPECT_TRUE(std::filesystem::is_empty(folder.path())) << "what was kept before is no longer so";
  struct Case {
    const char* name;
    void (*change)(Draft&);
  };
  for (const Case& c : std::initializer_list<Case>{
           {"body", [](Draft& draft) { draft.is_changed = true; }},
           {"subject", [](Draft& draft) { draft.document.subject = "s"; }},
           {"attachment", [](Draft& draft) { draft.document.attachments.Add("/a"); }},
       }) {
    Draft draft = nothing;
    c.change(draft);
    ASSERT_TRUE(drafts.Keep(draft));
    ASSERT_TRUE(drafts.SetAside());
    EXPECT_TRUE(drafts.AreOffered()) << c.name;
    drafts.DropOffered();
  }
}

TEST(Drafts, MentionWhatTheirBodiesAndFieldsName) {
  const test::TemporaryFolder folder;
  const Drafts drafts(folder.path());
  EXPECT_FALSE(drafts.Mention("first"));
  for (const char* base : {"/data/ImportBody/first", "/data/ImportBody/second"}) {
    Draft draft;
    draft.document.base_folder = base;
    ASSERT_TRUE(drafts.Keep(draft));
    ASSERT_TRUE(drafts.SetAside());
  }
  Draft written;
  written.document.html = "<img src='../ImportBody/third/a.png'>";
  ASSERT_TRUE(drafts.Keep(written));
  for (const char* named : {"first", "second", "third"}) EXPECT_TRUE(drafts.Mention(named)) << named;
  drafts.DropOffered();
  EXPECT_FALSE(drafts.Mention("first"));
  folder.Write("Recovered9.htm/is/no file", "");
  EXPECT_TRUE(drafts.Mention("first")) << "it may: it cannot be read";
}

TEST(Drafts, OfABodyAloneAreTakenUpToo) {
  const test::TemporaryFolder folder;
  const Drafts drafts(folder.path());
  folder.Write("Recovered.htm", "<p>body");
  folder.Write("Recovered.fields", "no fields\nSubject without a colon\nPriority: High");
  const auto draft = drafts.ReadOffered();
  ASSERT_TRUE(draft);
  EXPECT_EQ(draft->document.html, "<p>body");
  EXPECT_EQ(draft->document.priority, Priority::kHigh);
  EXPECT_TRUE(draft->is_changed);
  const auto failed = Drafts(folder / "gone").Keep(*draft);
  ASSERT_FALSE(failed);
  EXPECT_NE(failed.error().what.InEnglish().find((folder / "gone").string()), std::string::npos);
}

}  // namespace
}  // namespace quillcast::document
