// The locks on a database file, which belong to the process and not to the connection.
#include "platform/sqlite.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "support/temporary_folder.h"

namespace quillcast::platform {
namespace {

// Another process, which tries to write once it is told to: it begins before the file is opened here, because SQLite
// would take what it inherits for its own.
class OtherProcess {
 public:
  explicit OtherProcess(const std::filesystem::path& file) {
    if (::pipe(pipe_.data()) != 0) return;
    child_ = ::fork();
    if (child_ != 0) return;
    char told = 0;
    if (::read(pipe_[0], &told, 1) != 1) ::_exit(100);
    auto database = Database::Open(file, OpenMode::kReadWrite, {.lock_wait = {}});
    if (!database) ::_exit(101);
    const auto begun = Transaction::Begin(*database);
    ::_exit(begun ? 0 : static_cast<int>(begun.error().failure));
  }
  ~OtherProcess() {
    ::close(pipe_[0]);
    ::close(pipe_[1]);
  }
  // 0 where it could, else the Failure's number.
  int Writes() const {
    if (::write(pipe_[1], "x", 1) != 1) return -1;
    int status = 0;
    ::waitpid(child_, &status, 0);
    return WEXITSTATUS(status);
  }

 private:
  std::array<int, 2> pipe_{};
  pid_t child_ = -1;
};

TEST(Sqlite, ASecondConnectionKeepsTheLocksOfTheFirst) {
  const test::TemporaryFolder root;
  ASSERT_TRUE(Database::Open(root / "store.db", OpenMode::kCreate));
  for (const OpenMode mode : {OpenMode::kReadOnly, OpenMode::kReadWrite, OpenMode::kCreate}) {
    const OtherProcess other(root / "store.db");
    auto first = Database::Open(root / "store.db", OpenMode::kReadWrite);
    ASSERT_TRUE(first);
    const auto writing = Transaction::Begin(*first);
    ASSERT_TRUE(writing);
    EXPECT_TRUE(Database::Open(root / "store.db", mode));
    EXPECT_EQ(other.Writes(), static_cast<int>(Failure::kTryAgain)) << static_cast<int>(mode);
  }
  EXPECT_EQ(OtherProcess(root / "store.db").Writes(), 0) << "nobody has it now";
}

TEST(Sqlite, OpensOrdinaryFilesAlone) {
  const test::TemporaryFolder root;
  ASSERT_EQ(::mkfifo((root / "pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink(root / "gone", root / "link");
  for (const OpenMode mode : {OpenMode::kReadOnly, OpenMode::kReadWrite, OpenMode::kCreate}) {
    for (const char* name : {"pipe", "link", "."}) {
      const auto opened = Database::Open(root / name, mode);
      ASSERT_FALSE(opened) << name;
      EXPECT_EQ(opened.error().failure, Failure::kNoInput) << name;
    }
  }
  EXPECT_FALSE(std::filesystem::exists(root / "gone"));
}

}  // namespace
}  // namespace quillcast::platform
