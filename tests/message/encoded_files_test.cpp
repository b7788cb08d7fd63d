// A file that was taken in, in whatever form, comes back byte for byte.
#include "message/encoded_files.h"

#include <gtest/gtest.h>

#include "mime/quoted_printable.h"
#include "platform/base64.h"
#include "platform/text.h"
#include "platform/utf8.h"
#include "support/temporary_folder.h"

namespace quillcast::message {
namespace {

using enum TransferEncoding;

std::string Bytes(const EncodedFiles& files, std::size_t file) {
  std::string out;
  std::string buffer;
  for (;;) {
    const auto bytes = files.ReadAt(file, out.size(), buffer);
    EXPECT_TRUE(bytes);
    if (!bytes || bytes->empty()) break;
    out += *bytes;
  }
  EXPECT_EQ(out.size(), files.SizeOf(file));
  return out;
}

// As a reader has it, for whom the last line end of an encoded part belongs to the boundary.
std::string Decoded(std::string bytes, WireForm form) {
  if (IsAsItStands(form)) return bytes;
  EXPECT_TRUE(bytes.empty() || bytes.ends_with("\r\n"));
  for (const auto line : platform::Split(bytes, '\n')) EXPECT_LE(line.size(), 77U);
  if (form == WireForm::kBase64) return platform::DecodeBase64(platform::ReplaceAll(bytes, "\r\n", "")).value_or("?");
  return mime::DecodeQuotedPrintable(bytes.substr(0, bytes.empty() ? 0 : bytes.size() - 2));
}

std::string Repeated(std::string_view text, std::size_t size) {
  std::string out;
  while (out.size() < size) out += text;
  return out;
}

TEST(EncodedFiles, ComeBackByteForByte) {
  struct Case {
    std::string content;
    WireForm as_it_stands;  // what kNone makes of it
    bool holds_utf8 = true;
  };
  std::string all_bytes;
  for (int byte = 0; byte < 256; ++byte) all_bytes += static_cast<char>(byte);
  const std::string large_text = Repeated("a line of text, with a blank at its end \r\n", 2'000'000);
  const std::vector<Case> cases = {
      {"", WireForm::kSevenBit},
      {"x", WireForm::kSevenBit},
      {std::string(56, 'x'), WireForm::kSevenBit},
      {std::string(57, '.'), WireForm::kSevenBit},
      {std::string(58, ' '), WireForm::kSevenBit},
      {"a\r\n\r\n", WireForm::kSevenBit},
      {"caf\xE9\r\n", WireForm::kEightBit, false},
      {"caf\u00E9\r\n", WireForm::kEightBit},
      {"caf\xC3", WireForm::kEightBit, false},
      {"\x1B$B8l\x1B(B\r\n", WireForm::kSevenBit, false},
      {std::string("a\0", 2), WireForm::kBase64, false},
      {"." + Repeated("\u20AC\r\n", 700'000), WireForm::kEightBit},  // characters that are cut between two blocks
      {"a\n", WireForm::kBase64},
      {"a\r", WireForm::kBase64},
      {"From me\r\n", WireForm::kBase64},
      {all_bytes, WireForm::kBase64, false},
      {large_text, WireForm::kSevenBit},
      {large_text + "\xFF\r\n", WireForm::kEightBit, false},
      {large_text + "\n", WireForm::kBase64},  // found out after a part of it was kept
      {Repeated(all_bytes, 1'500'000), WireForm::kBase64, false},
      {"small, behind what went to the scratch file\r\n", WireForm::kSevenBit},
  };
  const test::TemporaryFolder folder;
  EncodedFiles files(folder.path());
  for (const auto encoding : {kNone, kQuotedPrintable, kBase64}) {
    for (const Case& c : cases) {
      const auto path = folder.Write("file", c.content);
      const auto fd = platform::OpenForReading(path);
      ASSERT_TRUE(fd);
      ASSERT_FALSE(files.Add(fd->get(), path, encoding));
    }
  }
  for (std::size_t file = 0; file < 3 * cases.size(); ++file) {
    const Case& c = cases[file % cases.size()];
    const auto encoding = static_cast<TransferEncoding>(file / cases.size());
    const WireForm wanted = encoding == kNone     ? c.as_it_stands
                            : encoding == kBase64 ? WireForm::kBase64
                                                  : WireForm::kQuotedPrintable;
    ASSERT_EQ(files.FormOf(file), wanted) << file;
    ASSERT_EQ(files.HoldsUtf8(file), c.holds_utf8) << file;
    ASSERT_TRUE(Decoded(Bytes(files, file), wanted) == c.content) << file;
    if (wanted != WireForm::kEightBit) continue;
    const auto other = files.InForm(file, WireForm::kBase64);
    ASSERT_TRUE(other);
    ASSERT_TRUE(Decoded(Bytes(files, *other), WireForm::kBase64) == c.content) << file;
    EXPECT_EQ(*files.InForm(file, WireForm::kBase64), *other) << "it is made once";
    ASSERT_TRUE(Bytes(files, file) == c.content) << "the first form stays";
  }
}

// A message may be half written when the next one, to a server that takes less, needs another form.
TEST(EncodedFiles, AViewHoldsWhileFormsAreAdded) {
  const test::TemporaryFolder folder;
  const std::string content = Repeated("caf\xE9, and a line of text\r\n", 300'000);
  const auto path = folder.Write("file", content);
  EncodedFiles files(folder.path());
  for (int n = 0; n < 2; ++n) {
    const auto fd = platform::OpenForReading(path);
    ASSERT_TRUE(fd);
    ASSERT_FALSE(files.Add(fd->get(), path, kNone));
  }
  std::string buffer;
  const auto view = files.ReadAt(0, 0, buffer);
  ASSERT_TRUE(view);
  for (const std::size_t file : {0, 1}) ASSERT_TRUE(files.InForm(file, WireForm::kBase64));
  EXPECT_TRUE(content.starts_with(*view));
  EXPECT_TRUE(Bytes(files, 1) == content);
}

TEST(EncodedFiles, TellWhyNotWhenTheScratchFileCannotGrow) {
  const test::TemporaryFolder folder;
  const auto path = folder.Write("large", std::string(3'000'000, 'x'));
  for (const auto encoding : {kNone, kQuotedPrintable, kBase64}) {
    EncodedFiles files(folder / "missing");
    const auto fd = platform::OpenForReading(path);
    ASSERT_TRUE(fd);
    const auto trouble = files.Add(fd->get(), path, encoding);
    ASSERT_TRUE(trouble);
    EXPECT_EQ(trouble->code, smtp::ResultCode::kFileNotRead);
    EXPECT_NE(trouble->error.remedy.InEnglish().find("Temp"), std::string::npos);
  }
}

}  // namespace
}  // namespace quillcast::message
