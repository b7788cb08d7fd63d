// What one page leaves open does not reach the next.
#include "html/closed_page.h"

#include <gtest/gtest.h>

#include "html/old_colour.h"

namespace quillcast::html {
namespace {

TEST(ClosedPage, EndsWhatBrowsersHaveOpen) {
  struct Row {
    const char* page;
    const char* closed;
  };
  for (const Row& row : std::initializer_list<Row>{
           {"a<b>b</b>", "a<b>b</b>"},
           {"<b>a<p>c", "<b>a<p>c</p></b>"},
           {"<span hidden><p>x</span>", "<span hidden><p>x</span></p></span>"},
           {"<span hidden><div>x</span></div>", "<span hidden><div>x</span></div></span>"},
           {"<span hidden>x</span><p>y", "<span hidden>x</span><p>y</p>"},
           {"<p><span>x</span>y", "<p><span>x</span>y</p>"},
           {"<label><button hidden></label>", "<label><button hidden></label></button></label>"},
           {"<b><div>x</b></div>", "<b><div>x</b></div>"},
           {"<html hidden><head></head><body style='display:none' bgcolor=red>x</body></html>",
            "<article hidden style=\"background-color:red;display:none\">x</article>"},
           {"<body bgcolor='#000' TEXT=ffFFff background='a b\").gif' link=red class=c dir=rtl>x</div></body>",
            "<article class=\"c\" dir=\"rtl\" style=\"background-color:#000;color:#ffffff;\"><table width=\"100%\" "
            "background=\"a b&quot;).gif\"><tr><td>x</div></td></tr></table></article>"},
           {"<html style='background:#000'><body style=color:#fff>x",
            "<article style=\"background:#000;color:#fff\">x</article>"},
           {"<html class=no-js id=h lang=de dir=ltr><body class=a dir=rtl>x",
            "<article class=\"a\" dir=\"rtl\" lang=\"de\">x</article>"},
           {"<body class=a>x<html><body bgcolor=0 class=b>y",
            "<article class=\"a\" style=\"background-color:#000000;\">xy</article>"},
           {"<span hidden><body bgcolor=red>x</span>y",
            "<article style=\"background-color:red;\"><span hidden>x</span>y</article>"},
           {"<body bgcolor='red;x:url(y)' onload=x()>x", "<article style=\"background-color:#ed0000;\">x</article>"},
           {"x</body></html>", "x"},
       }) {
    EXPECT_EQ(ClosedPage(row.page), row.closed) << row.page;
  }
}

}  // namespace
// By the table that browsers are held to.
TEST(OldColour, IsWhatBrowsersMakeOfIt) {
  const std::pair<const char*, const char*> rows[] = {
      {" #000000 ", "#000000"},
      {"#FFF", "#fff"},
      {"fff", "#0f0f0f"},
      {"#000000;", "#000000"},
      {"#0000", "#000000"},
      {"#00000000", "#000000"},
      {"0", "#000000"},
      {"ffffff", "#ffffff"},
      {"Red", "red"},
      {"oooooo", "#000000"},
      {"chucknorris", "#c00000"},
      {"rgb(0,0,0)", "#b00000"},
      {"transparent", ""},
      {" \n", ""},
      {"#", "#000000"},
      {"#123456789abc", "#12569a"},
  };
  for (const auto& [written, colour] : rows) EXPECT_EQ(OldColour(written), colour) << written;
}

}  // namespace quillcast::html
