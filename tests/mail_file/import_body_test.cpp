// A message file as the document that a person goes on writing: what comes of its body, and where it lies.
#include "mail_file/import_body.h"

#include <gtest/gtest.h>

#include "mail_file/body_texts.h"
#include "platform/text.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"

namespace quillcast::mail_file {
namespace {

namespace fs = std::filesystem;

struct Scene {
  test::TemporaryFolder place;
  test::FakeClock clock;
  platform::CancelToken cancel;

  Result<ImportedBody> Import(const std::string& message) {
    const auto loading = Load(place.Write("message.eml", message), {});
    return ImportBody(*loading->message, place / "ImportBody", place / "Temp", clock, &cancel);
  }
  bool IsUntouched() const { return !fs::exists(place / "ImportBody") && IsTidy(); }
  bool IsTidy() const { return !fs::exists(place / "Temp") || fs::is_empty(place / "Temp"); }
};

TEST(ImportBody, MakesATextAPageWithItsLines) {
  struct Row {
    const char* message;
    const char* html;
  };
  for (const auto& [message, html] : {
           Row{"Subject: x\r\n\r\na < b & \"c\"\r\n\r\nsecond", "a &lt; b &amp; \"c\"<br>\n<br>\nsecond"},
           Row{"Subject: x\n\none\rtwo\nthree", "one<br>\ntwo<br>\nthree"},
           Row{"Subject: x\r\nContent-Type: text/plain; charset=windows-1252\r\n\r\n\xE4", "\xC3\xA4"},
       }) {
    Scene scene;
    const auto body = scene.Import(message);
    ASSERT_TRUE(body);
    EXPECT_EQ(body->html, html);
    EXPECT_EQ(body->subject, "x");
    EXPECT_TRUE(body->folder.empty() && scene.IsUntouched());
  }
}

TEST(ImportBody, LaysAPageAndItsPicturesIntoAFolderOfItsOwn) {
  const auto message = [](const std::string& word) {
    return "Content-Type: multipart/related; boundary=b\r\n\r\n--b\r\nContent-Type: text/html\r\n\r\n<body "
           "onload=x()>" +
           word +
           "<script>x()</script><form action=http://x/><img src=cid:a><img src=http://x/t.gif><img "
           "src=data:,GIF89a></form></body>"
           "\r\n--b\r\nContent-Type: image/gif; name=../../a.gif\r\nContent-ID: <a>\r\n\r\nGIF89a\r\n--b--\r\n";
  };
  Scene scene;
  ASSERT_TRUE(scene.Import(message("first")));
  const auto body = scene.Import(message("second"));  // in the same second
  ASSERT_TRUE(body);
  EXPECT_EQ(
      body->html,
      "<head><meta charset=\"utf-8\"></head><body>second<img src=\"a.gif\"><img><img src=\"picture.gif\"></body>");
  EXPECT_EQ(body->folder.parent_path(), scene.place / "ImportBody");
  EXPECT_EQ(std::distance(fs::directory_iterator(body->folder.parent_path()), {}), 1) << "it takes the other's place";
  EXPECT_EQ(test::ReadAll(body->folder / "index.htm"), body->html);
  EXPECT_EQ(test::ReadAll(body->folder / "a.gif"), "GIF89a");
  EXPECT_EQ(test::ReadAll(body->folder / "picture.gif"), "GIF89a");
  EXPECT_EQ(std::distance(fs::directory_iterator(body->folder), {}), 3);
  EXPECT_TRUE(scene.IsTidy());
}

// Within an alternative one is chosen; what stands beside it is the body too, in order.
TEST(ImportBody, TakesEachTextAndPageThatIsNoChoiceOfAnother) {
  struct Row {
    const char* name;
    std::string parts;  // of a multipart/mixed
    const char* html;   // of the imported page
    const char* text;   // of the body as a text
  };
  const std::string text = "\r\n--b\r\n\r\n";
  const std::string page = "\r\n--b\r\nContent-Type: text/html\r\n\r\n";
  for (const auto& [name, parts, html, body] : {
           Row{"a warning before a page", text + "1 < 2\r\n<b>" + page + "<p>rich</p>",
               "<article>1 &lt; 2<br>\n&lt;b&gt;</article>\r\n<p>rich</p>", "1 < 2\r\n<b>\r\nrich\r\n"},
           Row{"a blank between", page + "<p>a</p>" + text + "\r\n" + page + "<p>b</p>", "<p>a</p>\r\n<p>b</p>",
               "a\r\n\r\nb\r\n"},
       }) {
    Scene scene;
    const std::string message = "Content-Type: multipart/mixed; boundary=b\r\n" + parts + "\r\n--b--\r\n";
    const auto imported = scene.Import(message);
    ASSERT_TRUE(imported) << name;
    const std::string shown = platform::ReplaceAll(imported->html, "<!DOCTYPE html>", "");
    EXPECT_EQ(shown, "<head><meta charset=\"utf-8\"></head>" + std::string(html)) << name;
    const auto as_text = BodyAsText(*Load(scene.place / "message.eml", {})->message);
    ASSERT_TRUE(as_text) << name;
    EXPECT_EQ(*as_text, body) << name;
  }
}

TEST(ImportBody, TakesPicturesWithoutAWord) {
  for (const char* message :
       {"Content-Type: image/gif; name=a.gif\r\n\r\nGIF89a",
        "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\n\r\n--b\r\nContent-Type: image/gif; "
        "name=a.gif\r\n\r\nGIF89a\r\n--b--\r\n"}) {
    Scene scene;
    const auto body = scene.Import(message);
    ASSERT_TRUE(body) << InOneLine(body.error());
    EXPECT_NE(body->html.find("<img src=\"a.gif\">"), std::string::npos) << body->html;
    EXPECT_TRUE(fs::exists(body->folder / "a.gif"));
  }
}

TEST(ImportBody, SaysWhyThereIsNothingToTake) {
  for (const auto& [message, why] :
       {std::pair("Content-Type: image/png\r\n\r\nx", "The message has no text."),
        {"Subject: x\r\n\r\n\r\n", "The message has no text."},
        {"Content-Type: application/pkcs7-mime; smime-type=enveloped-data\r\n\r\nx", "it is encrypted"},
        {"Content-Type: multipart/encrypted; boundary=b\r\n\r\n--b\r\nContent-Type: application/octet-stream\r\n\r\n"
         "x\r\n--b--",
         "it is encrypted"}}) {
    Scene scene;
    const auto body = scene.Import(message);
    ASSERT_FALSE(body) << message;
    EXPECT_EQ(body.error().failure, Failure::kBadData);
    EXPECT_NE(InOneLine(body.error()).find(why), std::string::npos) << InOneLine(body.error());
    EXPECT_TRUE(scene.IsUntouched());
  }
}

TEST(ImportBody, LeavesNothingOfWhatCannotBeTaken) {
  Scene scene;
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += "<div>";
  EXPECT_EQ(scene.Import("Content-Type: text/html\r\n\r\n" + deep).error().failure, Failure::kBadData);
  EXPECT_TRUE(scene.IsUntouched());
  scene.place.Write("ImportBody", "in the way");
  EXPECT_FALSE(scene.Import("Content-Type: text/html\r\n\r\n<p>x"));
  EXPECT_TRUE(scene.IsTidy());
}

}  // namespace
}  // namespace quillcast::mail_file
