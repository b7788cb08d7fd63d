// The checks at the start, the folders they prepare, and the clean-up at the end.
#include "profile/startup.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>

#include "profile/clean_up.h"
#include "profile/main_window_contents.h"
#include "support/scripted_prompts.h"
#include "support/temporary_folder.h"

namespace quillcast::profile {
namespace {

namespace fs = std::filesystem;
using platform::Answer;

class MapEnvironment final : public platform::Environment {
 public:
  std::map<std::string, std::string> values;
  std::optional<std::string> Get(const char* name) const override {
    const auto found = values.find(name);
    return found == values.end() ? std::nullopt : std::optional(found->second);
  }
};

Folders FoldersIn(const test::TemporaryFolder& root) {
  Folders folders;
  folders.program = root / "program";
  folders.data = root / "data" / "";
  folders.temporary = root / "temp";
  folders.settings = root / "settings.db";
  fs::create_directories(folders.program);
  root.Write("program/Group.mdb", "template");
  return folders;
}

TEST(GetWinVer, NamesEveryRow) {
  struct Case {
    VersionRecord version;
    const char* name;
  };
  for (const Case& c : std::initializer_list<Case>{
           {{0, 3, 1, 1}, "Windows 3.1"},
           {{1, 4, 0, 0}, "Windows 95"},
           {{1, 4, 10, 0}, "Windows 98"},
           {{1, 4, 90, 0}, "Windows Millennium"},
           {{1, 4, 11, 0}, "Unknown Win32"},
           {{2, 3, 51, 1}, "Windows NT 3.51"},
           {{2, 4, 0, 1}, "Windows NT 4.0"},
           {{2, 5, 0, 3}, "Windows 2000"},
           {{2, 5, 1, 1}, "Windows XP"},
           {{2, 5, 2, 1}, "Windows Server 2003"},
           {{2, 5, 2, 3}, "Windows XP x64"},
           {{2, 5, 2, 0}, "Windows XP x64"},
           {{2, 5, 3, 1}, ""},
           {{2, 6, 0, 1}, "Windows Vista"},
           {{2, 6, 0, 3}, "Windows Server 2008"},
           {{2, 6, 1, 1}, "Windows 7"},
           {{2, 6, 1, 2}, "Windows Server 2008 R2"},
           {{2, 6, 2, 1}, "Windows 8"},
           {{2, 6, 2, 3}, "Windows 8"},
           {{2, 6, 3, 1}, ""},
           {{2, 10, 0, 1}, "Unknown Win32NT"},
           {{2, 2, 0, 1}, "Unknown Win32NT"},
           {{3, 6, 1, 1}, "Unknown Windows"},
       }) {
    EXPECT_EQ(GetWinVer(c.version), c.name) << c.version.platform << '.' << c.version.major << '.' << c.version.minor;
  }
}

TEST(MinWinSize, GoesByTheExactName) {
  EXPECT_EQ(MinWinSize("Windows XP"), (PixelSize{640, 503}));
  EXPECT_EQ(MinWinSize("Windows Vista"), (PixelSize{648, 505}));
  EXPECT_EQ(MinWinSize("Windows 7"), (PixelSize{648, 507}));
  EXPECT_EQ(MinWinSize("Windows 8"), (PixelSize{648, 508}));
  for (const char* other : {"", "Windows XP x64", "windows 7", "Unknown Win32NT"})
    EXPECT_EQ(MinWinSize(other), (PixelSize{640, 495})) << other;
}

TEST(Startup, TheFirstCheckThatRefusesWins) {
  const test::TemporaryFolder root;
  const Folders good = FoldersIn(root);
  Folders without_template = good;
  without_template.program = root / "nowhere";

  struct Case {
    const char* name;
    StartupFacts facts;
    bool has_template;
    std::optional<std::string> message;  // none: starts
    bool flash = false;
  };
  const VersionRecord now = RunningSystem();
  const VersionRecord win95{1, 4, 0, 0};
  for (const Case& c : std::initializer_list<Case>{
           {"plain", {false, false, now, PixelSize{800, 600}}, true, {}},
           {"no screen needed", {false, false, now, {}}, true, {}},
           {"second window", {true, true, win95, PixelSize{1, 1}}, false, "", true},
           {"second process", {false, true, win95, PixelSize{1, 1}}, false, ""},
           {"95", StartupFacts{false, false, win95, PixelSize{1, 1}}, false,
            "This program cannot be run in Windows 95. Quillcast will now close."},
           {"NT 3.51", StartupFacts{false, false, {2, 3, 51, 1}, {}}, true,
            "This program cannot be run in Windows NT 3.51. Quillcast will now close."},
           {"unknown", StartupFacts{false, false, {7, 0, 0, 0}, {}}, true,
            "Unable to detect the Windows version. Quillcast will now close."},
           {"98 starts", {false, false, {1, 4, 10, 0}, {}}, true, {}},
           {"2000 starts", {false, false, {2, 5, 0, 0}, {}}, true, {}},
           {"unknown Win32 starts", {false, false, {1, 4, 55, 0}, {}}, true, {}},
           {"unnamed starts", {false, false, {2, 6, 3, 1}, {}}, true, {}},
           {"narrow", StartupFacts{false, false, now, PixelSize{799, 600}}, false,
            "The screen resolution is not adequate for running Quillcast."},
           {"low", StartupFacts{false, false, now, PixelSize{800, 599}}, false,
            "The screen resolution is not adequate for running Quillcast."},
           {"no template", StartupFacts{false, false, now, PixelSize{800, 600}}, false,
            "Quillcast has failed to start because Group.mdb was not found.\r\n"
            "Re-installing the application may fix this problem."},
       }) {
    const auto refusal = CheckStartup(c.facts, c.has_template ? good : without_template);
    ASSERT_EQ(refusal.has_value(), c.message.has_value()) << c.name;
    if (!refusal) continue;
    EXPECT_EQ(refusal->message, *c.message) << c.name;
    EXPECT_EQ(refusal->flash_other_window, c.flash) << c.name;
  }
}

TEST(Startup, PreparesPrivateFoldersAndKeepsAWorkingCopy) {
  const test::TemporaryFolder root;
  const Folders folders = FoldersIn(root);
  fs::permissions(folders.DatabaseTemplate(), fs::perms::owner_read);
  ASSERT_TRUE(PrepareFolders(folders));
  EXPECT_EQ(test::ReadAll(folders.Database()), "template");
  for (const fs::path& folder : {folders.data, folders.History(), folders.temporary})
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all) << folder;
  EXPECT_EQ(fs::status(folders.Database()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_NE(fs::status(folders.DatabaseTemplate()).permissions() & fs::perms::owner_write, fs::perms::none);

  root.Write("data/Group.mdb", "mine");
  ASSERT_TRUE(PrepareFolders(folders));
  EXPECT_EQ(test::ReadAll(folders.Database()), "mine");
}

TEST(Startup, SaysWhichFolderCannotBeMade) {
  const test::TemporaryFolder root;
  Folders folders = FoldersIn(root);
  root.Write("data", "a file where the folder should be");
  const auto prepared = PrepareFolders(folders);
  ASSERT_FALSE(prepared);
  EXPECT_NE(prepared.error().what.InEnglish().find((root / "data").string()), std::string::npos)
      << prepared.error().what.InEnglish();
}

TEST(Folders, FollowTheVariables) {
  MapEnvironment environment;
  environment.values = {{"HOME", "/home/ada"}};
  Folders folders = ResolveFolders(environment, "/usr/bin/quillcast", {});
  EXPECT_EQ(folders.program, "/usr/share/quillcast");
  EXPECT_TRUE(folders.program_is_installed);
  EXPECT_EQ(folders.data.string(), "/home/ada/.local/share/Tarnwick/Quillcast Classic/");
  EXPECT_EQ(folders.settings, "/home/ada/.config/Tarnwick/Quillcast Classic/settings.db");
  EXPECT_EQ(folders.temporary, "/home/ada/.cache/Tarnwick/Quillcast Classic/Temp");

  environment.values = {{"HOME", "/home/ada"},
                        {"XDG_DATA_HOME", "/d"},
                        {"XDG_CONFIG_HOME", "not/abs"},
                        {"Temp", "/t"},
                        {"QUILLCAST_PROGRAM_FOLDER", "/opt/q"}};
  folders = ResolveFolders(environment, "/usr/bin/quillcast", {});
  EXPECT_EQ(folders.program, "/opt/q");
  EXPECT_FALSE(folders.program_is_installed);
  EXPECT_EQ(folders.data.string(), "/d/Tarnwick/Quillcast Classic/");
  EXPECT_EQ(folders.settings, "/home/ada/.config/Tarnwick/Quillcast Classic/settings.db");
  EXPECT_EQ(folders.temporary, "/t");

  folders = ResolveFolders(environment, "/usr/bin/quillcast", "/p");
  EXPECT_EQ(folders.data.string(), "/p/data/");
  EXPECT_EQ(folders.settings, "/p/settings.db");
  EXPECT_EQ(folders.temporary, "/p/Temp");

  const test::TemporaryFolder root;
  fs::create_directory(root / "one");
  fs::create_directory_symlink(root / "one", root / "link");
  const auto spelled = ResolveFolders(environment, "/usr/bin/quillcast", root / "one");
  for (const char* other : {"link", "./one/", "one/../one", "link/."})
    EXPECT_EQ(ResolveFolders(environment, "/usr/bin/quillcast", root / other).data, spelled.data) << other;
  const auto at_home = [&](const fs::path& home) {
    environment.values = {
        {"HOME", home}, {"XDG_DATA_HOME", home / "d"}, {"XDG_CONFIG_HOME", home / "c"}, {"Temp", home / "t"}};
    const auto found = ResolveFolders(environment, "/usr/bin/quillcast", {});
    return std::array{found.data, found.settings, found.temporary};
  };
  for (const char* other : {"link", "one/./", "one/../one"}) EXPECT_EQ(at_home(root / other), at_home(root / "one"));

  environment.values.clear();
  folders = ResolveFolders(environment, "/usr/bin/quillcast", {});
  EXPECT_EQ(folders.data.string(), "/usr/share/quillcast/Application Data/");
}

TEST(CleanUp, RemovesWhatTheProgramLeftAndNothingElse) {
  for (const bool installed : {true, false}) {
    const test::TemporaryFolder root;
    Folders folders = FoldersIn(root);
    folders.program_is_installed = installed;
    ASSERT_TRUE(PrepareFolders(folders));
    for (const char* file :
         {"temp/Preview.eml", "temp/Preview.htm", "temp/other.txt", "program/a.tmp", "program/a.txt",
          "data/ImportBody/deep/picture.png", "data/ImportBody/needed/picture.png", "data/History/x.txt"}) {
      root.Write(file, "x");
    }
    fs::permissions(root / "temp/Preview.eml", fs::perms::owner_read);
    fs::permissions(root / "data/ImportBody/deep", fs::perms::owner_read | fs::perms::owner_exec);
    CleanUpAtClose(folders, [](const std::string& name) { return name == "needed"; });
    for (const char* gone : {"temp/Preview.eml", "temp/Preview.htm", "data/ImportBody/deep"})
      EXPECT_FALSE(fs::exists(root / gone)) << gone;
    EXPECT_TRUE(fs::exists(root / "data/ImportBody/needed/picture.png"));
    CleanUpAtClose(folders, [](const std::string&) { return false; });
    EXPECT_FALSE(fs::exists(root / "data/ImportBody"));
    EXPECT_EQ(fs::exists(root / "program/a.tmp"), !installed);
    for (const char* kept : {"temp/other.txt", "program/a.txt", "program/Group.mdb", "data/History/x.txt"})
      EXPECT_TRUE(fs::exists(root / kept)) << kept;
  }
}

TEST(MainWindow, NamesASenderOnlyWhenItHasNameAndAddress) {
  for (const auto& [name, email, shown] :
       std::initializer_list<std::array<const char*, 3>>{{"Ada", "ada@example.org", "Ada <ada@example.org>"},
                                                         {"Ada", "", ""},
                                                         {"", "ada@example.org", ""},
                                                         {"", "", ""}}) {
    const test::TemporaryFolder root;
    SettingsStore settings(root / "settings.db");
    ASSERT_TRUE(settings.Write("Account", "Name", name));
    ASSERT_TRUE(settings.Write("Account", "Email", email));
    EXPECT_EQ(*SenderText(settings), shown);
  }
}

TEST(MainWindow, ShowsWhatTheSettingsChoose) {
  const test::TemporaryFolder root;
  SettingsStore settings(root / "settings.db");
  auto contents = LoadMainWindow(settings, {"Customers"});
  ASSERT_TRUE(contents);
  EXPECT_EQ(contents->from, "");
  EXPECT_EQ(contents->method, "Personal");
  EXPECT_EQ(contents->priority, "Normal");
  EXPECT_EQ(contents->format, "HTML");
  EXPECT_FALSE(contents->signature_html);

  for (const auto& [section, key, value] : std::initializer_list<std::array<const char*, 3>>{
           {"Account", "Name", "Ada"},
           {"Account", "Email", "ada@example.org"},
           {"Account", "Method", "Bulk"},
           {"Advanced", "Encoding", "Plain"},
           {"Signature", "Status", "1"},
           {"Signature", "Message", "<p>A"},
       }) {
    ASSERT_TRUE(settings.Write(section, key, value));
  }
  contents = LoadMainWindow(settings, {});
  ASSERT_TRUE(contents);
  EXPECT_EQ(contents->from, "Ada <ada@example.org>");
  EXPECT_EQ(contents->method, "Bulk");
  EXPECT_EQ(contents->format, "Text");
  EXPECT_EQ(contents->signature_html, "<p>A");

  ASSERT_TRUE(settings.Write("Advanced", "Encoding", "other"));
  EXPECT_EQ(LoadMainWindow(settings, {})->format, "");
}

}  // namespace
}  // namespace quillcast::profile
