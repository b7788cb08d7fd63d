// Where the parts of a stranger's message go, what they are called, and the folder that is worked in.
#include "mail_file/chosen_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "mail_file/safe_part_name.h"
#include "mail_file/working_folder.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"

namespace quillcast::mail_file {
namespace {

namespace fs = std::filesystem;

mode_t ModeOf(const fs::path& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
}

TEST(SafePartName, LeavesNothingThatLeadsOrMisleads) {
  struct Row {
    std::string name;
    std::string safe;
  };
  const std::string kHundred(100, 'x');
  for (const auto& [name, safe] : {
           Row{"letter.txt", "letter.txt"},
           Row{"Grüße an Ada.pdf", "Grüße an Ada.pdf"},
           Row{"../../etc/passwd", "passwd"},
           Row{R"(C:\docs\plan.doc)", "plan.doc"},
           Row{"folder/", ""},
           Row{"..", ""},
           Row{".bashrc", "bashrc"},
           Row{" . .hidden. ", "hidden"},
           Row{"a\r\nb\tc\x7F.txt", "abc.txt"},
           Row{std::string("a\0b", 3), "ab"},
           Row{"photo\u202Egpj.exe", "photogpj.exe"},
           Row{"\u2066a\u2069\u200F\uFEFFb\u061C", "ab"},
           Row{"what?<is>|this\":*.txt", "what__is__this___.txt"},
           Row{"con", "_con"},
           Row{"Lpt1.txt", "_Lpt1.txt"},
           Row{"com10.txt", "com10.txt"},
           Row{"COM\u00B9.txt", "_COM\u00B9.txt"},
           Row{"lpt\u00B3", "_lpt\u00B3"},
           Row{"conin$", "_conin$"},
           Row{"-rf", "_-rf"},
           Row{"~ada", "_~ada"},
           Row{"a-~b", "a-~b"},
           Row{" \u00A0\u3000\u2003. ", ""},
           Row{"\u2800\u3164", ""},
           Row{"\u00A0a\u00A0b.txt", "a\u00A0b.txt"},
           Row{"bad\xFF.txt", "bad_.txt"},
           Row{kHundred + kHundred + kHundred + ".tar", kHundred + kHundred.substr(4) + kHundred.substr(100) + ".tar"},
           Row{kHundred + kHundred.substr(1) + "ü", kHundred + kHundred.substr(1)},
           Row{"", ""},
       }) {
    EXPECT_EQ(SafePartName(name), safe) << name;
  }
  Part part;
  part.type = "image/jpeg";
  EXPECT_EQ(FileNameOf(part, 3), "Part 3.jpg");
  part.type = "application/x-odd";
  part.name = "/";
  EXPECT_EQ(FileNameOf(part, 4), "Part 4.bin");
  EXPECT_EQ(NumberedName("a.tar.gz", 2), "a.tar (2).gz");
  EXPECT_EQ(NumberedName("README", 3), "README (3)");
}

struct Folder {
  test::TemporaryFolder place;
  ChosenFolder folder = *ChosenFolder::Open(place.path(), {});

  std::string Write(const std::string& name, const std::string& content) {
    const auto taken =
        folder.WriteNew(name, [&](int fd, const fs::path& file) { return platform::WriteAll(fd, file, content); });
    return taken ? *taken : "failed: " + taken.error().what.InEnglish();
  }
};

TEST(ChosenFolder, NeverWritesOverWhatIsThere) {
  Folder folder;
  folder.place.Write("a.txt", "mine");
  EXPECT_EQ(folder.Write("a.txt", "one"), "a (2).txt");
  EXPECT_EQ(folder.Write("a.txt", "two"), "a (3).txt");
  EXPECT_EQ(folder.Write("b.txt", "three"), "b.txt");
  EXPECT_EQ(test::ReadAll(folder.place / "a.txt"), "mine");
  EXPECT_EQ(test::ReadAll(folder.place / "a (3).txt"), "two");
  EXPECT_EQ(ModeOf(folder.place / "b.txt"), 0600);
}

TEST(ChosenFolder, WritesNothingOutsideIt) {
  test::TemporaryFolder elsewhere;
  elsewhere.Write("target.txt", "kept");
  Folder folder;
  fs::create_symlink(elsewhere / "target.txt", folder.place / "link.txt");
  fs::create_symlink(elsewhere / "new.txt", folder.place / "nowhere.txt");
  fs::create_directory_symlink(elsewhere.path(), folder.place / "sub");
  EXPECT_EQ(folder.Write("link.txt", "x"), "link (2).txt");
  EXPECT_EQ(folder.Write("nowhere.txt", "x"), "nowhere (2).txt");
  EXPECT_EQ(folder.Write("sub", "x"), "sub (2)");
  for (const char* name : {"sub/new.txt", "../new.txt", "..", ".", ""})
    EXPECT_TRUE(folder.Write(name, "x").starts_with("failed: ")) << name;
  EXPECT_EQ(test::ReadAll(elsewhere / "target.txt"), "kept");
  EXPECT_FALSE(fs::exists(elsewhere / "new.txt"));
}

TEST(ChosenFolder, LeavesNoHalfOfAFile) {
  Folder folder;
  const auto failed = folder.folder.WriteNew("a.txt", [](int fd, const fs::path& file) -> Result<void> {
    EXPECT_TRUE(platform::WriteAll(fd, file, "half"));
    return Error{Failure::kIo, "The disk is full."};
  });
  EXPECT_FALSE(failed);
  EXPECT_TRUE(fs::is_empty(folder.place.path()));
}

TEST(ChosenFolder, IsNeitherAFileNorTheProgramsOwn) {
  test::TemporaryFolder place;
  place.Write("file", "");
  const platform::OwnFiles own{.kept = {place / "data"}, .free = {}};
  fs::create_directory(place / "data");
  for (const char* name : {"file", "gone", "data"}) EXPECT_FALSE(ChosenFolder::Open(place / name, own)) << name;
  for (const char* name : {"file", "file/new", "data", "data/new"})
    EXPECT_FALSE(ChosenFolder::OpenOrMake(place / name, own)) << name;
  EXPECT_FALSE(fs::exists(place / "data/new"));
  EXPECT_TRUE(ChosenFolder::OpenOrMake(place / "gone/new", own));
}

TEST(ChosenFolders, MakeAnewWhatWasTakenAway) {
  const test::TemporaryFolder place;
  ChosenFolders folders({});
  for (const char* moved : {"moved", "away"}) {
    for (const char* name : {"a", "a (2)"}) {
      const auto folder = folders.OpenOrMake(place / "folder");
      ASSERT_TRUE(folder);
      EXPECT_EQ(*(*folder)->WriteNew("a", [](int, const fs::path&) { return Result<void>(); }), name);
    }
    fs::rename(place / "folder", place / moved);
  }
}

// A part that is called like the settings' journal would be rolled back into them.
TEST(ChosenFolder, GivesNoFileANameThatTheProgramTakesForItsOwn) {
  const test::TemporaryFolder place;
  const platform::OwnFiles own{.kept = {place / "settings.db"}, .free = {}};
  auto folder = ChosenFolder::Open(place.path(), own);
  ASSERT_TRUE(folder);
  const auto write = [](int, const fs::path&) { return Result<void>(); };
  for (const char* name : {"settings.db", "settings.db-journal", "settings.db-wal", "settings.db-shm"}) {
    EXPECT_EQ(folder->WriteNew(name, write).error().failure, Failure::kNotPermitted) << name;
    EXPECT_EQ(folder->WriteAs(name, write).error().failure, Failure::kNotPermitted) << name;
    EXPECT_FALSE(fs::exists(place / name)) << name;
  }
  EXPECT_TRUE(folder->WriteNew("settings.txt", write));
}

TEST(WorkingFolder, IsOursAloneAndGoesAway) {
  test::TemporaryFolder place;
  test::FakeClock clock;
  fs::path path;
  const fs::path others = place / "made/07-03-2026_09-05-07";
  fs::create_directories(others);
  {
    const auto folder = WorkingFolder::Make(place / "made", clock);
    ASSERT_TRUE(folder);
    path = folder->path();
    EXPECT_EQ(path.filename(), "07-03-2026_09-05-08") << "what exists is left alone";
    EXPECT_EQ(ModeOf(path), 0700);
    place.Write("made/07-03-2026_09-05-08/sub/file", "x");
    fs::create_directory_symlink(others, path / "link");
  }
  EXPECT_FALSE(fs::exists(path));
  EXPECT_TRUE(fs::exists(others));
  place.Write("file", "");
  EXPECT_FALSE(WorkingFolder::Make(place / "file", clock));
}

}  // namespace
}  // namespace quillcast::mail_file
