// The settings store: names without case, no cache, two processes, a damaged file.
#include "profile/settings_store.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "platform/sqlite.h"
#include "support/temporary_folder.h"

namespace quillcast::profile {
namespace {

namespace fs = std::filesystem;

std::string ReadOr(const SettingsStore& store, const char* section, const char* key, const char* fallback) {
  auto value = store.Read(section, key, fallback);
  return value ? *value : "failed: " + value.error().what.InEnglish();
}

TEST(SettingsStore, ReadsWritesAndDeletes) {
  const test::TemporaryFolder root;
  SettingsStore store(root / "deep/er/settings.db");
  EXPECT_EQ(ReadOr(store, "Account", "Wrap", "76"), "76");
  EXPECT_FALSE(fs::exists(store.file())) << "a read made the file";

  ASSERT_TRUE(store.Write("Account", "Wrap", "100"));
  ASSERT_TRUE(store.Write("Advanced", "Wrap", "other"));
  ASSERT_TRUE(store.Write("aCCOUNT", "wRAP", "it's; DROP TABLE Settings --\r\n\xE2\x82\xAC"));
  EXPECT_EQ(ReadOr(store, "ACCOUNT", "WRAP", "76"), "it's; DROP TABLE Settings --\r\n\xE2\x82\xAC");
  ASSERT_TRUE(store.Write("Account", "Empty", ""));
  EXPECT_EQ(ReadOr(store, "Account", "Empty", "fallback"), "") << "an empty value is a value";

  const std::array<SectionValue, 2> two = {{{"Account", "Port", "25"}, {"Keyring", "Port", "none"}}};
  ASSERT_TRUE(store.WriteAll(two));
  const std::array<SettingName, 4> names = {
      {{"keyring", "PORT", "x"}, {"Account", "Empty", "x"}, {"Account", "Timeout", "1"}, {"Account", "port", "x"}}};
  EXPECT_EQ(*store.ReadAll(names), (std::vector<std::string>{"none", "", "1", "25"}));
  EXPECT_EQ(*SettingsStore(root / "none.db").ReadAll(names), (std::vector<std::string>{"x", "x", "1", "x"}));

  ASSERT_TRUE(store.DeleteSection("account"));
  EXPECT_EQ(ReadOr(store, "Account", "Wrap", "76"), "76");
  EXPECT_EQ(ReadOr(store, "Advanced", "Wrap", ""), "other");
  EXPECT_EQ(fs::status(store.file()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(fs::status(store.file().parent_path()).permissions(), fs::perms::owner_all);
}

TEST(SettingsStore, IsOneApplicationsInAFileOfTheOwnersAlone) {
  const test::TemporaryFolder root;
  SettingsStore store(root / "settings.db");
  ASSERT_TRUE(store.Write("Account", "Name", "Ada"));
  {
    auto database = platform::Database::Open(store.file(), platform::OpenMode::kReadWrite);
    ASSERT_TRUE(database->Execute("INSERT INTO Settings VALUES ('Another Program', 'Account', 'Name', 'Eve')"));
    auto names = database->Prepare("SELECT Application FROM Settings WHERE Value = 'Ada'");
    ASSERT_TRUE(names && *names->Step());
    EXPECT_EQ(names->Text(0), "Quillcast Classic");
  }
  EXPECT_EQ(ReadOr(store, "Account", "Name", ""), "Ada");
  ASSERT_TRUE(store.DeleteSection("Account"));
  fs::permissions(store.file(),
                  fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read | fs::perms::others_read);
  ASSERT_TRUE(store.Write("Account", "Password", "secret"));
  EXPECT_EQ(fs::status(store.file()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  auto database = platform::Database::Open(store.file(), platform::OpenMode::kReadWrite);
  auto others = database->Prepare("SELECT count(*) FROM Settings WHERE Application = 'Another Program'");
  ASSERT_TRUE(others && *others->Step());
  EXPECT_EQ(others->Int(0), 1);
}

TEST(SettingsStore, TwoProcessesSeeEachOthersWrites) {
  const test::TemporaryFolder root;
  SettingsStore store(root / "settings.db");
  ASSERT_TRUE(store.Write("Account", "Name", "parent"));
  const pid_t child = ::fork();
  if (child == 0) {
    SettingsStore other(root / "settings.db");
    const bool saw = ReadOr(other, "Account", "Name", "") == "parent";
    bool wrote = true;
    for (int n = 0; n <= 20; ++n) wrote = wrote && other.Write("Account", "Name", "child " + std::to_string(n));
    ::_exit(saw && wrote ? 0 : 1);
  }
  for (int n = 0; n < 20; ++n) ASSERT_TRUE(store.Write("Account", "Email", std::to_string(n)));
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(ReadOr(store, "Account", "Name", ""), "child 20");
  EXPECT_EQ(ReadOr(store, "Account", "Email", ""), "19");
}

TEST(SettingsStore, SetsADamagedFileAside) {
  const test::TemporaryFolder root;
  const std::string rubbish = std::string(5000, 'x');
  for (int round = 1; round <= 2; ++round) {
    root.Write("settings.db", rubbish);
    SettingsStore store(root / "settings.db");
    EXPECT_FALSE(store.Read("Account", "Name", "")) << "a damaged file must not read as empty";
    const auto checked = store.CheckFile();
    ASSERT_FALSE(checked);
    const std::string aside = "settings.db.damaged-" + std::to_string(round);
    EXPECT_NE(checked.error().what.InEnglish().find(aside), std::string::npos) << checked.error().what.InEnglish();
    EXPECT_EQ(test::ReadAll(root / aside), rubbish);
    EXPECT_TRUE(store.CheckFile());
    EXPECT_EQ(ReadOr(store, "Account", "Name", "default"), "default");
  }
  {
    auto foreign = platform::Database::Open(root / "settings.db", platform::OpenMode::kCreate);
    ASSERT_TRUE(foreign);
    ASSERT_TRUE(foreign->Execute("CREATE TABLE Accounts (a)"));
  }
  SettingsStore store(root / "settings.db");
  EXPECT_FALSE(store.CheckFile());
  EXPECT_TRUE(fs::exists(root / "settings.db.damaged-3"));
}

}  // namespace
}  // namespace quillcast::profile
