// What is packed into parts beyond their transfer encoding: winmail.dat with rich text and messages in it, files in the
// lines of encoded texts, BinHex that grows.
#include <gtest/gtest.h>

#include "mail_file/bin_hex.h"
#include "mail_file/compressed_rtf.h"
#include "mail_file/mail_message.h"
#include "mail_file/rtf_text.h"
#include "mail_file/winmail_bytes.h"
#include "platform/base64.h"
#include "support/temporary_folder.h"

namespace quillcast::mail_file {
namespace {

using namespace std::string_literals;

struct Scene {
  test::TemporaryFolder folder;
  std::optional<MailMessage> message;

  explicit Scene(const std::string& bytes) {
    auto loading = *Load(folder.Write("a.eml", bytes), {});
    EXPECT_EQ(loading.code(), LoadCode::kLoaded);
    message = std::move(loading.message);
  }
  std::string ContentOf(const Part& part) const {
    std::string out;
    auto reader = message->Open(part);
    for (auto block = reader->Next(); block && !block->empty(); block = reader->Next()) out += *block;
    return out;
  }
  // "depth type name: content" of each attachment.
  std::vector<std::string> Attachments() const {
    std::vector<std::string> list;
    for (const Part& part : message->parts()) {
      if (part.marker != Marker::kAttachment) continue;
      list.push_back(std::to_string(part.depth) + " " + part.type + " " + part.name + ": " + ContentOf(part));
    }
    return list;
  }
};

Scene Winmail(const std::string& attributes) {
  return Scene("Content-Type: application/ms-tnef\nContent-Transfer-Encoding: base64\n\n" +
               platform::Base64(Tnef(attributes)) + "\n");
}

TEST(Winmail, TakesItsRichTextForTheBodyWhereItHasNoOther) {
  struct Row {
    const char* rtf;
    const char* text;
    const char* html;
    bool is_kept;  // the rich text too
  };
  for (
      const auto& [rtf, text, html, is_kept] : {
          Row{R"({\rtf1\ansi Dear {\b Ada},\par Hello})", "Dear Ada,\r\nHello", "", true},
          Row{R"({\rtf1\ansi\fromhtml1 {\*\htmltag64 <p>}\htmlrtf {\b\htmlrtf0 Hi\'e9\htmlrtf }\htmlrtf0{\*\htmltag72 </p>}})",
              "", "<p>Hi\xC3\xA9</p>", false},
      }) {
    const Scene scene = Winmail(Attribute(1, 0x00069003, Properties(1, RtfProperty(rtf))));
    EXPECT_EQ(*scene.message->TextBody(), text);
    EXPECT_EQ(*scene.message->HtmlBody(), html);
    EXPECT_EQ(scene.Attachments(),
              is_kept ? std::vector<std::string>{"1 application/rtf : "s + rtf} : std::vector<std::string>());
  }
  const Scene other = Winmail(Attribute(1, 0x0002800C, "plain words") +
                              Attribute(1, 0x00069003, Properties(1, RtfProperty("{\\rtf1 rich}"))));
  EXPECT_EQ(*other.message->TextBody(), "plain words");
  EXPECT_TRUE(other.Attachments().empty());
}

TEST(Winmail, AttachesWhatAnAttachedMessageHolds) {
  const std::string mark = "\7\3\2\0\0\0\0\0\xC0\0\0\0\0\0\0\x46"s;
  const auto message = [&](const std::string& inner) {
    return Attribute(2, 0x00069002, "") + Attribute(2, 0x00018010, "Fwd: plan\0"s) +
           Attribute(2, 0x00069005, Properties(1, Property(0x000D, 0x3701, mark + Tnef(inner))));
  };
  const std::string file =
      Attribute(2, 0x00069002, "") + Attribute(2, 0x00018010, "a.txt\0"s) + Attribute(2, 0x0006800F, "in a");
  const Scene scene = Winmail(Attribute(1, 0x0002800C, "outer words") +
                              message(Attribute(1, 0x0002800C, "inner words") + file + message(file)) + file);
  EXPECT_EQ(*scene.message->TextBody(), "outer words");
  EXPECT_EQ(scene.Attachments(), (std::vector<std::string>{"2 text/plain a.txt: in a", "3 text/plain a.txt: in a",
                                                           "2 text/plain : inner words", "1 text/plain a.txt: in a"}));
  std::vector<std::string> holders;
  for (const Part& part : scene.message->parts()) {
    if (part.type == "application/ms-tnef") holders.push_back(part.name);
  }
  EXPECT_EQ(holders, (std::vector<std::string>{"", "Fwd: plan", "Fwd: plan"}));
}

TEST(RtfText, IsItsWords) {
  for (const auto& [rtf, text] : {
           std::pair(R"({\rtf1 a\tab b\line c\cell d\row})", "a\tb\r\nc\td\r\n"),
           {R"({\rtf1{\fonttbl{\f0 Arial;}{\f1\fcharset204 Cyr;}}{\colortbl;\red1;}{\*\generator x}\f1 \'ff\f0\'e9})",
            "яé"},
           {R"(\u8364?\uc2\u-10179??\u-8704??x\emdash\~\-\_y)", "€\U0001F600x—\u00A0-y"},
           {R"({\pict\bin3 }}}ab}{\info{\author me}}\{c\}\\)", "{c}\\"},
           {R"({{{}}}}}}still)", "still"},
           {"\\'4", ""},
       }) {
    for (const std::size_t cut : {std::size_t{1}, std::string_view(rtf).size()}) {
      RtfTextDecoder decoder;
      std::string out;
      for (std::string_view rest = rtf; !rest.empty(); rest.remove_prefix(std::min(cut, rest.size())))
        decoder.Decode(rest.substr(0, cut), out);
      decoder.Finish(out);
      EXPECT_EQ(out, text) << rtf;
    }
  }
}

// Two samples of the format's own description.
TEST(CompressedRtf, ComesToItsText) {
  const std::string hello =
      "\x2d\0\0\0\x2b\0\0\0LZFu\xf1\xc5\xc7\xa7\x03\x00\x0a\x00rcpg125\x42\x32\x0a\xf3 hel\x09\x00 bw\x05\xb0ld}\x0a\x80\x0f\xa0"s;
  const std::string again = "\x1a\0\0\0\x1c\0\0\0LZFu\xe2\xd4\x4bQA\0\x04 WXYZ\x0dn}\x01\x0e\xb0"s;
  for (const auto& [packed, text] : {std::pair(hello, "{\\rtf1\\ansi\\ansicpg1252\\pard hello world}\r\n"),
                                     {again, "{\\rtf1 WXYZWXYZWXYZWXYZWXYZ}"}}) {
    CompressedRtfDecoder decoder;
    std::string out;
    for (const char c : packed + "behind it") decoder.Decode({&c, 1}, out);
    EXPECT_EQ(out, text);
  }
}

TEST(EncodedTexts, GiveTheFilesInTheirLines) {
  std::string text =
      "Here:\nbegin 644 a.txt\n#0V%T\n`\nend\nand\r\n=ybegin line=128 size=1 name=b\n\xFF\n=yend size=1\n";
  std::string file = "begin 644 large.bin\n";
  for (int i = 0; i < 20'000; ++i) file += "M" + std::string(60, 'A') + "\n";
  text += file + "`\nend\nBye\n";
  const std::string folded = [&] {
    std::string out = platform::Base64(text);
    for (std::size_t at = 76; at < out.size(); at += 78) out.insert(at, "\r\n");
    return out;
  }();
  std::string quoted;
  for (const char c : text) quoted += c == '=' ? "=3D" : std::string(1, c);
  for (const auto& [encoding, content] : {std::pair("base64", folded), {"quoted-printable", quoted}, {"8bit", text}}) {
    test::TemporaryFolder folder;
    const auto loading =
        *Load(folder.Write("a.eml", "Content-Transfer-Encoding: "s + encoding + "\r\n\r\n" + content), {});
    EXPECT_EQ(loading.code(), LoadCode::kUnknownEncoding) << "of the file in yEnc";
    const MailMessage& message = *loading.message;
    EXPECT_EQ(*message.TextBody(), "Here:\r\nand\r\nBye\r\n") << encoding;
    std::vector<std::string> names;
    for (const Part& part : message.parts()) names.push_back(part.name);
    ASSERT_EQ(names, (std::vector<std::string>{"", "a.txt", "b", "large.bin"})) << encoding;
    EXPECT_EQ(DigestOf(*message.Open(message.parts()[1]), nullptr)->size, 3U);
    EXPECT_FALSE(message.Open(message.parts()[2]));
    EXPECT_EQ(DigestOf(*message.Open(message.parts()[3]), nullptr)->size, 20'000U * 45) << encoding;
  }
}

// A named text becomes the body behind the others, where there is no other.
TEST(EncodedTexts, GiveTheFilesOfANamedTextToo) {
  const test::TemporaryFolder folder;
  const auto loading = *Load(folder.Write("a.eml",
                                          "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n"
                                          "Content-Disposition: inline; filename=n.txt\r\n\r\n"
                                          "Here:\nbegin 644 a.txt\n#0V%T\n`\nend\n\r\n--b--\r\n"),
                             {});
  EXPECT_EQ(*loading.message->TextBody(), "Here:\r\n");
  EXPECT_EQ(loading.message->parts().back().name, "a.txt");
}

// Of a file of zeros, which BinHex makes 64 times as small, up to where its sum would stand.
std::string BinHexOfZeros(std::uint32_t size) {
  std::string bytes = "\1a\0TEXTabcd\0\0"s;
  for (const std::uint32_t fork : {size, std::uint32_t{0}}) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(fork >> shift & 0xFF);
  }
  bytes += "\0\0"s;
  for (std::uint32_t done = 0; done < size; done += 255) bytes += "\0\x90\xFF"s;
  constexpr std::string_view kDigits = "!\"#$%&'()*+,-012345689@ABCDEFGHIJKLMNPQRSTUVXYZ[`abcdefhijklmpqr";
  std::string text = ":";
  unsigned bits = 0;
  int count = 0;
  for (const char c : bytes + "\0"s) {
    bits = bits << 8 | static_cast<unsigned char>(c);
    for (count += 8; count >= 6; count -= 6) text += kDigits[bits >> (count - 6) & 63];
  }
  return text;
}

TEST(BinHex, DoesNotGrowBeyondMeasure) {
  for (const auto& [size, given, verdict] : {std::tuple(900'000U, 900'000U, LoadCode::kBinHexCrc),  // as it has none
                                             {50'000'000U, 1'050'000U, LoadCode::kBinHex}}) {
    BinHexDecoder decoder;
    std::string out;
    decoder.Decode(BinHexOfZeros(size), out);
    EXPECT_NEAR(static_cast<double>(out.size()), given, 2000);
    EXPECT_EQ(decoder.Verdict(), verdict);
  }
}

}  // namespace
}  // namespace quillcast::mail_file
