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

TEST(BodyFolder, ShowsPicturesByTheirPlace) {
  struct Case {
    const char* name;
    const char* fields;  // of the whole message
    const char* page;    // its fields, and it
    std::string picture;
    const char* shown;
  };
  const std::string gif = "\r\n\r\nGIF89a";
  for (const Case& c : std::initializer_list<Case>{
           {"absolute", "", "\r\n<img src='http://x.org/a.gif?b=1&amp;c'>",
            "Content-Location: http://x.org/\r\n a.gif?b=1&c" + gif, "<img src=\"GIF\">"},
           {"both relative", "", "\r\n<img src=a.gif>", "Content-Location: a.gif" + gif, "<img src=\"GIF\">"},
           {"of the page", "", "Content-Location: http://x.org/p/q.htm?/\r\n\r\n<img src=a.gif>",
            "Content-Location: http://x.org/p/a.gif" + gif, "<img src=\"GIF\">"},
           {"from the root", "Content-Location: http://x.org/p/q\r\n", "\r\n<td background=/a.gif>",
            "Content-Location: http://x.org/a.gif" + gif, "<td background=\"GIF\">"},
           {"of both", "Content-Location: http://x.org\r\n",
            "Content-Location: p/q\r\n\r\n<img src=//x.org/p/a.gif><img src=a.gif>", "Content-Location: a.gif" + gif,
            "<img src=\"GIF\"><img src=\"GIF\">"},
           {"of another", "", "\r\n<img src=http://y.org/a.gif>",
            "Content-Disposition: attachment\r\nContent-Location: http://x.org/a.gif" + gif, "<img>"},
           {"beside", "", "\r\n<b>a</b>", "Content-ID: <a>" + gif, "<b>a</b><p><img src=\"GIF\"></p>"},
           {"beside, nameless", "", "\r\n<img src=http://y.org/>", gif.substr(2), "<img><p><img src=\"GIF\"></p>"},
           {"to be saved", "", "\r\na", "Content-Disposition: attachment; filename=a.gif" + gif, "a"},
           {"no picture", "", "\r\na", "Content-ID: <a>\r\n\r\nno", "a"},
       }) {
    Scene scene;
    const auto written = scene.Write(std::string(c.fields) +
                                     "Content-Type: multipart/related; boundary=b\r\n\r\n--b\r\nContent-Type: "
                                     "text/html\r\n" +
                                     c.page + "\r\n--b\r\nContent-Type: image/gif\r\n" + c.picture + "\r\n--b--\r\n");
    std::string expected = "<head><meta charset=\"utf-8\"></head>" + std::string(c.shown);
    for (std::size_t at = 0; (at = expected.find("GIF", at)) != std::string::npos;)
      expected.replace(at, 3, written.pictures.size() == 1 ? "Part%202.gif" : "none");
    std::erase(expected, '\r');
    EXPECT_EQ(scene.Page(written), expected) << c.name;
  }
}

TEST(BodyFolder, ShowsPicturesBetweenTexts) {
  Scene scene;
  const std::string gif = "\r\n--b\r\nContent-Type: image/gif; name=x.gif\r\n\r\nGIF89a";
  const std::string text = "\r\n--b\r\n\r\n";
  const auto written = scene.Write("Content-Type: multipart/mixed; boundary=b\r\n" + gif + text + "1 < 2" + gif + text +
                                   "3" + text + "4\r\n--b--\r\n");
  const std::string begin = "<body><pre style=\"white-space: pre-wrap\">";
  const std::string page = scene.Page(written);
  EXPECT_NE(page.find("<p><img src=\"x.gif\"></p>"), std::string::npos) << page;
  EXPECT_NE(page.find("1 &lt; 2</pre></body></html><p><img src=\"x%20%282%29.gif\"></p>"), std::string::npos) << page;
  EXPECT_NE(page.find("3\r\n4</pre>"), std::string::npos) << page;
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
