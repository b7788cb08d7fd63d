// The body as a folder: which parts it shows, what their files are called, and what is left where one cannot be had.
#include "mail_file/body_folder.h"

#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace quillcast::mail_file {
namespace {

const std::string kPng = "\x89PNG\r\n\x1A\n";
constexpr const char* kPngInBase64 = "iVBORw0KGgo=";

// A page, and parts beside it, each with its header and content.
std::string Related(const std::string& page, const std::vector<std::string>& parts) {
  std::string message =
      "Subject: x\r\nContent-Type: multipart/related; boundary=b\r\n\r\n--b\r\nContent-Type: text/html\r\n\r\n" + page;
  for (const std::string& part : parts) message += "\r\n--b\r\n" + part;
  return message + "\r\n--b--\r\n";
}

std::string Base64Part(const std::string& header, const std::string& content = kPngInBase64) {
  return header + "\r\nContent-Transfer-Encoding: base64\r\n\r\n" + content;
}

struct Scene {
  test::TemporaryFolder place;
  ChosenFolder folder = *ChosenFolder::Open(place.path(), {});

  BodyFolder Write(const std::string& message) {
    const auto loading = Load(place.Write("message.eml", message), {});
    auto written = WriteBodyFolder(*loading->message, folder, {.forbids_loading = false});
    EXPECT_TRUE(written);
    return std::move(written).ValueOr({});
  }
  std::string Page(const BodyFolder& written) const { return test::ReadAll(place / written.page); }
};

TEST(BodyFolder, ShowsItsPicturesInPlace) {
  Scene scene;
  const auto written = scene.Write(
      Related("<img src=\"cid:a@x\"><img src=\"CID:b%40x\"><img src=cid:a@x><img src=cid:none><img src=cid:svg>"
              "<td background=cid:fake><img src=http://x/><img src='data:image/png;base64,iVBOR\nw0KGgo='>"
              "<img src='data:image/png;base64,iVBOR\nw0KGgo='><img src='DATA:text/html,GIF89a'><img "
              "src=data:image/png;base64,PHNjcmlwdD4=><img src='data:image/svg+xml,<svg onload=x>'>",
              {Base64Part("Content-Type: image/png; name=\"../my logo.png\"\r\nContent-ID: <a@x>"),
               Base64Part("Content-Type: text/html; name=page.html\r\nContent-ID: <b@x>"),
               "Content-Type: image/svg+xml\r\nContent-ID: <svg>\r\n\r\n<svg onload=x>",
               Base64Part("Content-Type: image/png; name=fake.png\r\nContent-ID: <fake>", "PHNjcmlwdD4=")}));
  EXPECT_EQ(scene.Page(written),
            "<head><meta charset=\"utf-8\"></head><img src=\"my%20logo.png\"><img src=\"page.html.png\">"
            "<img src=\"my%20logo.png\"><img><img><td><img><img src=\"picture.png\"><img src=\"picture.png\">"
            "<img src=\"picture.gif\"><img><img>");
  EXPECT_EQ(written.pictures, (std::vector<std::string>{"my logo.png", "page.html.png", "picture.png", "picture.gif"}))
      << "each once";
  EXPECT_EQ(test::ReadAll(scene.place / "picture.png"), kPng);
  EXPECT_EQ(test::ReadAll(scene.place / "my logo.png"), kPng);
  EXPECT_TRUE(written.failures.empty());
}

TEST(BodyFolder, KeepsAttachedMessagesApart) {
  Scene scene;
  const auto written =
      scene.Write(Related("<img src=cid:a@x>", {"Content-Type: message/rfc822\r\n\r\n" +
                                                Base64Part("Content-Type: image/png\r\nContent-ID: <a@x>")}));
  EXPECT_TRUE(written.pictures.empty());
}

TEST(BodyFolder, ShowsATextAndReplacesNothing) {
  Scene scene;
  scene.place.Write("index.html", "mine");
  const auto written = scene.Write("Subject: x\r\n\r\n1 < 2\r\n");
  EXPECT_EQ(written.page, "index (2).html");
  EXPECT_NE(scene.Page(written).find("1 &lt; 2\r\n"), std::string::npos);
  EXPECT_EQ(test::ReadAll(scene.place / "index.html"), "mine");
}

TEST(BodyFolder, IsGivenUp) {
  Scene scene;
  platform::CancelToken cancel;
  cancel.Request();
  const auto loading = Load(scene.place.Write("message.eml", "Subject: x\r\n\r\nHello\r\n"), {});
  const auto written = WriteBodyFolder(*loading->message, scene.folder, {.cancel = &cancel});
  ASSERT_FALSE(written);
  EXPECT_EQ(written.error().failure, Failure::kTryAgain);
  EXPECT_FALSE(std::filesystem::exists(scene.place / "index.html"));
}

}  // namespace
}  // namespace quillcast::mail_file
