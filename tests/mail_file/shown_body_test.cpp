// What of a stranger's body is shown: which pictures, and how much.
#include "mail_file/shown_body.h"

#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace quillcast::mail_file {
namespace {

constexpr const char* kPngInBase64 = "iVBORw0KGgo=";

ShownBody Show(const std::string& message, std::size_t most = 100000) {
  const test::TemporaryFolder folder;
  const auto loading = Load(folder.Write("message.eml", message), {});
  auto shown = ReadShownBody(*loading->message, most, nullptr);
  EXPECT_TRUE(shown);
  return std::move(shown).ValueOr({});
}

TEST(ShownBody, HasThePicturesOfTheMessageAndNoOthers) {
  const auto shown = Show(
      std::string("Content-Type: multipart/related; boundary=b\r\n\r\n--b\r\nContent-Type: text/html\r\n\r\n"
                  "<p onclick=x>a<img src=cid:a@x><img src=https://x.org/b.png><img src=cid:a@x>"
                  "<img src=file:///c.png><script>d</script><img src=cid:e><img src='data:image/gif,GIF89a'>"
                  "<img src='data:image/gif,no'><img src='data:image/gif,GIF89a%00%0%00%%00%3'>\r\n"
                  "--b\r\nContent-Type: image/png\r\nContent-ID: <a@x>\r\nContent-Transfer-Encoding: base64\r\n\r\n") +
      kPngInBase64 + "\r\n--b\r\nContent-Type: image/png\r\nContent-ID: <e>\r\n\r\n<svg/>\r\n--b--\r\n");
  EXPECT_EQ(shown.html, "<p>a<img src=\"cid:0\"><img src=\"cid:0\"><img src=\"cid:1\"><img src=\"cid:2\"></p>");
  ASSERT_EQ(shown.pictures.size(), 3U);
  EXPECT_EQ(shown.pictures[2].bytes, std::string("GIF89a\0%0\0%\0%3", 14));
  EXPECT_EQ(shown.pictures[1].type + shown.pictures[1].bytes, "image/gifGIF89a");
  EXPECT_EQ(shown.pictures[0].type, "image/png");
  EXPECT_EQ(shown.pictures[0].bytes, "\x89PNG\r\n\x1A\n");
  EXPECT_FALSE(shown.is_cut);
}

TEST(ShownBody, SaysWhenTheBodyGoesOn) {
  const std::string line = "caf\u00e9 and some words\r\n";
  std::string text;
  while (text.size() < 200000) text += line;
  EXPECT_FALSE(Show("Subject: x\r\n\r\n" + text, 1 << 20).is_cut);
  EXPECT_TRUE(Show("Subject: x\r\n\r\n" + text, 100000).is_cut);

  while (text.size() <= (std::size_t{33} << 20)) text += text;
  const auto shown = Show("Subject: x\r\n\r\n" + text, std::size_t{8} << 20);
  EXPECT_TRUE(shown.is_cut);
  EXPECT_LE(shown.html.size(), std::size_t{3} << 20) << "the first MiB";
  EXPECT_NE(shown.html.find("caf\u00e9"), std::string::npos) << "read as UTF-8, which no cut breaks";
}

TEST(ShownBody, IsGivenUp) {
  const test::TemporaryFolder folder;
  platform::CancelToken cancel;
  cancel.Request();
  const auto loading = Load(folder.Write("message.eml", "Subject: x\r\n\r\nHello\r\n"), {});
  const auto shown = ReadShownBody(*loading->message, 1000, &cancel);
  ASSERT_FALSE(shown);
  EXPECT_EQ(shown.error().failure, Failure::kTryAgain);
}

}  // namespace
}  // namespace quillcast::mail_file
