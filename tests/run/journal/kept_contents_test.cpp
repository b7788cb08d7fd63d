// The files of mailings, and what is left of what is forgotten.
#include <sys/stat.h>
#include <unistd.h>

#include <map>

#include "run/journal/journal_fixture.h"

namespace quillcast::run {
namespace {

class KeptContentsTest : public JournalTest {
 protected:
  KeptFile KeepFile(RunJournal& journal, const std::string& name, std::string_view content) {
    const auto fd = Take(platform::OpenForReading(root_.Write("files/" + name, content)));
    ::lseek(fd.get(), static_cast<off_t>(content.size() / 2), SEEK_SET);  // wherever it stands
    return Take(journal.Keep(name, fd.get()));
  }
  static std::string ContentOf(RunJournal& journal, const KeptFile& file) {
    const auto fd = Take(journal.Open(file));
    std::string content(static_cast<std::size_t>(Take(platform::FileSize(fd.get(), file.name))), '\0');
    content.resize(Take(platform::ReadSome(fd.get(), file.name, content.data(), content.size())));
    return content;
  }
  std::unique_ptr<JournalledRun> BeginFor(RunJournal& journal, const std::string& mark, std::vector<KeptFile> files) {
    std::vector<std::string> addresses;
    for (int i = 0; i < 400; ++i) addresses.push_back(mark + std::to_string(i) + "@example.org");
    test::FakeRows rows(addresses);
    auto run = Take(journal.Begin({mark + " subject", mark + " group", mark + " inputs", std::move(files)}, rows, {},
                                  {mark + " base"}));
    recipients::Recipient row;
    for (std::int64_t position = 0; Take(run->Next(row, position));) {
      run->GoesOut(position);
      Take(run->Record());
      smtp::Outcome outcome = Sent(position);
      outcome.reply.text = mark + std::to_string(position);
      run->Settled(position, outcome);
    }
    return run;
  }
  // How often it stands in any of the journal's files.
  int Times(const std::string& mark) const {
    int times = 0;
    for (const auto& entry : std::filesystem::directory_iterator(root_.path())) {
      if (!entry.is_regular_file()) continue;
      const std::string content = test::ReadAll(entry.path());
      for (std::size_t at = content.find(mark); at != std::string::npos; at = content.find(mark, at + 1)) ++times;
    }
    return times;
  }
};

TEST_F(KeptContentsTest, KeepsEachContentOnceAndGivesItBack) {
  const auto journal = OpenJournal();
  std::string large;
  for (int i = 0; i < 40'000; ++i) large += "line " + std::to_string(i) + "\n";
  std::map<std::string, std::string> contents = {
      {"empty", ""}, {"piece", std::string(65536, 'q')}, {"large", large}, {"nuls", std::string(1000, '\0')}};
  std::vector<KeptFile> files;
  for (const auto& [name, content] : contents) {
    files.push_back(KeepFile(*journal, name, content));
    EXPECT_EQ(ContentOf(*journal, files.back()), content) << name;
  }
  // By another program: sha256sum.
  EXPECT_EQ(files[0].content, "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  const auto before = std::filesystem::file_size(root_ / "runs.db-wal");
  EXPECT_EQ(KeepFile(*journal, "another name", large).content, files[1].content);
  EXPECT_LT(std::filesystem::file_size(root_ / "runs.db-wal"), before + 100'000);
  const auto run = BeginFor(*journal, "FIRST", files);
  const auto inputs = Take(journal->Inputs(1));
  ASSERT_EQ(inputs.files.size(), files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    EXPECT_EQ(inputs.files[i].name, files[i].name);
    EXPECT_EQ(inputs.files[i].content, files[i].content);
  }
  test::FakeRows rows(1);
  const auto lost = journal->Begin({"S", "G", "i", {{"gone", std::string(64, '0')}}}, rows, {}, {"base"});
  ASSERT_FALSE(lost);
  EXPECT_EQ(lost.error().failure, Failure::kNoInput);
}

TEST_F(KeptContentsTest, NothingIsLeftOfWhatIsForgotten) {
  for (const std::string forgotten : {"FIRST", "SECOND", "THIRD"}) {
    std::filesystem::remove_all(root_.path());
    std::filesystem::create_directories(root_.path());
    auto journal = OpenJournal();
    const KeptFile shared = KeepFile(*journal, "shared", "SHARED" + std::string(100'000, 's'));
    MailingId id = 0;
    for (const std::string mark : {"FIRST", "SECOND", "THIRD"}) {
      std::string content;
      for (int i = 0; i < 20'000; ++i) content += mark + " ";
      auto run = BeginFor(*journal, mark, {shared, KeepFile(*journal, mark, content)});
      EXPECT_GT(Times(mark), 20'000);
      if (mark == forgotten) id = Take(journal->Find(run->id())).id;
      if (mark != "SECOND") Take(run->End());  // which is killed, and leaves what it told last
      run.reset();
      std::filesystem::remove(root_ / "files" / mark);
    }
    Take(journal->Forget(id));
    for (const std::string mark : {"FIRST", "SECOND", "THIRD"}) {
      EXPECT_EQ(Times(mark) > 0, mark != forgotten) << mark << " after " << forgotten << ": " << Times(mark);
    }
    EXPECT_EQ(Take(journal->List()).mailings.size(), 2U);
    EXPECT_EQ(ContentOf(*journal, shared).size(), 100'006U);
    for (const MailingEntry& entry : Take(journal->List()).mailings) Take(journal->Forget(entry.id));
    EXPECT_EQ(journal->Open(shared).error().failure, Failure::kNoInput);
    EXPECT_EQ(Times("SHARED"), 0);
    EXPECT_LT(std::filesystem::file_size(root_ / "runs.db"), 100'000U);
  }
}

TEST_F(KeptContentsTest, ForgetsAContentThatWasKeptForNothingAfterADay) {
  const auto journal = OpenJournal();
  const KeptFile unused = KeepFile(*journal, "unused", "for a mailing that was cancelled");
  Take(BeginFor(*journal, "FIRST", {})->Record());
  EXPECT_EQ(ContentOf(*journal, unused).size(), 32U) << "somebody may be about to begin";
  clock_.now += std::chrono::hours(25);
  Take(BeginFor(*journal, "SECOND", {})->Record());
  EXPECT_EQ(journal->Open(unused).error().failure, Failure::kNoInput);
}

}  // namespace
}  // namespace quillcast::run
