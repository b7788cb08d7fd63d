// What one page leaves open does not reach the next.
#include "html/closed_page.h"

#include <gtest/gtest.h>

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
            "<head></head><article style=\"background-color:red;display:none\">x</article>"},
           {"<body bgcolor='#000' TEXT=ffFFff background='a b\").gif' link=red class=c dir=rtl hidden>x</div></body>",
            "<article class=\"c\" dir=\"rtl\" hidden style=\"background-color:#000;color:#ffFFff;background-image:url("
            "'a b%22%29.gif');\">x</div></article>"},
           {"<body bgcolor=fff text=09f background='a\n.gif'>x",
            "<article style=\"background-color:#0f0f0f;color:#00090f;background-image:url('a.gif');\">x</article>"},
           {"<body bgcolor='red;x:url(y)' text='expression(1)' onload=x()>x", "x"},
           {"<BODY>x<body hidden>y</body>z", "xyz"},
           {"x</body></html>", "x"},
       }) {
    EXPECT_EQ(ClosedPage(row.page), row.closed) << row.page;
  }
}

}  // namespace
}  // namespace quillcast::html
