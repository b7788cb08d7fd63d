// What a text view is given of a stranger's page: a table of pieces, and that nothing displayed is lost.
#include "html/simple_page.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "html/html_to_text.h"
#include "html/html_tokenizer.h"

namespace quillcast::html {
namespace {

constexpr std::size_t kMost = std::size_t{256} * 1024;

SimplePage Simple(std::string_view html) { return Simplify(html, kMost); }

std::string Times(std::size_t count, std::string_view text) {
  std::string all;
  for (std::size_t i = 0; i < count; ++i) all += text;
  return all;
}

// How deep tables stand in each other, and elements at all.
struct Depth {
  std::size_t tables = 0;
  std::size_t elements = 0;
};
Depth DepthOf(std::string_view html) {
  Depth most;
  Depth now;
  HtmlTokenizer page(html);
  for (HtmlToken token; page.Next(token);) {
    const int step = token.kind == HtmlTokenKind::kStartTag ? 1 : token.kind == HtmlTokenKind::kEndTag ? -1 : 0;
    if (step == 0 || token.name == "br" || token.name == "hr" || token.name == "img") continue;
    now.elements += step;
    if (token.name == "table") now.tables += step;
    most = {std::max(most.tables, now.tables), std::max(most.elements, now.elements)};
  }
  EXPECT_EQ(now.elements, 0U) << "well formed";
  return most;
}

std::string Words(std::string_view html) {
  std::istringstream words(HtmlToText(html));
  std::string all;
  for (std::string word; words >> word;) {
    for (std::size_t at; (at = word.find("\u200B")) != std::string::npos;) word.erase(at, 3);
    if (word.find_first_not_of("-*0123456789.>") != std::string::npos) all += word + " ";  // of lists and quotations
  }
  return all;
}

TEST(SimplePage, KeepsWhatIsSeenAndNothingThatLoads) {
  const std::vector<std::pair<std::string, std::string>> table = {
      {"<p>a<p>b", "<p>a</p><p>b</p>"},
      {"<ul><li>a<li>b<ul><li>c</ul></ul>", "<ul><li>a</li><li>b<ul><li>c</li></ul></li></ul>"},
      {"<b>a<i>b</b>c</i>", "<b>a<i>b</i></b>c"},
      {"</p></table>a", "a"},
      {"a<3 &lt;b&gt; <!-- c --><script>d</script><style>e</style><title>f</title>", "a&lt;3 &lt;b&gt; "},
      {"<div style='display:none'>x<b>y</b></div><img hidden src=cid:x alt=y>z", "z"},
      {"<label><span style='font-size:0'>x</label>a", "<span>a</span>"},
      {"<div style='font-size:0;color:#fff'>x<img src=cid:0></div><td style='font-size:1px'>&nbsp;<img src=x "
       "alt=a></td>"
       "<span style='color:transparent'>x</span>b",
       "<div style=\"color:#fff\"><img src=\"cid:0\"></div><div>&nbsp;a<span>x</span>b</div>"},
      {"<a href='javascript:x'>a</a><a href=' HTTPS://x.org/?a=1&amp;b=\"'>b</a><a href=\"mailto:a@b.c\">c</a>",
       "<a>a</a><a href=\"HTTPS://x.org/?a=1&amp;b=&quot;\">b</a><a href=\"mailto:a@b.c\">c</a>"},
      {"<img src='file:///etc/passwd' alt='a&lt;b' width=9 height=99999><img src=cid:x><img src=https://x.org/a>",
       "a&lt;b<img src=\"cid:x\">"},
      {"<p style='color:#FF0000; background:url(http://x.org); font-size:900px;margin-left: -20px!important' "
       "onclick=x class=y background=z bgcolor=red>a",
       "<p style=\"color:#FF0000;margin-left:-20px\" bgcolor=\"red\">a</p>"},
      {"<p style=\"font-family:&quot;A B&quot;, C;color:rgb(1, 2, 3);width:expression(x)\">a",
       "<p style=\"font-family:'A B', C;color:#010203\">a</p>"},
      {"<form action=x><section><nav>a</nav><input value=y><button>b</button></section></form>",
       "<div><div><div>a</div><div>b</div></div></div>"},
      {"<link rel=stylesheet href=x><base href=file:///><iframe src=x></iframe><object data=x></object><video src=x>a",
       "a"},
      {"<body text=white bgcolor=black style='margin:0;color:red'><table><tr><td>a<td>b</table><body>c",
       "<body style=\"color:white;margin-top:0px;margin-right:0px;margin-bottom:0px;margin-left:0px;color:red\" "
       "bgcolor=\"black\"><table><tr><td>a</td><td>b</td></tr></table>"
       "<div>c</div></body>"},
      {"<pre>\r\na\nb</pre>", "<pre>a\nb</pre>"},
      // Tables
      {"<table><tr><td>a<table><tr><td bgcolor=red>b</table></table>",
       "<div><div>a<div><div style=\"background-color:red\">b</div></div></div></div>"},
      {"<table bgcolor=blue style='color:white'><tr bgcolor=red><td style='background:green' bgcolor=red>a</table>",
       "<div style=\"background-color:blue;color:white\"><div style=\"background-color:red\">"
       "<div style=\"background-color:red;background-color:green\">a</div></div></div>"},
      // Sizes and lengths in the one unit that a text view reads
      {"<p style='font:italic bold 14px/1.5 &quot;A B&quot;, serif;text-indent:1em'>a<p style='font:9pt'>b",
       "<p style=\"font-size:10.5pt;font-style:italic;font-weight:bold;font-family:'A B', "
       "serif;text-indent:14px\">a</p>"
       "<p style=\"font-size:9pt;font-style:normal;font-weight:normal\">b</p>"},
      {"<div style='font-size:1.2em'>a<h1>b</h1><small>c</small><font size=2>d</font><p style='font-size:50%'>e"
       "<p style='font-size:larger'>f<p style='font-size:1rem'>g</div><h3>h<i style='font-size:.5em'>i</i></h3>",
       "<div style=\"font-size:12pt\">a<h1 style=\"font-size:24pt\">b</h1><div><small "
       "style=\"font-size:10pt\">c</small>"
       "<font style=\"font-size:8.25pt\" size=\"2\">d</font></div><p style=\"font-size:6pt\">e</p>"
       "<p style=\"font-size:14.25pt\">f</p><p style=\"font-size:10pt\">g</p></div>"
       "<h3>h<i style=\"font-size:6pt\">i</i></h3>"},
      {"<h1 style='font-size:20.4px;font-size:0;font-size:500px'>a</h1><table><tr "
       "style='font-size:small'><td>b</table>",
       "<h1 style=\"font-size:15pt\">a</h1><div><div style=\"font-size:8.25pt\"><div>b</div></div></div>"},
      {"<p style='margin:0 auto 9pt;text-indent:-2em'>a<p style='margin: 1px 2em 50%'>b"
       "<p style='margin-left:.5in;margin-right:1.27cm;text-indent:-10mm;margin-top:1pc'>c",
       "<p style=\"margin-top:0px;margin-bottom:12px;text-indent:-27px\">a</p>"
       "<p style=\"margin-top:1px;margin-right:27px;margin-left:27px\">b</p>"
       "<p style=\"margin-left:48px;margin-right:48px;text-indent:-38px;margin-top:16px\">c</p>"},
      {"<table width=5% style='width:600px'><tr><td style='width:33.4%' width=9>a<td style='width:auto' width=7>b"
       "<img src=cid:0 height=900 width=500 style='width:100px;height:auto'></table>",
       "<table width=\"600\"><tr><td width=\"33%\">a</td><td width=\"7\">b<img width=\"100\" src=\"cid:0\"></td></tr>"
       "</table>"},
      // Grounds reach down to what a text view would paint without one
      {"<div style='background:#000;color:#fff'><table><tr><td>a<td><p>b</table>c<ul><li>d</ul>e<br>f</div>g",
       "<div style=\"background-color:#000;color:#fff\"><table bgcolor=\"#000000\"><tr><td>a</td><td><p>b</p></td></tr>"
       "</table><div style=\"background-color:#000000\">c</div><ul style=\"background-color:#000000\">"
       "<li style=\"background-color:#000000\">d</li></ul><div style=\"background-color:#000000\">e<br>f</div></div>"
       "<div>g</div>"},
      {"<table bgcolor=#333333><tr><td><table style='background:navy'><tr><td>a<td><div>b</table>"
       "<table><tr><td>c<td>d</table></table>",
       "<div style=\"background-color:#333333\"><div style=\"background-color:#333333\">"
       "<table style=\"background-color:navy\"><tr><td>a</td><td><div>b</div></td></tr></table>"
       "<table bgcolor=\"#333333\"><tr><td>c</td><td>d</td></tr></table></div></div>"},
      {"<table><tr style='background:red'><td><font color=white><p>a</font><hr><br>b</table>",
       "<div><div style=\"background-color:red\"><div style=\"background-color:#ff0000\"><font color=\"white\">"
       "<p style=\"background-color:#ff0000\">a</p></font><hr><div "
       "style=\"background-color:#ff0000\"><br>b</div></div></div>"
       "</div>"},
      {"<body style='background:#333'><div>a<table><tr><td>b<td style='background:#fff'><p>c</table></div>",
       "<body style=\"background-color:#333\"><div>a<table><tr><td>b</td><td style=\"background-color:#fff\"><p>c</p>"
       "</td></tr></table></div></body>"},
      // What is first in a cell, and whose ground a text view would paint behind all of it, has something before it
      // where more stands on another ground
      {"<table><tr><td><div><p style='background:#036'>a</p></div>b<td>c<p style='background:#036'>d"
       "<td bgcolor=red><p>e<div style='background:#036'>f<td><h2 bgcolor=#036>g<td><b></b> <h2 "
       "style='background:#eee'>"
       "h</h2>i<td><img src=cid:0><p style='background:#036'>j<td><div style='background:#036'>k<p>l</div><tr><td>"
       "<div style='background:#036'>m</div><table><tr><td>n<td>o</table></table>",
       "<table><tr><td><span style=\"font-size:1pt\">&#8203;</span><div><p style=\"background-color:#036\">a</p></div>"
       "<div>b</div></td><td>c<p style=\"background-color:#036\">d</p></td><td bgcolor=\"red\"><p>e</p>"
       "<div style=\"background-color:#036\">f</div></td><td><h2 bgcolor=\"#036\">g</h2></td><td>"
       "<span style=\"font-size:1pt\">&#8203;</span><b></b> <h2 style=\"background-color:#eee\">h</h2>i</td>"
       "<td><img src=\"cid:0\"><p style=\"background-color:#036\">j</p></td><td><div style=\"background-color:#036\">k"
       "<p style=\"background-color:#003366\">l</p></div></td></tr><tr><td><span style=\"font-size:1pt\">&#8203;</span>"
       "<div style=\"background-color:#036\">m</div><table><tr><td>n</td><td>o</td></tr></table></td></tr></table>"},
      {"<table><tr><td><table style='background:#036'><tr><td>a<td>b</table>c<td><table><tr><td bgcolor=#036>d<tr><td>e"
       "</table></table>",
       "<table><tr><td><table style=\"background-color:#036\"><tr><td>a</td><td>b</td></tr></table>c</td><td>"
       "<span style=\"font-size:1pt\">&#8203;</span><div><div "
       "style=\"background-color:#036\">d</div><div>e</div></div></td></tr>"
       "</table>"},
      // Words that nobody would see where they stand
      {"<p style='color:#fff'>a<b style='color:#eee'>b</b><span style='background:#000'>c<a href=http://x.org>d</a>"
       "</span> ",
       "<p style=\"color:#fff\"><span style=\"color:#000000\">a</span><b style=\"color:#eee\"><span "
       "style=\"color:#000000\">b</span></b><span style=\"background-color:#000\">c<a "
       "href=\"http://x.org\">d</a></span> "
       "</p>"},
      {"<font color=white><table bgcolor=#003366><tr><td>a<th bgcolor=#ffffff>b<td style='background:url(x) #036'>c"
       "</table></font>",
       "<font color=\"white\"><table bgcolor=\"#003366\"><tr><td>a</td><th bgcolor=\"#ffffff\"><span "
       "style=\"color:#000000\">b</span></th><td style=\"background-color:#036\">c</td></tr></table></font>"},
      {"<a href=http://x.org style='color:#fff'><span style='background:#06c'>a</span></a><table background=x><tr><td>"
       "<font color=#aaaaaa>b</font><td style='background:#000;color:#aaa'>c<div style='background:#0b57d0'>"
       "<a href=http://x.org>d</a></div></table>",
       "<a style=\"color:#fff\" href=\"http://x.org\"><span style=\"background-color:#06c\">a</span></a><table><tr><td>"
       "<font color=\"#aaaaaa\"><span style=\"color:#000000\">b</span></font></td><td style=\"background-color:#000;"
       "color:#aaa\">c<div style=\"background-color:#0b57d0\"><a href=\"http://x.org\"><span "
       "style=\"color:#ffffff\">d</span></a></div></td></tr></table>"},
      {"<body text=#ffffff bgcolor=#111111>a<p style='color:#000'>b<div style='background:#fff'>c<a "
       "style='color:inherit' "
       "href=http://x.org>d</a></div>",
       "<body style=\"color:#ffffff\" bgcolor=\"#111111\">a<p style=\"color:#000\"><span "
       "style=\"color:#ffffff\">b</span>"
       "</p><div style=\"background-color:#fff\"><span style=\"color:#000000\">c</span><a style=\"color:#ffffff\" "
       "href=\"http://x.org\"><span style=\"color:#000000\">d</span></a></div></body>"},
      // Parts of a table that say how their rows look
      {"<table><thead style='background:#036;color:#fff'><tr><th>a<th>b</thead><tbody><tr><td>c<td>d"
       "<tfoot bgcolor=#036 style='font-size:9pt'>e<tr style='background:#eee'><td><p>f</table>",
       "<table><tbody style=\"background-color:#036;color:#fff\"><tr "
       "style=\"background-color:#003366\"><th>a</th><th>b</th>"
       "</tr></tbody><tr><td>c</td><td>d</td></tr><tbody style=\"font-size:9pt\" bgcolor=\"#036\">"
       "<tr style=\"background-color:#003366\"><td>e</td></tr><tr "
       "style=\"background-color:#eee\"><td><p>f</p></td></tr>"
       "</tbody></table>"},
      {"<table><tbody style='color:red'><tr><td>a<tbody class=x><tr><td>b</table>",
       "<div><div style=\"color:red\"><div>a</div></div><div>b</div></div>"},
      // Colours that a text view would take for black
      {"<table><tr><td bgcolor=ffff00>a<td bgcolor=none>b<font color=00ff00>c</font><font color=red>d</table>",
       "<table><tr><td bgcolor=\"#ffff00\">a</td><td>b<font color=\"#00ff00\">c</font><font color=\"red\">d</font></td>"
       "</tr></table>"},
      {"<p style='background:#fff no-repeat;color:rgba(1, 2, 3, .9)'>a<p style='background:inherit;color:inherit'>b"
       "<p style='background-color:rgb(0 0 0 / 90%);color:FFFFFF'>c",
       "<p style=\"background-color:#fff;color:#010203\">a</p><p>b</p><p "
       "style=\"background-color:#000000;color:#ffffff\">"
       "c</p>"},
      {"<table border=1><tbody><tr><td>a<th>b<tr><td colspan=2>c</table>d",
       "<table border=\"1\"><tr><td>a</td><th>b</th></tr><tr><td colspan=\"2\">c</td></tr></table>d"},
      {"<table>a<tr>b<td>c<td>d", "<table><tr><td>a</td></tr><tr><td>b</td><td>c</td><td>d</td></tr></table>"},
      {"<td>a<tr>b", "ab"},
      // Words behind a block, which a text view would set in its last line
      {"<div>a</div>b<i>c</i> d<p>e", "<div>a</div><div>b<i>c</i> d</div><p>e</p>"},
      {"<p>a</p>b<i>c</i>", "<p>a</p>b<i>c</i>"},
      {"<p>a</p> <a href=http://x.org><img src=cid:0></a> b<hr>",
       "<p>a</p> <div><a href=\"http://x.org\"><img src=\"cid:0\"></a> b</div><hr>"},
      {"<p>a</p><img src=cid:0><table><tr><td>b<td><div>c</div>d</table>",
       "<p>a</p><div><img src=\"cid:0\"></div><table><tr><td>b</td><td><div>c</div><div>d</div></td></tr></table>"},
      {"<div>a</div><br>b", "<div>a</div><br>b"},
      {"<div>a</div><b>b<div>c</div>d</b>", "<div>a</div><div><b>b<div>c</div><div>d</div></b></div>"},
      {"<table><tr><td colspan=1000000>a<td rowspan=-1>b</table>",
       "<table><tr><td>a</td><td rowspan=\"-1\">b</td></tr></table>"},
      {"<table><tr><td colspan=13>a<tr><td rowspan=5>b<td>c</table>",
       "<table><tr><td colspan=\"13\">a</td></tr><tr><td rowspan=\"5\">b</td><td>c</td></tr></table>"},
      {"<table><tr><td colspan=1000>a<td>b" + Times(30, "<tr><td>c") + "</table>",
       "<table><tr><td>a</td><td>b</td></tr>" + Times(30, "<tr><td>c</td></tr>") + "</table>"},
      // Rows that push the later ones to the right
      {"<table>" + Times(150, "<tr><td rowspan=1000>a<td rowspan=5>b") + "</table>",
       "<table>" + Times(150, "<tr><td>a</td><td>b</td></tr>") + "</table>"},
      {"<table><tr>" + Times(30, "<td rowspan=' 1000'>a") + "</table>",
       "<table><tr>" + Times(30, "<td>a</td>") + "</tr></table>"},
      {"<table>" + Times(30, "<tr><td colspan=1 colspan=1000>a<td>b") + "</table>",
       "<table>" + Times(30, "<tr><td colspan=\"1\">a</td><td>b</td></tr>") + "</table>"},
      {"<table>" + Times(20, "<tr><td rowspan=20>a") + "<tr><td>b<td>c</table>",
       "<table>" + Times(20, "<tr><td rowspan=\"20\">a</td></tr>") + "<tr><td>b</td><td>c</td></tr></table>"},
      {std::string("a\0b", 3), "ab"},
  };
  for (const auto& [html, simple] : table) {
    EXPECT_EQ(Simple(html).html, simple) << html;
    EXPECT_EQ(Simple(simple).html, simple) << "once is enough";
  }
}

TEST(SimplePage, BreaksWordsWithoutAnEnd) {
  const std::string page = Simple(Times(150, "\u00e4")).html;
  EXPECT_EQ(page, Times(50, "\u00e4") + "&#8203;" + Times(50, "\u00e4") + "&#8203;" + Times(50, "\u00e4"));
  const std::string references = Simple(Times(100, "&amp;")).html;
  EXPECT_EQ(references.find("&amp&#8203;"), std::string::npos);
  EXPECT_EQ(Words(references), Words(Times(100, "&amp;")));
}

TEST(SimplePage, IsNeverDeeperOrLongerThanItSays) {
  for (const std::string& page :
       {Times(10000, "<table><tr><td>a<td>"), Times(10000, "<table><tr><td>"), Times(20000, "<b>"),
        Times(20000, "<ul><li>"), Times(20000, "<div style='color:red'>x"), Times(60000, "<p>some words</p>"),
        Times(30000, "<blockquote><table><td>a<td>b")}) {
    const SimplePage simple = Simple(page);
    const Depth depth = DepthOf(simple.html);
    EXPECT_LE(depth.tables, 3U);
    EXPECT_LE(depth.elements, 104U);
    EXPECT_LE(simple.html.size(), kMost + 4000);
    EXPECT_EQ(simple.is_cut, simple.html.size() > kMost);
  }
}

// Newsletters as others write them.
TEST(SimplePage, HasTheWordsOfThePage) {
  namespace fs = std::filesystem;
  // With maps, bullets that are words, addresses that are broken, numbers of items, file names as alternative texts.
  const std::set<std::string> others = {"picture-only", "word-processor", "long-links", "club-minutes", "rowing-club"};
  std::size_t pages = 0;
  for (const auto& entry : fs::directory_iterator(fs::path(QUILLCAST_TEST_DATA) / "pages")) {
    if (entry.path().extension() != ".html" || others.contains(entry.path().stem().string())) continue;
    std::ifstream file(entry.path());
    const std::string html((std::istreambuf_iterator<char>(file)), {});
    EXPECT_EQ(Words(Simple(html).html), Words(html)) << entry.path();
    EXPECT_LE(DepthOf(Simple(html).html).tables, 3U);
    ++pages;
  }
  EXPECT_GE(pages, 25U);
}

}  // namespace
}  // namespace quillcast::html
