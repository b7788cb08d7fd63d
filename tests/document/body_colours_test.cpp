// Colours in the body element; everything else stays byte for byte.
#include "document/body_colours.h"

#include <gtest/gtest.h>

namespace quillcast::document {
namespace {

TEST(BodyColours, ChangeTheirAttributesAlone) {
  struct Case {
    const char* html;
    BodyColours chosen;
    const char* changed;
  };
  const BodyColours blue = {.link = "#0000FF", .background = "#ffffff"};
  for (const Case& c : std::initializer_list<Case>{
           {"<html><BODY>x</BODY></html>", blue, "<html><BODY link=\"#0000FF\" bgcolor=\"#ffffff\">x</BODY></html>"},
           {"<body\n LINK=red  id='a' bgcolor='#ffffff'>x", blue,
            "<body\n link=\"#0000FF\"  id='a' bgcolor='#ffffff'>x"},
           {"<body link bgcolor=\"\" class=c>x", blue, "<body link=\"#0000FF\" bgcolor=\"#ffffff\" class=c>x"},
           {"<body text=\"#000000\" id=a>x", {}, "<body id=a>x"},
           {"<body bgcolor=\"#112233\"link=\"#000000\">x", {.link = "#000000"}, "<body link=\"#000000\">x"},
           {"<body bgcolor=\"#112233\" bgcolor='#445566' id=a>x", {}, "<body id=a>x"},
           {"<body id=a text='#000000'>x", blue, "<body id=a link=\"#0000FF\" bgcolor=\"#ffffff\">x"},
           {"<body background='a &amp; b.png'>x", {.picture = "a & b.png"}, "<body background='a &amp; b.png'>x"},
           {"<body>x", {.picture = "a \"b\" & c.png"}, "<body background=\"a &quot;b&quot; &amp; c.png\">x"},
           {"<!-- <body> --><title><body></title><p>x<body id=b><body>",
            {.text = "#123456"},
            "<!-- <body> --><title><body></title><p>x<body id=b text=\"#123456\"><body>"},
           {"<!DOCTYPE html>\n<html><head><title>T</title>\n<style>b{}</style></head>\n<p>x",
            {.text = "#123456"},
            "<!DOCTYPE html>\n<html><head><title>T</title>\n<style>b{}</style></head>\n<body text=\"#123456\"><p>x"},
           {"only text", {.active = "#123456"}, "<body alink=\"#123456\">only text"},
           // What its style says is what is seen.
           {"<body style='margin:0; Background:#e6f1f5 url(a.png); color:#233640' bgcolor='#e6f1f5'>x",
            {.text = "#112233", .background = "#00ff00"},
            "<body style=\"margin:0; Background:#00ff00 url(a.png); color:#112233\" bgcolor=\"#00ff00\" "
            "text=\"#112233\">x"},
           {"<body style='color:navy;background-color:#fff' bgcolor=red>x",
            {.text = "navy"},
            "<body style=\"color:navy;background-color:transparent\">x"},
           {"<p>x", {}, "<p>x"},
           {"", {.visited = "#123456"}, "<body vlink=\"#123456\">"},
       }) {
    const std::string changed = WithBodyColours(c.html, c.chosen);
    EXPECT_EQ(changed, c.changed);
    EXPECT_EQ(ReadBodyColours(changed), c.chosen) << changed;
    EXPECT_EQ(WithBodyColours(changed, c.chosen), changed) << "once more";
  }
}

TEST(BodyColours, AreChecked) {
  const BodyColours found = {.text = "navy"};
  for (const char* wrong : {"red", "#12345", "#1234567", "#12345g", "123456", "#\uFF11\uFF12", " #123456"}) {
    const auto complaint = CheckBodyColours({.visited = wrong}, found);
    ASSERT_TRUE(complaint) << wrong;
    EXPECT_EQ(complaint->message, "Please enter a valid visited link colour.");
    EXPECT_EQ(complaint->control, BodyBox::kVisited);
  }
  EXPECT_FALSE(CheckBodyColours({.text = "navy", .link = "#aBcDeF", .picture = "any thing"}, found));
  BodyColours wrong = {.text = "x", .link = "x", .visited = "x", .active = "x", .background = "x"};
  for (const auto& [field, control] : std::initializer_list<std::pair<std::string BodyColours::*, BodyBox>>{
           {&BodyColours::text, BodyBox::kText},
           {&BodyColours::link, BodyBox::kLink},
           {&BodyColours::visited, BodyBox::kVisited},
           {&BodyColours::active, BodyBox::kActive},
           {&BodyColours::background, BodyBox::kBackground}}) {
    EXPECT_EQ(CheckBodyColours(wrong, found)->control, control) << "the first";
    wrong.*field = "#123456";
  }
}

}  // namespace
}  // namespace quillcast::document
