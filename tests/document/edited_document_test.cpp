// What is asked before work is lost, and what is left behind.
#include "document/edited_document.h"

#include <gtest/gtest.h>

#include "support/scripted_prompts.h"
#include "support/temporary_folder.h"

namespace quillcast::document {
namespace {

namespace fs = std::filesystem;

class FakeDocument final : public EditedDocument {
 public:
  bool unsaved = true;
  fs::path name;
  std::vector<fs::path> saved;
  bool HasUnsavedChanges() const override { return unsaved; }
  fs::path FileName() const override { return name; }
  Result<void> SaveTo(const fs::path& file) override {
    if (file == "/full") return Error{Failure::kIo, "disk full"};
    saved.push_back(file);
    return {};
  }
  platform::OwnFiles OwnFiles() const override { return {}; }
};

TEST(EditedDocument, AsksBeforeChangesAreLost) {
  const test::TemporaryFolder root;
  const fs::path locked = root.Write("locked.html", "x");

  using Answers = std::deque<platform::Answer>;
  using Paths = std::vector<fs::path>;
  struct Case {
    const char* name;
    bool unsaved, skip;
    fs::path current;
    Answers answers;
    Paths picked;
    SaveDecision decision;
    Paths saved;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"nothing to save", false, false, "", {}, {}, SaveDecision::kGoOn, {}},
           {"shutdown asks nothing", true, true, "", {}, {}, SaveDecision::kGoOn, {}},
           {"cancel", true, false, "/a", {platform::Answer::kCancel}, {}, SaveDecision::kStay, {}},
           {"no", true, false, "/a", {platform::Answer::kNo}, {}, SaveDecision::kGoOn, {}},
           {"yes, has a name", true, false, "/a", {platform::Answer::kYes}, {}, SaveDecision::kGoOn, {"/a"}},
           {"yes, save fails", true, false, "/full", {platform::Answer::kYes}, {}, SaveDecision::kStay, {}},
           {"yes, none picked", true, false, "", {platform::Answer::kYes}, {}, SaveDecision::kStay, {}},
           {"yes, picked", true, false, "", {platform::Answer::kYes}, {"/b"}, SaveDecision::kGoOn, {"/b"}},
           {"yes, unlock fails", true, false, "", Answers{platform::Answer::kYes, platform::Answer::kYes},
            Paths{"/proc/self/status"}, SaveDecision::kStay, Paths{}},
           {"yes, locked, no", true, false, "", Answers{platform::Answer::kYes, platform::Answer::kNo}, Paths{locked},
            SaveDecision::kStay, Paths{}},
           {"yes, locked, yes", true, false, "", Answers{platform::Answer::kYes, platform::Answer::kYes}, Paths{locked},
            SaveDecision::kGoOn, Paths{locked}},
           {"yes, its own is locked, no", true, false, locked, Answers{platform::Answer::kYes, platform::Answer::kNo},
            Paths{}, SaveDecision::kStay, Paths{}},
           {"yes, its own, yes", true, false, locked, Answers{platform::Answer::kYes, platform::Answer::kYes}, Paths{},
            SaveDecision::kGoOn, Paths{locked}},
       }) {
    fs::permissions(locked, fs::perms::owner_read);
    FakeDocument document;
    document.unsaved = c.unsaved;
    document.name = c.current;
    test::ScriptedPrompts prompts;
    prompts.answers = c.answers;
    prompts.files = c.picked;
    const auto decision = AskBeforeClosing(document, c.skip, prompts);
    EXPECT_EQ(decision ? *decision : SaveDecision::kStay, c.decision) << c.name;
    EXPECT_EQ(!decision, std::string_view(c.name).ends_with("fails")) << c.name;
    EXPECT_EQ(document.saved, c.saved) << c.name;
    EXPECT_TRUE(prompts.answers.empty()) << c.name;
    const bool is_writable = (fs::status(locked).permissions() & fs::perms::owner_write) != fs::perms::none;
    EXPECT_EQ(is_writable, document.saved == std::vector{locked}) << c.name;
  }
}

}  // namespace
}  // namespace quillcast::document
