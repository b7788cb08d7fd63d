// The fast quoted-printable encoders against one that goes byte by byte, and the two ways to scan against each other.
#include "mime/quoted_printable.h"

#include <gtest/gtest.h>

#include <array>
#include <map>

#include "mime/quoted_printable_scan.h"
#include "platform/text.h"
#include "support/random_text.h"

namespace quillcast::mime {
namespace {

std::vector<std::string> AwkwardAmongPlain(int plain) {
  std::vector<std::string> letters = {".", "F", "From ", "r", "o", "m", " ", "\t", "=", "\r\n", "\r", "\n", "\xC3\xA9"};
  letters.insert(letters.end(), static_cast<std::size_t>(plain), "x");
  return letters;
}

// Round by round the awkward characters alone, among more and more plain ones, and any byte.
std::vector<std::string> LettersOfRound(int round) {
  constexpr std::array kPlain = {0, 20, 200, 1000};
  return round % 5 == 4 ? test::EveryByte() : AwkwardAmongPlain(kPlain[static_cast<std::size_t>(round % 5)]);
}

class SlowEncoder {
 public:
  explicit SlowEncoder(std::size_t column) : column_(column) {}

  void Encode(std::string_view bytes, bool at_end) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const std::string_view rest = bytes.substr(i);
      if (rest.starts_with("\r\n")) {
        out_ += "\r\n";
        column_ = 0;
        ++i;
        continue;
      }
      const std::string_view after = rest.substr(1);
      const bool blank = rest[0] == ' ' || rest[0] == '\t';
      const bool plain =
          blank ? !after.empty() && !after.starts_with("\r\n") : rest[0] > ' ' && rest[0] < '\x7F' && rest[0] != '=';
      const std::string_view from = "From ";
      const bool unsafe = rest[0] == '.' || rest.starts_with(from) || (!at_end && from.substr(0, rest.size()) == rest);
      const auto starts_line = [&] { return column_ == 0 || column_ == 75; };
      Write(rest[0], plain && !(unsafe && starts_line()));
    }
  }

  const std::string& out() const { return out_; }
  std::size_t column() const { return column_; }

 private:
  void Write(char c, bool plain) {
    constexpr std::string_view kHex = "0123456789ABCDEF";
    const auto byte = static_cast<std::uint8_t>(c);
    const std::string written = plain ? std::string{c} : std::string{'=', kHex[byte / 16], kHex[byte % 16]};
    if (column_ + written.size() > 75) {
      out_ += "=\r\n";
      column_ = 0;
    }
    out_ += written;
    column_ += written.size();
  }

  std::string out_;
  std::size_t column_;
};

TEST(QuotedPrintable, IsWhatTheSlowEncoderWrites) {
  std::mt19937 random(3);
  for (int round = 0; round < 5000; ++round) {
    const std::string text = test::RandomText(random, LettersOfRound(round), 600);
    std::size_t column = random() % 76;
    const bool at_end = random() % 2 == 0;
    SlowEncoder slow(column);
    std::string out;
    const std::vector<std::string_view> whole = {text};
    for (const std::string_view piece : round % 3 == 0 ? whole : test::RandomPieces(random, text)) {
      AppendQuotedPrintable(out, piece, column, at_end);
      slow.Encode(piece, at_end);
      ASSERT_EQ(column, slow.column());
    }
    ASSERT_EQ(out, slow.out());
  }
}

#ifdef __SSE2__
TEST(QuotedPrintableScan, VectorsAndTheTableAgree) {
  using namespace quoted_printable;  // NOLINT(google-build-using-namespace)
  std::mt19937 random(4);
  for (int round = 0; round < 6000; ++round) {
    const std::string text = test::RandomText(random, LettersOfRound(round), round % 2 == 0 ? 40 : 200);
    // Of its own size, so that a sanitizer sees what is read behind the end.
    const std::vector<char> exact(text.begin(), text.end());
    const std::string_view bytes(exact.data(), exact.size());
    ASSERT_EQ(VectorScan::Count(bytes), PortableScan::Count(bytes));
    const std::size_t room = random() % 76;
    std::vector<char> fast(bytes.size());
    std::vector<char> slow(bytes.size());
    const std::size_t copied = VectorScan::CopyPlain(fast.data(), bytes, room);
    ASSERT_EQ(copied, PortableScan::CopyPlain(slow.data(), bytes, room));
    ASSERT_EQ(std::string_view(fast.data(), copied), std::string_view(slow.data(), copied));
  }
}
#endif

std::string EncodeFile(const std::vector<std::string_view>& pieces) {
  QuotedPrintableFileEncoder encoder;
  std::string out;
  for (const std::string_view piece : pieces) encoder.Encode(piece, out);
  encoder.Finish(out);
  return out;
}

TEST(QuotedPrintableFile, KeepsEveryByteInReadableLines) {
  const std::string x75(75, 'x');
  const std::map<std::string, std::string> cases = {
      {"", ""},
      {"a", "a\r\n"},
      {"a\n", "a=0A\r\n"},
      {"one\r\ntwo\nthree\r", "one=0D=0A=\r\ntwo=0A=\r\nthree=0D\r\n"},
      {"\n\n", "=0A=\r\n=0A\r\n"},
      {"a ", "a=20\r\n"},
      {"a \n", "a =0A\r\n"},
      {" \t", " =09\r\n"},
      {"a\n ", "a=0A=\r\n=20\r\n"},
      {".a\n.\nFrom me\nFor", "=2Ea=0A=\r\n=2E=0A=\r\n=46rom me=0A=\r\n=46or\r\n"},
      {x75, x75 + "\r\n"},
      {x75 + "\n", x75 + "=\r\n=0A\r\n"},
      {std::string(72, 'x') + "\ny", std::string(72, 'x') + "=0A=\r\ny\r\n"},
      {std::string(74, 'x') + " ", std::string(74, 'x') + "=\r\n=20\r\n"},
      {std::string(74, 'x') + " y", std::string(74, 'x') + " =\r\ny\r\n"},
      {x75 + " y", x75 + "=\r\n y\r\n"},
  };
  for (const auto& [file, expected] : cases) EXPECT_EQ(EncodeFile({file}), expected);
}

TEST(QuotedPrintableFile, AnyFileComesBackHoweverItIsCut) {
  std::mt19937 random(5);
  for (int round = 0; round < 4000; ++round) {
    const std::string file = test::RandomText(random, LettersOfRound(round), 600);
    const std::string out = EncodeFile({file});
    ASSERT_EQ(EncodeFile(test::RandomPieces(random, file)), out);
    if (file.empty()) continue;
    ASSERT_TRUE(out.ends_with("\r\n"));
    const std::string_view content = std::string_view(out).substr(0, out.size() - 2);  // the rest is the delimiter's
    ASSERT_EQ(DecodeQuotedPrintable(content), file);
    for (std::string_view line : platform::Split(content, '\n')) {
      if (line.ends_with('\r')) line.remove_suffix(1);
      ASSERT_LE(line.size(), 76U);
      ASSERT_FALSE(line.starts_with('.') || line.starts_with("From ")) << line;
      ASSERT_FALSE(line.empty() || line.ends_with(' ') || line.ends_with('\t')) << line;
    }
  }
}

}  // namespace
}  // namespace quillcast::mime
