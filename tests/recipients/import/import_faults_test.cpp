// The disk is full after n bytes, for a sweep of n: the report never claims what the store does not hold.
#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <set>

#include "recipients/import/recipient_import.h"
#include "recipients/store_fixture.h"
#include "support/full_disk.h"
#include "support/room_on_disk.h"

namespace quillcast::recipients {
namespace {

constexpr int kEndedWell = 0;
constexpr int kToldOfTheDisk = 1;
constexpr int kSaidNothing = 2;

// Imports in a process of its own, whose files cannot grow beyond `limit` bytes.
int ImportWithin(rlim_t limit, const ImportRequest& request, const ImportPlaces& places) {
  const pid_t child = ::fork();
  if (child == 0) {
    const test::RoomOnDisk room(limit);
    const platform::CancelToken cancel;
    const auto outcome = ImportRecipients(request, places, cancel, nullptr);
    if (!outcome.error) ::_exit(kEndedWell);
    const bool names_the_file = outcome.error->what.InEnglish().find(".mdb") != std::string::npos ||
                                outcome.error->what.InEnglish().find("ReportButton.txt") != std::string::npos;
    ::_exit(names_the_file ? kToldOfTheDisk : kSaidNothing);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class ImportFaultTest : public StoreTest {
 protected:
  std::set<std::string> Stored(std::int64_t group) {
    auto cursor = store().ListRecipients(group, "");
    std::set<std::string> all;
    Recipient recipient;
    while (*cursor->Next(recipient)) all.insert(recipient.email());
    return all;
  }
  // The addresses of the lines that are whole.
  std::set<std::string> Claimed(const std::filesystem::path& report) {
    constexpr std::string_view kLabel = "Email Added : ";
    std::set<std::string> all;
    std::ifstream lines(report, std::ios::binary);
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with(kLabel) && line.ends_with('\r'))
        all.insert(line.substr(kLabel.size(), line.size() - kLabel.size() - 1));
    }
    return all;
  }

  // Of addresses, a line each, into the group A.
  ImportRequest RequestFor(const std::string& lines) {
    return {.file = NewFile("list.txt", lines),
            .group = "A",
            .mode = ImportMode::kDelimited,
            .reading = {},
            .mapping = *ParseMapping("Email Address=1")};
  }
};

TEST_F(ImportFaultTest, AFullDiskLeavesStoreAndReportInStep) {
  constexpr rlim_t kStep = 96 * 1024;
  constexpr rlim_t kEnough = 2 * 1024 * 1024;
  std::string text;
  for (int i = 0; i < 12000; ++i) text += fmt::format("user{}@example.org,First,Last\n", i * 7919 % 12000);
  const ImportRequest request = RequestFor(text);
  const auto group = NewGroup("A");
  const auto empty = FileText(folder_ / "Group.mdb");
  std::set<int> ends;
  std::set<std::size_t> kept;
  for (rlim_t limit = 0; limit <= kEnough; limit += kStep) {
    std::filesystem::remove(folder_ / "Group.mdb-journal");
    NewFile("Group.mdb", empty);
    const ImportPlaces places{folder_ / "Group.mdb", folder_ / "ReportButton.txt", "UTF-8"};
    std::filesystem::remove(places.report);
    const int end = ImportWithin(limit, request, places);
    ASSERT_TRUE(end == kEndedWell || end == kToldOfTheDisk) << limit << ": " << end;
    ends.insert(end);
    const auto stored = Stored(group);
    const auto claimed = Claimed(places.report);
    kept.insert(stored.size());
    for (const std::string& address : claimed) ASSERT_TRUE(stored.contains(address)) << limit << ": " << address;
    if (end == kEndedWell) {
      ASSERT_EQ(claimed.size(), 12000U) << limit;
    }
  }
  // The sweep has seen all of it: nothing, a first batch, everything; and both ends.
  EXPECT_EQ(ends, (std::set<int>{kEndedWell, kToldOfTheDisk}));
  EXPECT_EQ(kept, (std::set<std::size_t>{0, 4096, 12000}));
}

TEST_F(ImportFaultTest, AWriteThatFailsLeavesAllOrNothing) {
  const ImportRequest request = RequestFor("ada@x.org\nbob@x.org\n");
  const auto group = NewGroup("A");
  const auto empty = FileText(folder_ / "Group.mdb");
  const ImportPlaces places{folder_ / "Group.mdb", folder_ / "ReportButton.txt", "UTF-8"};
  const platform::CancelToken cancel;
  for (const auto kind : {test::FullDisk::Kind::kFull, test::FullDisk::Kind::kBroken}) {
    int failures = 0;
    for (int writes = 0;; ++writes) {
      std::filesystem::remove(folder_ / "Group.mdb-journal");
      NewFile("Group.mdb", empty);
      std::optional<Error> error;
      {
        const test::FullDisk disk(kind, writes);
        error = ImportRecipients(request, places, cancel, nullptr).error;
        if (!test::FullDisk::has_failed()) break;
      }
      failures += error ? 1 : 0;
      EXPECT_EQ(Stored(group).size(), error ? 0U : 2U) << writes;
      EXPECT_EQ(Claimed(places.report), Stored(group)) << writes;
    }
    EXPECT_GT(failures, 2);
    EXPECT_EQ(Stored(group).size(), 2U);
  }
}

}  // namespace
}  // namespace quillcast::recipients
