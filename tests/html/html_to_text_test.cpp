// What people read who see no HTML: a table of pages and their texts, and hostile pages in linear time.
#include "html/html_to_text.h"

#include <gtest/gtest.h>

#include "html/html_tokenizer.h"
#include "html/local_pictures.h"
#include "support/random_text.h"

namespace quillcast::html {
namespace {

struct Page {
  const char *name, *html, *text;
};

constexpr Page kPages[] = {
    {"nothing", "", ""},
    {"only blanks", "<p> &nbsp; </p><br>", ""},
    {"white space", "  a\n\t b <b> c</b>d  ", "a b cd\n"},
    {"no-break spaces", "<p>&nbsp;a&nbsp;&nbsp;b&nbsp;</p> c &nbsp; d&nbsp; e", "a  b\n\nc d e\n"},
    {"spaces of a given width", "12&#8239;000&thinsp;km&#12288;x", "12 000 km\u3000x\n"},
    {"joiners", "&zwnj;&nbsp;&zwnj; a &zwj;b&zwnj;c", "a b\u200Cc\n"},
    {"paragraphs", "<p>One</p>\n<p>Two<p>Three", "One\n\nTwo\n\nThree\n"},
    {"headings", "<div>a</div><h1>Big  news</h1><div>b</div>", "a\n\nBig news\n\nb\n"},
    {"blank lines as editors write them",
     "<div>a</div><div><br></div><div>b</div><div>&nbsp;</div><div>c<br></div>d<ul><li><br>e</ul>",
     "a\n\nb\n\nc\nd\n\n- e\n"},
    {"raised numbers", "10<sup>3</sup> m<sup>2</sup> 5<sup>th</sup> x<sup>*</sup>", "10^3 m2 5th x*\n"},
    {"pictures and links are words of their own",
     "<img alt=One><img alt=Two>three <a href=//x.example/1>four</a><a href=//x.example/2>five</a>, (<img alt=six>).",
     "One Two three four <//x.example/1> five <//x.example/2>, (six).\n"},
    {"a list behind a paragraph of its item", "<ul><li><p>a</p><ul><li><p>b</p></ul><li>c</ul>", "- a\n  - b\n- c\n"},
    {"lists of word processors",
     "<p>x<p style='mso-list:l0 level1 lfo1'><span style='mso-list:Ignore'>&middot;<span>&nbsp; </span></span>a</p>"
     "<p style='margin:0;MSO-LIST: l0 level2 lfo1'><b style='mso-list:Ignore'>a)<i>&nbsp;</i></b>b<br>c</p>\n"
     "<p style='mso-list:l0 level1 lfo1'><span style='mso-list:Ignore'>o </span>d<p>y"
     "<p style='mso-list:l1 level1'>no sign<p style='mso-list:l1 level1'><span style='mso-list:Ignore'>1.<p>never "
     "closed",
     "x\n\n- a\n  a) b\n     c\n- d\n\ny\n\nno sign\n\nnever closed\n"},
    {"breaks", "a<br>b<br/><br>c<br><br><br><br><br>d<br>", "a\nb\n\nc\n\n\nd\n"},
    {"divisions", "<div><div>a</div></div><div>b</div>c", "a\nb\nc\n"},
    {"bullets", "<p>x</p><ul><li>one<li>two\n</li><li></li></ul><p>y</p>", "x\n\n- one\n- two\n\ny\n"},
    {"numbers", "<ol start=3><li>c</li><li><p>d</p><p>e</p></li><li value=9>i<li>j</ol>",
     "3. c\n4. d\n\n   e\n\n9. i\n10. j\n"},
    {"letters",
     "<ol type=A start=26><li>z<li>aa</ol><ol type=i><li value=4>d<li value=-1>e</ol><ol type=a start=0><li>0",
     "Z. z\nAA. aa\n\niv. d\n-1. e\n\n0. 0\n"},
    {"numbers beyond measure", "<ol start=9223372036854775807><li value=99999999999>a<li value=999999999>b<li>c",
     "1. a\n999999999. b\n1000000000. c\n"},
    {"items of one paragraph", "<ul><li><p>a</p></li><li><p>b</p></li></ul>c", "- a\n- b\n\nc\n"},
    {"nested lists", "<ul><li>a<ol><li>b<br>c</li></ol></li><li>d</li></ul>", "- a\n  1. b\n     c\n- d\n"},
    {"definitions", "<dl><dt>A<dd>first<dt>B<dd>second</dl>x", "A\n  first\nB\n  second\n\nx\n"},
    {"quotation", "a<blockquote><p>b</p><p>c</p><blockquote>d</blockquote></blockquote>e",
     "a\n\n> b\n>\n> c\n>\n> > d\n\ne\n"},
    {"rule", "a<hr>b", "a\n\n----\n\nb\n"},
    {"link", "See <a href='https://example.org/x?a=1&amp;b=2'>our <b>shop</b> </a>now",
     "See our shop <https://example.org/x?a=1&b=2> now\n"},
    {"link that says it",
     "<a href='https://example.org/'>example.org</a> <a href='mailto:a@b.c?'>a@b.c</a> <a href='#top'>up</a>",
     "example.org a@b.c up\n"},
    {"link whose subject a list goes by",
     "<a href='mailto:a@b.c?subject=x&amp;body=y'>a@b.c</a> <a href='MAILTO:?subject=x'>tell</a>",
     "a@b.c <mailto:a@b.c?subject=x&body=y> tell\n"},
    {"link with or without trimmings",
     "<a href='HTTPS://www.Example.org/'>example.org</a> <a href='tel:+4930123456'>+49 (30) 123-456</a> <a "
     "href='tel:123'>Call</a> <a href='mailto:?subject=x'>Tell</a> <a href='file:///etc/x'>f</a> <a "
     "href='/home/x'>h</a> <a href='view-source:file:///etc/x'>v</a><img alt='file:///home/x y.png'> <a "
     "href='data:x'>d</a>",
     "example.org +49 (30) 123-456 Call <123> Tell f h v d\n"},
    {"pictures that lead where text does",
     "<a href=//x.example/1><img src=a></a><h2>News</h2><a href=//x.example/1>More</a><br><a "
     "href=//x.example/1><img></a>"
     "<a href=//x.example/2><img></a>",
     "News\n\nMore <//x.example/1>\n<//x.example/2>\n"},
    {"picture map",
     "<img usemap=#m alt=Offers><map name=m><area href=//x.example/t alt=Tea><area href=//x.example/c alt=''></map>",
     "Offers\nTea <//x.example/t>\n<//x.example/c>\n"},
    {"names of files are no descriptions", "<img alt='IMG_1.JPG'><img alt='https://x/y'>a<img alt=' our photo.png'>",
     "a our photo.png\n"},
    {"inline quotation", "He said <q>tea <b>please</b></q>.", "He said \"tea please\".\n"},
    {"mail link", "<a href='MAILTO:a@b.c'>Write</a>", "Write <a@b.c>\n"},
    {"link around blocks", "<a href='http://x.example/'><div>Go</div></a><p>y</p>", "Go <http://x.example/>\n\ny\n"},
    {"link around a picture",
     "<a href='http://x.example/'><img src=a.png></a> <a href='http://y.example'><img alt='Buy &amp; go'></a>",
     "<http://x.example/> Buy & go <http://y.example>\n"},
    {"link around nothing visible", "<a href='x.example'>&#8203;</a>", "<x.example>\n"},
    {"unclosed links", "<a href=http://a.example>a<a href=http://b.example>b",
     "a <http://a.example> b <http://b.example>\n"},
    {"merge tags", "Dear $*MergeFirstName*$, <a href='https://x.example/?m=$*MergeEmail*$'>$*MergeTitle*$</a>",
     "Dear $*MergeFirstName*$, $*MergeTitle*$\n<https://x.example/?m=$*MergeEmail*$>\n"},
    {"columns that arrange the page",
     "<table><tr><td>Short<tr><td>A line that is longer than what stands in a list of facts or in an address."
     "<tr><td><a href=//x.example>Go</a><tr><td>The end</table>after",
     "Short\n\nA line that is longer than what stands in a list of facts or in an address.\n\nGo "
     "<//x.example>\nThe end\n\nafter\n"},
    {"long rows of a table of facts",
     "x<table border=1><tr><td>a<td>b<tr><td>A line that is longer than what stands in a list of facts or in an "
     "address.<tr><td>c</table>y",
     "x\n\na  b\nA line that is longer than what stands in a list of facts or in an address.\nc\n\ny\n"},
    {"data table",
     "<table><tr><th>Item<th>Price</tr>\n<tr><td><p>Tea</p></td> <td><p>3 "
     "&euro;</p></td></tr><tr><td>Cake</td><td></td></tr></table>x",
     "Item  Price\nTea  3 \u20AC\nCake\n\nx\n"},
    {"layout table", "<table><tr><td><h2>News</h2><p>a</p></td></tr><tr><td><p>b</p></td></tr></table>",
     "News\n\na\n\nb\n"},
    {"nested tables", "<table><tr><td>a</td><td><table><tr><td>b<td>c</tr></table></td></tr><tr><td>d</table>e",
     "a\nb  c\n\nd\n\ne\n"},
    {"columns", "<table><tr><td><p>a</p><p>b</p></td><td><p>c</p></td></tr></table>", "a\n\nb\n\nc\n"},
    {"list in a cell", "<table><tr><td>a<td><ul><li>b</ul></tr></table>", "a\n\n- b\n"},
    {"preformatted", "x<pre>\n  a  b \n\n\n\n\tc\n  </pre>y", "x\n\n  a  b\n\n\n\n    c\n\ny\n"},
    {"dropped",
     "<html><head><title>T</title><style>p{}</style><script>if (a<b) x()</script></head><body>x<!-- c "
     "--><textarea>t</textarea></body>",
     "x\n"},
    {"empty title", "<title></title>x", "x\n"},
    {"preheader", "<div style='Display : none;max-height:0'>Hi <div>x</div></div>Text<span hidden>z</span>.",
     "Text.\n"},
    {"unclosed hidden", "<div><span style=display:none>x</div>shown<p style=display:none>y<p>z", "shown\n\nz\n"},
    {"hidden in other ways",
     "<p style='opacity:0'>a</p><p style='COLOR:red;max-height: 0px !important;overflow:hidden'>b</p><p "
     "style='visibility:hidden'>c</p>"
     "<p style='opacity:0.9;font-size:0.9em;max-height:0;x-display:none'>shown</p><noscript>d</noscript>",
     "shown\n"},
    {"hidden by the declaration that counts",
     "<p style='display:none;display:block'>a<p style='/*display:none;*/color:red'>b<p style='display:none "
     "!important;display:block'>x<p style='display'>c"
     "<p style='display:none;display:;display:x'>x<p style='background:url(//a/*/b);display:none;content:\"/*;\"'>x"
     "<p style=\"content:'a\\'b';display:none\">x<p "
     "style=\"background:url(it's.png);color:rgb(/*'*/0,0,0);display:none\">x"
     "<p style='max-height:0;overflow-y:hidden'>x<p style='font-family:\"x\n;display:none'>x<p "
     "style='max-height:0;overflow:hidden auto'>x"
     "<p style='display:none !ie'>d<p hidden style='display:block'>e",
     "a\n\nb\n\nc\n\nd\n\ne\n"},
    {"hidden without an end of their own",
     "<ul><li>a<li hidden>x<ul><li>x<li>x</ul>x<li>b</ul><p><i hidden>x</p><b><i hidden>x</b>c<table><tr hidden><td>x"
     "<tr><td hidden><table><tr><td>x</table>x<td>d<tr><td>e</table>f<svg><g hidden/></svg>g"
     "<div>h<i hidden>x</b>x</i>i<table hidden><tr><td>x</div>x</table>j</div><svg hidden>x<div><p>k<p "
     "hidden>x</div>l<h1 hidden>x</h2><table><template><tr><td>x</template><tr><td>m</table><div "
     "hidden>x<td>x<button>x<noscript>x<html></div>n<ul><li hidden><button>x<li>x</button>x</ul>o",
     "- a\n- b\n\nc\nd\ne\n\nfg\nhij\n\nk\nl\nm\nn\n\no\n"},
    {"hidden in what is hidden",
     "<font hidden>x<div hidden>x</font>x</div>a<strong hidden><pre hidden>x</strong>x</pre>b<dialog>x</dialog>"
     "<dialog open>c</dialog><datalist><option>x</datalist>",
     "abc\n"},
    {"hidden by their letters",
     "<div style='font-size:0;color:#fff'>x</div><span style='FONT-SIZE: 1PX !important'>x<i "
     "style='font-size:.9em'>x</i>"
     "</span><p style='font-size:0'><i style='font-size:30em'>x<select><option>c</select></i></p><p "
     "style='font-size:1px'><b style='font-size:30em'>d</b></p><td style='font:bold .5px Arial'>x&zwnj;&nbsp;<p "
     "style='color:Transparent'>x<br>x <b "
     "style='color:red'>a</b>"
     "<u style='font-size:9pt'>x</u></p>b",
     "c\n\nd\n\na\n\nb\n"},
    {"of a size that others may give",
     "<table><tr><td style='font-size:0px'><p>a</p><div style='font-size:13px'>b</div><span "
     "style='font-size:14px'>c</span>"
     "<u class=x>d</u><font size=2>e</font><td style='font-size:1px'>&nbsp;<table><tr><td>f</table></table>"
     "<h1 style='background:linear-gradient(red,blue);color:transparent'>g</h1><span style='font-size:0'><p>h",
     "a\n\nb\ncde\n\nf\n\ng\n\nh\n"},
    {"of a size or colour that is not read",
     "<td style='font-size:0;color:transparent'><b style='font-size:clamp(14px,2vw,18px);color:var(--c)'>a</b>"
     "<b style='font-size:4vw;color:color(srgb 0 0 0)'>b</b><b style='font-size:initial;color:initial'>c</b>"
     "<b style='font-size:120%;color:red'>x</b><b style='font-size:inherit;color:red'>x</b>"
     "<b style='font-size:9px;color:currentColor'>x</b><b style='font-size:9px;color:inherit'>x</b></td>"
     "<td style='font-size:0'><b style='font:italic calc(1px + 1em) Arial'>d</b><track>x",
     "abc\nd\n"},
    {"that another rule may give a size or colour",
     "<div style='font-size:14px!important;font-size:0;color:red!important;color:transparent'>a</div>"
     "<p style='color:transparent'><font color=red>b</font></p><style>@media screen{TD{Font-Size:14px}}</style>"
     "<table><tr><td style='font-size:0'>c</td></tr></table><p style='color:transparent'>x</p>",
     "a\n\nb\n\nc\n"},
    {"with letters of their own", "<p style='color:transparent;font-size:0'>x<mark>a</mark><button>b</button>", "ab\n"},
    {"hidden up to the end of what is around", "<a href='#x'><span style='font-size:0'>x</a> a <b>b</b>", "a b\n"},
    {"drawn without a colour of their own", "<b style='color:transparent;-webkit-text-stroke:1px red'>a</b>", "a\n"},
    {"hidden picture", "<img style='display:none' alt=x>a", "a\n"},
    {"invisible padding", "a&#8203;&#173;bc", "abc\n"},
    {"stray end tags", "</ul></li></blockquote>a</p>b</table></td>c", "a\n\nbc\n"},
    {"not markup", "1 < 2 & 3 &lt;b&gt; <a", "1 < 2 & 3 <b>\n"},
};

TEST(HtmlToText, ReadsLikeThePage) {
  for (const Page& page : kPages) EXPECT_EQ(HtmlToText(page.html), page.text) << page.name;
  std::string deep;
  for (int i = 0; i < 2400; ++i) deep += i == 1200 ? "<div hidden>" : i < 1200 ? "<b>" : "<b>x";
  EXPECT_EQ(HtmlToText(deep + "<p>x<p>x</div>shown"), "shown\n");
  deep = "<table><tr><td>";
  for (int i = 0; i < 600; ++i) deep += "<b>";
  EXPECT_EQ(HtmlToText(deep + "<tr hidden><td>x</table>shown"), "shown\n");
}

TEST(HtmlToText, WrapsBetweenWordsUnderWhatStandsBeforeThem) {
  constexpr Page kNarrow[] = {
      {"words", "<p>one two three four five six seven eight", "one two three four five six\nseven eight\n"},
      {"items and quotations",
       "<ol start=9><li>one two three four five six seven<blockquote>one two three four five six</blockquote></ol>",
       "9. one two three four five\n   six seven\n\n   > one two three four five\n   > six\n"},
      {"addresses", "<p>at <a href=https://example.org/a/long/address/that/does/not/fit>the place</a>, there",
       "at the place\n<https://example.org/a/long/address/that/does/not/fit>,\nthere\n"},
      {"long words", "<p>x averyveryverylongwordwithoutanyplacetobreakit y",
       "x\naveryveryverylongwordwithoutanyplacetobreakit\ny\n"},
      {"tags", "<p>Dear reader and friend $*MergeFirstName*$, hello",
       "Dear reader and friend\n$*MergeFirstName*$, hello\n"},
      {"no-break spaces", "<p>come to our big opening at 5&nbsp;pm<p>come to the opening, really&#8239;!",
       "come to our big opening at\n5 pm\n\ncome to the opening,\nreally !\n"},
      {"nothing but no-break spaces", "<p>one&nbsp;two&nbsp;three&nbsp;four&nbsp;five&nbsp;six&nbsp;seven&nbsp;eight",
       "one two three four five six\nseven eight\n"},
      {"preformatted text", "<pre>a line that is longer than all of the others</pre>",
       "a line that is longer than all of the others\n"},
      {"wide characters",
       "<p>\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u3002",
       "\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\u8B1D\n\u8B1D\u3002\n"},
  };
  for (const Page& page : kNarrow) EXPECT_EQ(HtmlToText(page.html, 28), page.text) << page.name;
}

std::string Repeat(std::string_view unit, std::size_t bytes) {
  std::string out;
  while (out.size() < bytes) out += unit;
  return out;
}

// How long it takes on hostile pages is held by tests/growth.
TEST(HtmlToText, GrowsInProportionToWhatItReads) {
  const std::string closed =
      Repeat("<div><ul><blockquote>", 1'000'000) + "x" + Repeat("</blockquote></div></ul>", 1'000'000);
  EXPECT_TRUE(HtmlToText(closed).ends_with("> x\n"));
  // Each line of the source begins with as little as possible, each of the text with as much as is drawn.
  for (const char* level : {"<blockquote>", "<ol start=999999999><li>"}) {
    for (const auto& [start, line] :
         {std::pair("", "<br>x"), {"", "<p>x"}, {"<pre>", "\n"}, {"<pre>", "\nx"}, {"<pre>", "\t"}}) {
      const std::string html = Repeat(level, 500) + start + Repeat(line, 100'000) + "x";
      EXPECT_LE(HtmlToText(html).size(), 16 * html.size()) << level << start << line;
    }
  }
}

TEST(HtmlToText, LeavesNoBlanksAtLineEndsOfRandomPages) {
  std::mt19937 random(5);
  const std::vector<std::string> alphabet = {"<p>",
                                             "</p>",
                                             "<br>",
                                             "<ul>",
                                             "</ul>",
                                             "<li>",
                                             "<blockquote>",
                                             "</blockquote>",
                                             "<table>",
                                             "<tr>",
                                             "<td>",
                                             "</table>",
                                             "<pre>",
                                             "</pre>",
                                             " ",
                                             "\n",
                                             "&nbsp;",
                                             "x",
                                             "y",
                                             "<a href=z>",
                                             "</a>",
                                             "<b hidden>",
                                             "</b>",
                                             "<hr>",
                                             "<div>",
                                             "</div>",
                                             "<th>",
                                             "<table border=1>",
                                             "<img alt=q>",
                                             "<sup>",
                                             "7",
                                             "<p style='mso-list:l0 level3'>",
                                             "<b style='mso-list:ignore'>",
                                             "a line of words that is long enough to be wrapped "};
  for (int round = 0; round < 20000; ++round) {
    const std::string html = test::RandomText(random, alphabet, 40);
    const std::string text = HtmlToText(html, round % 2 == 0 ? kTextColumns : 32);
    if (text.empty()) continue;
    ASSERT_EQ(text.find(" \n"), std::string::npos) << html;
    ASSERT_NE(text.front(), '\n') << html;
    ASSERT_TRUE(text.ends_with('\n') && !text.ends_with("\n\n")) << html;
  }
}

}  // namespace
}  // namespace quillcast::html
