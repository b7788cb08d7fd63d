// The body as a folder: which parts it shows, what their files are called, and what is left where one cannot be had.
#include "mail_file/body_folder.h"

#include <gtest/gtest.h>

#include "platform/text.h"
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
            "Content-Location: p/q\r\n\r\n<img src=//x.org/p/a.gif><img src=a.gif>", "Content-Location: p/a.gif" + gif,
            "<img src=\"GIF\"><img src=\"GIF\">"},
           {"with dots", "", "Content-Location: http://x.org/p/q/r.htm\r\n\r\n<img src=.././b/../../a.gif>",
            "Content-Location: http://x.org/p/./../a.gif" + gif, "<img src=\"GIF\">"},
           {"dots of no base", "", "\r\n<img src=./b/../a.gif>", "Content-Location: ./a.gif" + gif,
            "<img src=\"GIF\">"},
           {"of <base>", "", "Content-Location: http://y.org/\r\n\r\n<base href='http://x.org/p/'><img src=../a.gif>",
            "Content-Location: http://x.org/a.gif" + gif, "<img src=\"GIF\">"},
           {"of a relative <base>", "Content-Location: http://x.org/q/r\r\n",
            "\r\n<base target=_top><base href=../p/><base href=http://y.org/><img src=a.gif>",
            "Content-Location: http://x.org/p/a.gif" + gif, "<img src=\"GIF\">"},
           {"of Content-Base", "",
            "Content-Base: http://x.org/p/\r\nContent-Location: http://y.org/q\r\n\r\n<img src=a.gif>",
            "Content-Location: http://x.org/p/a.gif" + gif, "<img src=\"GIF\">"},
           {"of a Content-Base around it", "Content-Base: http://x.org/p/\r\n", "\r\n<img src=http://x.org/p/a.gif>",
            "Content-Location: a.gif" + gif, "<img src=\"GIF\">"},
           {"of the picture's Content-Base", "", "\r\n<img src=http://x.org/p/a.gif>",
            "Content-Base: http://x.org/p/\r\nContent-Location: a.gif" + gif, "<img src=\"GIF\">"},
           {"of the message", "Content-Location: http://x.org/p/q\r\n", "\r\n<img src=http://x.org/p/a.gif>",
            "Content-Location: a.gif" + gif, "<img src=\"GIF\">"},
           {"in capitals, with a place in it", "", "\r\n<img src='HTTP://X.org/%61%20b.gif#top'>",
            "Content-Location: http://x.org/a%20b.gif" + gif, "<img src=\"GIF\">"},
           {"as it is written", "", "Content-Location: http://x.org/p/q.htm\r\n\r\n<img src=a.gif>",
            "Content-Location: a.gif" + gif, "<img src=\"GIF\">"},
           {"of one folder up", "", "Content-Location: http://x.org/p/q.htm\r\n\r\n<img src=../a.gif>",
            "Content-Location: http://x.org/p/a.gif" + gif, "<img><p><img src=\"GIF\"></p>"},
           {"of another", "", "\r\n<img src=http://y.org/a.gif>",
            "Content-Disposition: attachment\r\nContent-Location: http://x.org/a.gif" + gif, "<img>"},
           {"beside", "", "\r\n<b>a</b>", "Content-ID: <a>" + gif, "<b>a</b><p><img src=\"GIF\"></p>"},
           {"beside, nameless", "", "\r\n<img src=http://y.org/>", gif.substr(2), "<img><p><img src=\"GIF\"></p>"},
           {"used by a style", "", "\r\n<td style=\"color:red; background:url(&quot;cid:a&quot;)\">a",
            "Content-ID: <a>" + gif, "<td style=\"color:red;\">a"},
           {"used by a sheet", "", "\r\n<style>td{background:URL( 'cid:a' )}</style>a", "Content-ID: <a>" + gif,
            "<style>td{}</style>a"},
           {"used by srcset", "", "\r\n<img src=http://y.org/ srcset='http://y.org/2 2x, cid:a 3x'>",
            "Content-ID: <a>" + gif, "<img>"},
           {"used by a place", "", "Content-Location: http://x.org/p/q\r\n\r\n<b style='background: url(a.gif)'>a</b>",
            "Content-Location: http://x.org/p/a.gif" + gif, "<b style=\"\">a</b>"},
           {"used by one program", "", "\r\n<!--[if mso]><v:fill src='cid:a'><![endif]-->a", "Content-ID: <a>" + gif,
            "a"},
           {"linked alone", "", "\r\n<a href=cid:a>a</a>", "Content-ID: <a>" + gif, "<a>a</a><p><img src=\"GIF\"></p>"},
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
    EXPECT_EQ(platform::ReplaceAll(scene.Page(written), "<!DOCTYPE html>", ""), expected) << c.name;
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

// What a sheet beside the page shows is used as what the page's own shows.
TEST(BodyFolder, LooksIntoSheetsBesideThePage) {
  Scene scene;
  const auto written =
      scene.Write(Related("<link rel=stylesheet href=cid:s>x",
                          {"Content-Type: text/css\r\nContent-ID: <s>\r\nContent-Location: "
                           "http://x.org/s/s.css\r\n\r\np{background:url(../a)}",
                           Base64Part("Content-Type: image/png; name=a.png\r\nContent-Location: http://x.org/a"),
                           Base64Part("Content-Type: image/png; name=b.png\r\nContent-Location: http://x.org/b")}));
  EXPECT_EQ(written.pictures, std::vector<std::string>{"b.png"});
}

TEST(BodyFolder, KeepsPicturesOfOneNameApart) {
  const auto gif = [](const std::string& name, const std::string& fields) {
    return "Content-Type: image/gif; name=" + name + ".gif\r\n" + fields + "\r\nGIF89a";
  };
  const std::string id = "Content-ID: <a>\r\n";
  const std::string place = "Content-Location: http://x.org/a\r\n";
  const auto within = [](std::string message) {  // what lies in the message
    message.erase(0, message.find("Content-Type"));
    return platform::ReplaceAll(platform::ReplaceAll(message, "--b", "--c"), "=b\r", "=c\r");
  };
  struct Case {
    const char* name;
    std::string message;
    const char* shown;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"the first serves", Related("<img src=cid:a>", {gif("1", id), gif("2", id)}),
            "<img src=\"1.gif\"><p><img src=\"2.gif\"></p>"},
           {"of one place", Related("<img src=http://x.org/a>", {gif("1", place), gif("2", place)}),
            "<img src=\"1.gif\"><p><img src=\"2.gif\"></p>"},
           {"none is used", Related("x", {gif("1", id), gif("2", id)}),
            "x<p><img src=\"1.gif\"></p><p><img src=\"2.gif\"></p>"},
           {"the nearest serves",
            Related("1<img src=cid:a>", {gif("1", id), within(Related("2<img src=cid:a>", {gif("2", id)}))}),
            "1<img src=\"1.gif\">\r\n2<img src=\"2.gif\">"},
           {"one around serves", Related("1", {gif("1", id), within(Related("2<img src=cid:a>", {gif("2", place)}))}),
            "1\r\n2<img src=\"1.gif\"><p><img src=\"2.gif\"></p>"},
           {"a name as we give it", Related("<img src=cid:part2>", {gif("1", ""), gif("2", "Content-ID: <part2>\r\n")}),
            "<img src=\"2.gif\"><p><img src=\"1.gif\"></p>"},
       }) {
    Scene scene;
    const auto written = scene.Write(c.message);
    const std::string page = platform::ReplaceAll(scene.Page(written), "<!DOCTYPE html>", "");
    EXPECT_EQ(page, "<head><meta charset=\"utf-8\"></head>" + std::string(c.shown)) << c.name;
  }
}

// What one page leaves open ends with it.
TEST(BodyFolder, KeepsOnePageOutOfTheNext) {
  struct Case {
    const char* first;
    const char* shown;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"<div style='display: none'><table><tr><td></div>1",
            "<div style=\"display: none\"><table><tr><td></div>1</td></tr></table></div>"},
           {"<body background='data:image/png;base64,iVBORw0KGgo=' text=white>1",
            "<article style=\"color:white;\"><table width=\"100%\" "
            "background=\"picture.png\"><tr><td>1</td></tr></table></article>"},
           {"<div><b>1</div>", "<div><b>1</div></b>"},
           {"<title>1", "<title>1</title>"},
           {"<style>p{color:red}", "<style>p{color:red}</style>"},
           {"<textarea>1", ""},
           {"1<script>", "1"},
           {"1<!-- 2", "1"},
           {"1<!doctype", "1"},
           {"<b>1</", "<b>1&lt;/</b>"},
           {"1<a title=\"2", "1"},
           {"1<plaintext>2<b>", "1<pre>2&lt;b&gt;</pre>"},
       }) {
    Scene scene;
    const auto written = scene.Write(Related(c.first, {"Content-Type: text/html\r\n\r\n<u>2</u>"}));
    std::string page = scene.Page(written);
    EXPECT_TRUE(page.ends_with("<u>2</u>")) << page;
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>")) << "tables have no colours of the block else";
    for (const char* known : {"<!DOCTYPE html>", "<head><meta charset=\"utf-8\"></head>", "<u>2</u>", "\r", "\n"})
      page = platform::ReplaceAll(page, known, "");
    EXPECT_EQ(page, c.shown) << c.first;
  }
}

TEST(BodyFolder, KeepsAttachedMessagesApart) {
  Scene scene;
  const auto written =
      scene.Write(Related("<img src=cid:a@x>", {"Content-Type: message/rfc822\r\n\r\n" +
                                                Base64Part("Content-Type: image/png\r\nContent-ID: <a@x>")}));
  EXPECT_TRUE(written.pictures.empty());
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
