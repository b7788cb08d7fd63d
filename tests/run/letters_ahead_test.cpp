// Letters that are made ahead: whose they are, when they were made, and that nobody of the list is lost to it.
#include "run/letters_ahead.h"

#include <gtest/gtest.h>

#include "run/fake_sending.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

std::string TextOf(const message::RenderedMessage& message) {
  std::string text;
  auto reader = message.Read();
  for (auto piece = reader.Next(); piece && !piece->empty(); piece = reader.Next()) text += *piece;
  return text;
}

document::MessageDocument ForEach() {
  document::MessageDocument document = ALetter();
  document.subject = "For $*MergeEmail*$";
  return document;
}

class Ahead : public testing::Test {
 protected:
  // Over a list of these fates; behind the last of them it fails where that is asked for.
  LettersAhead& Begin(const Fates& fates, LettersAhead::On on, bool fails = false) {
    letters_.reset();
    auto rows = std::make_unique<FakeRows>(AddressesOf(fates));
    rows->is_copy = true;
    if (fails) rows->unreadable = std::ssize(fates);
    run_ = std::make_unique<FakeRun>(std::move(rows), std::nullopt, kept_);
    return letters_.emplace(*run_, template_, on);
  }

  test::TemporaryFolder folder_;
  test::FakeClock clock_;
  test::CountingEntropy entropy_;
  message::MessageTemplate template_{ForEach(), FromAda(), folder_.path(), clock_, entropy_};
  Kept kept_;
  std::unique_ptr<FakeRun> run_;
  std::optional<LettersAhead> letters_;
};

// `what` becomes of each: 't'aken at once, 'k'ept back and taken at the end, as by a pace, 'f'orgotten before it is
// taken, 'e' for the end of all making there.
TEST_F(Ahead, GivesEachHisOwnInTheOrderOfTheList) {
  struct Case {
    std::string what;  // again and again
    int recipients;
    bool fails = false;
  };
  for (const Case& c : {Case{"t", 1000}, Case{"t", 0}, Case{"tk", 300}, Case{"kkkt", 300}, Case{"tttf", 500},
                        Case{"f", 200}, Case{std::string(90, 't') + "e", 300}, Case{"t", 200, true}, Case{"k", 64}}) {
    for (const auto on : {LettersAhead::On::kOwnThread, LettersAhead::On::kCallersThread}) {
      SCOPED_TRACE(c.what + " x " + std::to_string(c.recipients));
      Fates fates(static_cast<std::size_t>(c.recipients), 's');
      for (std::size_t i = 6; i < fates.size(); i += 7) fates[i] = 'x';
      LettersAhead& letters = Begin(fates, on, c.fails);
      const auto take = [&](const recipients::Recipient& recipient, std::int64_t position) {
        MadeLetter letter = letters.Take(recipient, position);
        ASSERT_EQ(letter.failure.has_value(), position % 7 == 0) << position;
        if (!letter.failure) {
          EXPECT_NE(TextOf(*letter.message).find("\r\nSubject: For " + FakeRows::AddressAt(position) + "\r\n"),
                    std::string::npos);
          EXPECT_EQ(letter.message->envelope.recipient.text(), FakeRows::AddressAt(position));
          EXPECT_EQ(letter.domain, DomainOf("example.org"));
        }
        letters.GiveBack(std::move(letter.message));
      };
      recipients::Recipient recipient;
      std::int64_t position = 0;
      std::int64_t count = 0;
      std::vector<std::pair<recipients::Recipient, std::int64_t>> kept_back;
      auto next = letters.Next(recipient, position);
      for (; next && *next; next = letters.Next(recipient, position)) {
        EXPECT_EQ(position, ++count);
        const char what = c.what[static_cast<std::size_t>(count - 1) % c.what.size()];
        if (what == 'f') letters.Forget();
        if (what == 'e') letters.EndMaking();
        if (what == 'k') {
          kept_back.emplace_back(recipient, position);
        } else {
          take(recipient, position);
        }
      }
      EXPECT_EQ(static_cast<bool>(next), !c.fails);
      EXPECT_EQ(count, c.fails ? c.recipients - 1 : c.recipients);
      for (const auto& [whose, place] : kept_back) take(whose, place);
    }
  }
}

TEST_F(Ahead, MakesThoseAnewThatWaitedLong) {
  LettersAhead& letters = Begin(Fates(10, 's'), LettersAhead::On::kOwnThread);
  recipients::Recipient recipient;
  std::int64_t position = 0;
  ASSERT_TRUE(*letters.Next(recipient, position));
  EXPECT_NE(TextOf(*letters.Take(recipient, position).message).find(" 09:05:07 "), std::string::npos);
  letters.Forget();
  clock_.now += std::chrono::hours(1);
  while (*letters.Next(recipient, position)) {
    EXPECT_NE(TextOf(*letters.Take(recipient, position).message).find(" 10:05:07 "), std::string::npos) << position;
  }
  EXPECT_EQ(position, 10);
}

}  // namespace
}  // namespace quillcast::run
