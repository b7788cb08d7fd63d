// Letters into files: what they are called, what a mailbox holds, and that nothing else is touched.
#include "run/file_carrier.h"

#include <gtest/gtest.h>

#include <deque>

#include "run/mbox_lines.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

using test::ReadAll;

// A message in pieces of so many octets.
class Pieces final : public smtp::MessageSource {
 public:
  Pieces(std::string text, std::size_t size) : text_(std::move(text)), size_(size) {}
  Result<std::string_view> Next() override {
    if (at_ == text_.size() && text_.starts_with("unreadable")) return Error{Failure::kIo, "price.pdf is gone.", ""};
    const auto piece = std::string_view(text_).substr(std::min(at_, text_.size()), size_);
    at_ += piece.size();
    return piece;
  }
  void Rewind() override { at_ = 0; }

 private:
  std::string text_;
  std::size_t size_;
  std::size_t at_ = 0;
};

struct Letter {
  std::string address;
  std::string text;
};

class Letters final : public smtp::JobSource {
 public:
  Letters(const std::vector<Letter>& letters, std::size_t piece) {
    for (const Letter& letter : letters) {
      sources_.emplace_back(letter.text, piece);
      smtp::Job& job = jobs_.emplace_back();
      job.envelope.sender = *smtp::Address::From("ada@sender.example");
      job.envelope.recipient = *smtp::Address::From(letter.address);
      job.message = &sources_.back();
      job.position = std::ssize(jobs_);
    }
  }
  std::string outcomes;  // a letter each: "w"ritten, "f"ailed
  std::string reason;    // of the last that failed
  std::function<void()> after_first;

  smtp::Job* NextJob() override { return taken_ == jobs_.size() ? nullptr : &jobs_[taken_++]; }
  void Finished(smtp::Job&, const smtp::Outcome& outcome) override {
    outcomes += outcome.state == smtp::State::kSent ? 'w' : 'f';
    if (outcome.state != smtp::State::kSent) reason = outcome.reason;
    if (after_first && outcomes.size() == 1) after_first();
  }
  void LogLine(std::string_view) override {}
  void Progress(std::uint64_t, std::uint64_t) override {}

 private:
  std::deque<Pieces> sources_;
  std::deque<smtp::Job> jobs_;
  std::size_t taken_ = 0;
};

class FileCarrierTest : public ::testing::Test {
 protected:
  std::optional<Error> Carry(const Result<KeepLetter>& keep, Letters& letters) {
    FileCarrier carrier(*keep, cancel_);
    EXPECT_EQ(carrier.delivery(), Delivery::kWritten);
    carrier.Carry(letters);
    return carrier.trouble();
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path()))
      if (!entry.is_directory()) names.push_back(entry.path().lexically_relative(folder_.path()).string());
    std::sort(names.begin(), names.end());
    return names;
  }

  const test::TemporaryFolder folder_;
  const platform::OwnFiles own_{{folder_ / "own"}, {}};
  test::FakeClock clock_;
  platform::CancelToken cancel_;
};

TEST_F(FileCarrierTest, NamesEachFileByItsPlaceAndItsRecipient) {
  const std::string long_name(64, 'x');
  Letters letters({{"ada@example.org", "a\r\n"},
                   {"../../up@example.org", "b\r\n"},
                   {"a*b|c?d@example.org", "c\r\n"},
                   {"j\xC3\xB6rg@\xC3\xB6l.example", "d\r\n"},
                   {long_name + "@example.org", "e\r\n"}},
                  2);
  EXPECT_FALSE(Carry(IntoFolder(folder_ / "new" / "out", own_), letters));
  EXPECT_EQ(letters.outcomes, "wwwww");
  EXPECT_EQ(Names(), (std::vector<std::string>{
                         "new/out/000001 ada@example.org.eml", "new/out/000002 .._.._up@example.org.eml",
                         "new/out/000003 a_b_c_d@example.org.eml", "new/out/000004 j\xC3\xB6rg@\xC3\xB6l.example.eml",
                         "new/out/000005 " + long_name + "@example.org.eml"}));
  const auto first = folder_ / "new" / "out" / "000001 ada@example.org.eml";
  EXPECT_EQ(ReadAll(first), "a\r\n");
  EXPECT_EQ(std::filesystem::status(first).permissions(), std::filesystem::perms(0600));
}

TEST_F(FileCarrierTest, StopsAtWhatIsThereAndWritesOverNothing) {
  const auto old = folder_.Write("out/000002 bob@example.org.eml", "mine");
  std::filesystem::create_symlink(folder_ / "elsewhere", folder_ / "out" / "000001 cy@example.org.eml");
  const auto elsewhere = folder_.Write("box", "mine");
  for (const auto& people :
       {std::vector<Letter>{{"ada@example.org", "a"}, {"bob@example.org", "b"}, {"eve@x.org", "e"}},
        std::vector<Letter>{{"cy@example.org", "c"}, {"eve@x.org", "e"}}}) {
    Letters letters(people, 9);
    const auto trouble = Carry(IntoFolder(folder_ / "out", own_), letters);
    ASSERT_TRUE(trouble);
    EXPECT_EQ(trouble->failure, Failure::kCannotCreate);
    EXPECT_EQ(letters.outcomes, people.size() == 3 ? "wf" : "f") << "the rest is not tried";
    EXPECT_NE(letters.reason.find(people.size() == 3 ? "000002 bob" : "000001 cy"), std::string::npos)
        << letters.reason;
  }
  EXPECT_EQ(ReadAll(old), "mine");
  EXPECT_FALSE(std::filesystem::exists(folder_ / "elsewhere"));
  std::filesystem::create_symlink(folder_ / "elsewhere", folder_ / "link");
  for (const char* there : {"box", "link", "own/box", "gone/box"}) {
    const auto refused = IntoMbox(folder_ / there, own_, clock_);
    ASSERT_FALSE(refused) << there;
    EXPECT_NE(refused.error().what.InEnglish().find(there), std::string::npos);
  }
  EXPECT_FALSE(IntoFolder(folder_ / "own", own_));
  EXPECT_FALSE(IntoFolder(folder_ / "box", own_));
  EXPECT_EQ(ReadAll(elsewhere), "mine");
}

TEST_F(FileCarrierTest, LeavesNoPartOfALetter) {
  for (const bool mbox : {false, true}) {
    Letters letters({{"ada@example.org", "Subject: a\r\n\r\nb\r\n"},
                     {"bob@example.org", "unreadable" + std::string(600000, 'x')},
                     {"cy@x.org", "c"}},
                    400000);
    const auto trouble =
        Carry(mbox ? IntoMbox(folder_ / "box", own_, clock_) : IntoFolder(folder_ / "out", own_), letters);
    EXPECT_TRUE(trouble);
    EXPECT_EQ(letters.outcomes, "wf");
  }
  EXPECT_EQ(Names(), (std::vector<std::string>{"box", "out/000001 ada@example.org.eml"}));
  EXPECT_TRUE(ReadAll(folder_ / "box").ends_with("\n\nb\n\n"));
}

TEST_F(FileCarrierTest, StopsBetweenTwoLettersAtACancel) {
  Letters letters({{"ada@example.org", "a"}, {"bob@example.org", "b"}}, 9);
  letters.after_first = [this] { cancel_.Request(); };
  EXPECT_FALSE(Carry(IntoFolder(folder_ / "out", own_), letters));
  EXPECT_EQ(letters.outcomes, "w");
}

// However the message is cut into pieces.
TEST_F(FileCarrierTest, WritesAMailboxThatReadersCanTakeApart) {
  const std::string text =
      "From: Ada\r\nSubject: x\r\n\r\nFrom here\r\n>From there\r\n>>From far\r\n> From\r\nFromage\r\n "
      "From\r\n>\r\nFrom \r\n"
      "Fro";
  const std::string expected =
      "From: Ada\nSubject: x\n\n>From here\n>>From there\n>>>From far\n> From\nFromage\n From\n>\n>From \nFro\n\n";
  for (std::size_t size = 1; size <= text.size(); ++size) {
    MboxLines lines;
    std::string out;
    for (std::size_t at = 0; at < text.size(); at += size) lines.Append(std::string_view(text).substr(at, size), out);
    lines.End(out);
    ASSERT_EQ(out, expected) << size;
  }
  Letters letters({{"ada@example.org", "a: b\r\n\r\nc\r\n"}, {"bob@example.org", "d: e\r\n\r\n"}}, 3);
  EXPECT_FALSE(Carry(IntoMbox(folder_ / "box", own_, clock_), letters));
  const std::string box = ReadAll(folder_ / "box");
  const std::string from = box.substr(0, box.find('\n') + 1);
  EXPECT_TRUE(from.starts_with("From ada@sender.example ")) << from;
  EXPECT_EQ(box, from + "a: b\n\nc\n\n" + from + "d: e\n\n\n");
  EXPECT_EQ(std::filesystem::status(folder_ / "box").permissions(), std::filesystem::perms(0600));
}

}  // namespace
}  // namespace quillcast::run
