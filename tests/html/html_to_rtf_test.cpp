// Pages as rich text. What programs make of it is held by tests/mail_file/test_office.py.
#include "html/html_to_rtf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "html/colour_contrast.h"
#include "html/rtf_body.h"
#include "html/style_values.h"

namespace quillcast::html {
namespace {

constexpr std::string_view kMargins = "\\paperw11906\\paperh16838\\margl1440\\margr1440\\margt1440\\margb1440\n";

std::optional<RtfPictureSize> FindPicture(std::string_view address) {
  return address == "cid:p" ? std::optional(RtfPictureSize{100, 50}) : std::nullopt;
}

std::string BodyOf(const std::string& rtf) {
  const std::size_t begin = rtf.find(kMargins) + kMargins.size();
  return rtf.substr(begin, rtf.size() - begin - 1);
}
std::string Body(std::string_view page) { return BodyOf(HtmlToRtf(page, FindPicture).text); }

TEST(HtmlToRtf, WritesWhatAPageShows) {
  struct Row {
    const char *page, *rtf;
  };
  for (const auto& [page, rtf] : {
           Row{"", ""},
           Row{" a  <b>b</b>\n c", "\\pard {a }{\\b b}{ c}\\par\n"},
           Row{"<p>a<p>b", "\\pard\\sa160 {a}\\par\n\\pard\\sa160 {b}\\par\n"},
           Row{"<div>a</div>b<div></div>", "\\pard {a}\\par\n\\pard {b}\\par\n"},
           Row{R"({\a})", R"(\pard {\{\\a\}}\par)"
                          "\n"},
           Row{"Grüße 😀&nbsp;a&shy;b", "\\pard {Gr\\u252?\\u223?e \\u-10179?\\u-8704?\\~a\\-b}\\par\n"},
           Row{"a<br>b<br/>c", "\\pard {a}\\line\n{b}\\line\n{c}\\par\n"},
           Row{"<h2>a</h2>", "\\pard\\sb240\\sa120 {\\b\\fs36 a}\\par\n"},
           Row{"<i><u>a</i>b</u>", "\\pard {\\i\\ul a}{b}\\par\n"},
           Row{"<p align=center>a<p style='text-align: right'>b",
               "\\pard\\qc\\sa160 {a}\\par\n\\pard\\qr\\sa160 {b}\\par\n"},
           Row{"<p style='font:italic 700 10pt/1.5 Arial, serif'>a<b style='font:small x'>b</b>",
               "\\pard\\sa160 {\\b\\i\\f1\\fs20 a}{\\f2\\fs20 b}\\par\n"},
           Row{"<p dir=rtl>a", "\\pard\\rtlpar\\sa160 {a}\\par\n"},
           Row{"<blockquote>a<blockquote>b</blockquote></blockquote>c",
               "\\pard\\li567 {a}\\par\n\\pard\\li1134 {b}\\par\n\\pard {c}\\par\n"},
           Row{"<ul><li>a<ul><li>b</ul><li>c<br>d<p>e</ul>f",
               "\\pard\\ls1\\ilvl0\\fi-360\\li720 {a}\\par\n\\pard\\ls2\\ilvl0\\fi-360\\li1440 {b}\\par\n"
               "\\pard\\ls1\\ilvl0\\fi-360\\li720 {c}\\line\n{d}\\par\n\\pard\\li720\\sa160 {e}\\par\n\\pard "
               "{f}\\par\n"},
           Row{"<pre> a\n  b</pre>", "\\pard {\\f1  a}\\line\n{\\f1   b}\\par\n"},
           Row{"<hr>a", "\\pard \\brdrb\\brdrs\\brdrw10 \\par\n\\pard {a}\\par\n"},
           Row{"<a href='https://x.org/?a=\"{b}\\'>a<b>c</b></a>d",
               "\\pard {\\field{\\*\\fldinst{HYPERLINK \"https://x.org/?a=%22\\{b\\}%5C\"}}{\\fldrslt {\\ul\\cf1 "
               "a}{\\b\\ul\\cf1 "
               "c}}}{d}"
               "\\par\n"},
           Row{"<a href=javascript:x>a</a>", "\\pard {a}\\par\n"},
           Row{"<ul><li>a</ul><br>b<ul><li>c</ul><hr>",
               "\\pard\\ls1\\ilvl0\\fi-360\\li720 {a}\\par\n\\pard \\line\n{b}\\par\n"
               "\\pard\\ls2\\ilvl0\\fi-360\\li720 {c}\\par\n\\pard \\brdrb\\brdrs\\brdrw10 \\par\n"},
           Row{"<a href=mailto:a@x.org><p>a<p>b</a>",
               "\\pard\\sa160 {\\field{\\*\\fldinst{HYPERLINK \"mailto:a@x.org\"}}{\\fldrslt {\\ul\\cf1 a}}}\\par\n"
               "\\pard\\sa160 {\\field{\\*\\fldinst{HYPERLINK \"mailto:a@x.org\"}}{\\fldrslt {\\ul\\cf1 b}}}\\par\n"},
           Row{"<img src=cid:p><img src=cid:q alt=word>",
               "\\pard \x01"
               "0\x01{word}\\par\n"},
           Row{"<table border=1><tr><td>a<td>b</table>c",
               "\\trowd\\trgaph108\\trleft0\\clbrdrt\\brdrs\\brdrw10\\clbrdrl\\brdrs\\brdrw10\\clbrdrb\\brdrs\\brdrw10"
               "\\clbrdrr\\brdrs\\brdrw10\\cellx4513\\clbrdrt\\brdrs\\brdrw10\\clbrdrl\\brdrs\\brdrw10\\clbrdrb\\brdrs"
               "\\brdrw10\\clbrdrr\\brdrs\\brdrw10\\cellx9026\n"
               "\\pard\\intbl {a}\\cell\n\\pard\\intbl {b}\\cell\n\\row\n\\pard {c}\\par\n"},
           Row{"<table><tr><td colspan=2>a<tr><td><td>b</table>",
               "\\trowd\\trgaph108\\trleft0\\cellx9026\n\\pard\\intbl {a}\\cell\n\\row\n"
               "\\trowd\\trgaph108\\trleft0\\cellx4513\\cellx9026\n\\pard\\intbl \\cell\n\\pard\\intbl "
               "{b}\\cell\n\\row\n"},
           Row{"<table><tr><td rowspan=2>a<td>b<tr><td>c<tr><td rowspan=0>d<td>e<tr><td>f</table>",
               "\\trowd\\trgaph108\\trleft0\\clvmgf\\cellx4513\\cellx9026\n"
               "\\pard\\intbl {a}\\cell\n\\pard\\intbl {b}\\cell\n\\row\n"
               "\\trowd\\trgaph108\\trleft0\\clvmrg\\cellx4513\\cellx9026\n"
               "\\pard\\intbl \\cell\n\\pard\\intbl {c}\\cell\n\\row\n"
               "\\trowd\\trgaph108\\trleft0\\clvmgf\\cellx4513\\cellx9026\n"
               "\\pard\\intbl {d}\\cell\n\\pard\\intbl {e}\\cell\n\\row\n"
               "\\trowd\\trgaph108\\trleft0\\clvmrg\\cellx4513\\cellx9026\n"
               "\\pard\\intbl \\cell\n\\pard\\intbl {f}\\cell\n\\row\n"},
           Row{"<table><tr><td>a<td rowspan=2>b<tr><td>c</table>",  // the last of a row
               "\\trowd\\trgaph108\\trleft0\\cellx4513\\clvmgf\\cellx9026\n"
               "\\pard\\intbl {a}\\cell\n\\pard\\intbl {b}\\cell\n\\row\n"
               "\\trowd\\trgaph108\\trleft0\\cellx4513\\clvmrg\\cellx9026\n"
               "\\pard\\intbl {c}\\cell\n\\pard\\intbl \\cell\n\\row\n"},
           Row{"x<table><tr><td>a<table><tr><td>b</table></table>",
               "\\pard {x}\\par\n\\trowd\\trgaph108\\trleft0\\cellx9026\n\\pard\\intbl {a}\\par\n"
               "\\pard\\intbl\\itap2 {b}\\nestcell{\\nonesttables\\par}\n"
               "{\\*\\nesttableprops\\trowd\\trgaph108\\trleft0\\cellx8810\\nestrow}{\\nonesttables\\par}\n"
               "\\pard\\intbl \\cell\n\\row\n"},
           Row{"<table><caption>a</caption><tr>stray<td>b</table>",
               "\\trowd\\trgaph108\\trleft0\\cellx9026\n\\pard\\intbl {a}\\cell\n\\row\n"
               "\\trowd\\trgaph108\\trleft0\\cellx4513\\cellx9026\n\\pard\\intbl {stray}\\cell\n\\pard\\intbl "
               "{b}\\cell\n"
               "\\row\n"},
           Row{"<td>a<td>b", "\\pard {a}\\par\n\\pard {b}\\par\n"},
           Row{"<script>a</script><style>b</style><title>c</title><p style=display:none>d</p>e"
               "<span style='font-size:0'>f</span>",
               "\\pard {e}\\par\n"},
           Row{"<div style='font-size:10px'><h1>a</h1><h3 style='font-size:2em'>b</h3></div><h1 style='font-size:1em'>c"
               "</h1><h2 style='font-size:50%'>d<small style='font-size:1em'>e</small></h2>",
               "\\pard\\sb240\\sa120 {\\b\\fs30 a}\\par\n\\pard\\sb240\\sa120 {\\b\\fs30 b}\\par\n"
               "\\pard\\sb240\\sa120 {\\b c}\\par\n\\pard\\sb240\\sa120 {\\b\\fs12 d}{\\b\\fs12 e}\\par\n"},
           Row{"a\x01"
               "0\x01\x02"
               "b",
               "\\pard {a0b}\\par\n"},
       }) {
    EXPECT_EQ(Body(page), rtf) << page;
  }
}

// The body with the colours themselves for their numbers, as "\cf#ff0000".
std::string InColours(std::string_view page) {
  const std::string rtf = HtmlToRtf(page, FindPicture).text;
  std::vector<std::string> colours = {"none"};
  for (std::size_t at = rtf.find("\\red"); at != std::string::npos; at = rtf.find("\\red", at + 1)) {
    unsigned red = 0;
    unsigned green = 0;
    unsigned blue = 0;
    if (std::sscanf(rtf.c_str() + at, "\\red%u\\green%u\\blue%u;", &red, &green, &blue) != 3) continue;
    char name[16];
    std::snprintf(name, sizeof name, "#%02x%02x%02x", red & 0xFF, green & 0xFF, blue & 0xFF);
    colours.emplace_back(name);
  }
  const std::string body = BodyOf(rtf);
  std::string out;
  for (std::size_t i = 0; i < body.size();) {
    out += body[i++];
    const bool is_colour = std::ranges::any_of(std::array{"\\cf", "\\cb", "\\cbpat", "\\chcbpat", "\\clcbpat"},
                                               [&](const char* word) { return out.ends_with(word); });
    const std::size_t end = std::min(body.find_first_not_of("0123456789", i), body.size());
    if (!is_colour || end == i) continue;
    out += colours.at(std::stoul(body.substr(i, end - i)));
    i = end;
  }
  return out;
}

TEST(HtmlToRtf, WordsHaveTheirColoursAndCanBeReadOnTheGroundThatIsWritten) {
  struct Row {
    const char *page, *rtf;
  };
  for (const auto& [page, rtf] : {
           // Grounds go along, each where it differs from what is behind it
           Row{"<table><thead style='background:#000;color:#fff'><tr><td>a<td>b</thead><tr><td>c<tbody "
               "style='color:#f00'>"
               "<td>d<tfoot>e</table>",
               "\\trowd\\trgaph108\\trleft0\\clcbpat#000000\\cellx4513\\clcbpat#000000\\cellx9026\n"
               "\\pard\\intbl {\\cf#ffffff a}\\cell\n\\pard\\intbl {\\cf#ffffff b}\\cell\n\\row\n"
               "\\trowd\\trgaph108\\trleft0\\cellx4513\n\\pard\\intbl {c}\\cell\n\\row\n"
               "\\trowd\\trgaph108\\trleft0\\cellx4513\n\\pard\\intbl {\\cf#ff0000 d}\\cell\n\\row\n"
               "\\trowd\\trgaph108\\trleft0\\cellx4513\n\\pard\\intbl {e}\\cell\n\\row\n"},
           Row{"<body bgcolor=#000000 text=#ffffff>a<hr><br><table><tr><td>b<td bgcolor=white>c</table>",
               "\\pard\\cbpat#000000 {\\cf#ffffff a}\\par\n"
               "\\pard\\cbpat#000000 \\brdrb\\brdrs\\brdrw10 \\par\n\\pard\\cbpat#000000 \\line\n\\par\n"
               "\\trowd\\trgaph108\\trleft0\\clcbpat#000000\\cellx4513\\cellx9026\n"
               "\\pard\\intbl {\\cf#ffffff b}\\cell\n\\pard\\intbl {c}\\cell\n\\row\n"},
           Row{"<p style='background:#000;color:#fff'>a<p>b",
               "\\pard\\sa160\\cbpat#000000 {\\cf#ffffff a}\\par\n"
               "\\pard\\sa160 {b}\\par\n"},
           Row{"<center style='background:#000 url(x.png) no-repeat'><h1 style=color:#eee>a</h1>",
               "\\pard\\qc\\sb240\\sa120\\cbpat#000000 {\\b\\fs48\\cf#eeeeee a}\\par\n"},
           Row{"<table bgcolor=#000000><tr><td>a<table><tr><td><font color=white>b</font><td style='background:#fff'>c"
               "</table></table>",
               "\\trowd\\trgaph108\\trleft0\\clcbpat#000000\\cellx9026\n\\pard\\intbl {a}\\par\n"
               "\\pard\\intbl\\itap2 {\\cf#ffffff b}\\nestcell{\\nonesttables\\par}\n"
               "\\pard\\intbl\\itap2 {c}\\nestcell{\\nonesttables\\par}\n"
               "{\\*\\nesttableprops\\trowd\\trgaph108\\trleft0\\cellx4405\\clcbpat#ffffff\\cellx8810"
               "\\nestrow}{\\nonesttables\\par}\n\\pard\\intbl \\cell\n\\row\n"},
           Row{"<span style='background:#036;color:white'>a<div style='background:white;color:navy'>b",
               "\\pard {\\cf#ffffff\\chshdng0\\chcbpat#003366\\cb#003366 a}\\par\n\\pard {\\cf#000080 b}\\par\n"},
           // What is no ground
           Row{"<div style='background:rgba(0, 0, 0, 0)'><p style='background-color:rgb(0 0 0 / 10%)'>a",
               "\\pard\\sa160 {a}\\par\n"},
           // Colours of a picture that does not go along, and those that nobody sees on the page itself
           Row{"<td background=x.png><font color=white>a<font color=#999999>b<font color=#777777>c",
               "\\pard {a}{b}{\\cf#777777 c}\\par\n"},
           Row{"<div style='background:url(x.png)'><p style='background:#111;color:#fff'>a"
               "<p style='background-image:linear-gradient(#000,#333);color:#fff'>b",
               "\\pard\\sa160\\cbpat#111111 {\\cf#ffffff a}\\par\n\\pard\\sa160 {b}\\par\n"},
           Row{"<p style='color:#fff'>a<span style='color:#bbb'>b</span><span style='background:#fff;color:#fefefe'>c",
               "\\pard\\sa160 {a}{\\cf#bbbbbb b}{\\chshdng0\\chcbpat#ffffff\\cb#ffffff c}\\par\n"},
       }) {
    EXPECT_EQ(InColours(page), rtf) << page;
  }
  const std::string field = "{\\field{\\*\\fldinst{HYPERLINK \"http://x/\"}}{\\fldrslt ";
  for (const auto& [words, rtf] : {
           Row{" style='color:#c00;text-decoration:none'>a", "{\\cf#cc0000 a}"},
           Row{" style='background:#06c;color:#fff'>a", "{\\ul\\cf#ffffff\\chshdng0\\chcbpat#0066cc\\cb#0066cc a}"},
           Row{" style='color:Inherit'><span style='text-decoration:none'>a", "{\\ul\\cf#008000 a}"},
           Row{" style='text-decoration:line-through'>a", "{\\strike\\cf#0000ee a}"},
       }) {
    EXPECT_EQ(InColours("<p style='color:green'><a href=http://x/" + std::string(words) + "</a>"),
              "\\pard\\sa160 " + field + rtf + "}}\\par\n")
        << words;
  }
  EXPECT_EQ(InColours("<u><span style='text-decoration:none'>a</span></u><s style='text-decoration:none'>b</s>"),
            "\\pard {\\ul a}{b}\\par\n");
  EXPECT_NEAR(ContrastOf(0xFFFFFF, 0), 21, 0.001);
  EXPECT_NEAR(ContrastOf(0x777777, 0xFFFFFF), 4.48, 0.01);
}

TEST(HtmlToRtf, ListsFontsColoursAndListsFirst) {
  EXPECT_EQ(HtmlToRtf("<p style=\"font: x; font-family: 'Comic; Sans}', serif; color: #0f0; font-size: 16px\">a"
                      "<font face=monospace color=navy size=5>b</font>"
                      "<ol type=i start=3><li>c<li value=7>d</ol><ul><li>e</ul>")
                .text,
            "{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1\n{\\fonttbl{\\f0\\fnil\\fcharset0 Times New Roman;}"
            "{\\f1\\fnil\\fcharset0 Comic;}{\\f2\\fnil\\fcharset0 Courier New;}}\n"
            "{\\colortbl;\\red0\\green255\\blue0;\\red0\\green0\\blue128;}\n"
            "{\\*\\listtable\n"
            "{\\list\\listtemplateid1\\listsimple1{\\listlevel\\levelnfc2\\leveljc0\\levelfollow0\\levelstartat3"
            "{\\leveltext\\'02\\'00.;}{\\levelnumbers\\'01;}\\fi-360\\li720}\\listid1}\n"
            "{\\list\\listtemplateid2\\listsimple1{\\listlevel\\levelnfc2\\leveljc0\\levelfollow0\\levelstartat7"
            "{\\leveltext\\'02\\'00.;}{\\levelnumbers\\'01;}\\fi-360\\li720}\\listid2}\n"
            "{\\list\\listtemplateid3\\listsimple1{\\listlevel\\levelnfc23\\leveljc0\\levelfollow0\\levelstartat1"
            "{\\leveltext\\'01\\u8226?;}{\\levelnumbers;}\\fi-360\\li720}\\listid3}\n"
            "}\n{\\*\\listoverridetable{\\listoverride\\listid1\\listoverridecount0\\ls1}"
            "{\\listoverride\\listid2\\listoverridecount0\\ls2}{\\listoverride\\listid3\\listoverridecount0\\ls3}}\n" +
                std::string(kMargins) +
                "\\pard\\sa160 {\\f1\\cf1 a}{\\f2\\fs36\\cf2 b}\\par\n"
                "\\pard\\ls1\\ilvl0\\fi-360\\li720 {c}\\par\n\\pard\\ls2\\ilvl0\\fi-360\\li720 {d}\\par\n"
                "\\pard\\ls3\\ilvl0\\fi-360\\li720 {e}\\par\n}");
}

TEST(HtmlToRtf, FitsPicturesIntoTheirPlace) {
  const auto page = HtmlToRtf(
      "<img src=cid:p><img src=cid:p width=40><img src=cid:p height=100px><img src=cid:p width=2000 height=1000>"
      "<table><tr><td><img src=cid:p width=400><td></table>",
      FindPicture);
  const std::vector<std::pair<int, int>> expected = {{1500, 750}, {600, 300}, {3000, 1500}, {9026, 4513}, {4297, 2148}};
  std::vector<std::pair<int, int>> sizes;
  for (const RtfPicture& picture : page.pictures) sizes.emplace_back(picture.twips.width, picture.twips.height);
  EXPECT_EQ(sizes, expected);
}

std::string Repeated(std::string_view piece, std::size_t times) {
  std::string out;
  for (std::size_t i = 0; i < times; ++i) out += piece;
  return out;
}

// Whatever is opened is closed, so that a reader is at the end where the file is.
TEST(HtmlToRtf, IsWholeAndBoundedWhateverThePage) {
  const std::string link = "<a href=http://" + std::string(1900, 'x') + ">";
  for (const std::string& page :
       {Repeated("<table><tr><td>", 2000), Repeated("<div><b>a", 5000), Repeated("<ul><li>a", 3000),
        Repeated("<td>a", 1000), "<table><tr>" + Repeated("<td>a", 1000) + "</table>",
        Repeated("<table>a<tr>b<td>c</tr>d", 500), link + Repeated("<p>a", 5000),
        Repeated("</table></td></b></ul>", 1000), Repeated("<table border=1><td></table>", 3000),
        std::string("<q><li><table><caption><td><q><pre>\r\n a")}) {
    const std::string rtf = HtmlToRtf(page, FindPicture).text;
    int depth = 0;
    for (std::size_t i = 0; i < rtf.size(); ++i) {
      if (rtf[i] == '\\') {
        ++i;
      } else if (rtf[i] == '{') {
        ++depth;
      } else if (rtf[i] == '}') {
        ASSERT_GT(depth, i + 1 == rtf.size() ? 0 : 1) << page.substr(0, 60);
        --depth;
      }
    }
    EXPECT_EQ(depth, 0) << page.substr(0, 60);
    EXPECT_LT(rtf.size(), 40 * page.size() + 100'000) << page.substr(0, 60);
  }
  const std::string row = Body("<table><tr>" + Repeated("<td>a", 100) + "</table>");
  std::size_t cells = 0;
  for (std::size_t at = row.find("{a}"); at != std::string::npos; at = row.find("{a}", at + 1)) ++cells;
  EXPECT_EQ(cells, 100U) << "a row of more cells than there can be keeps their words";
}

TEST(StyleValues, AreReadAsMailWritesThem) {
  struct Row {
    const char* value;
    std::int64_t colour;  // -1: none
  };
  for (const auto& [value, colour] : {Row{"#fff", 0xFFFFFF},
                                      Row{"#12aB9f", 0x12AB9F},
                                      Row{"12ab9f", 0x12AB9F},
                                      Row{"RGB(255, 0,16)", 0xFF0010},
                                      Row{"rgba(1,2,3,.5)", 0x010203},
                                      Row{"rgba(1,2,3,.4)", -1},
                                      Row{"rgb(1 2 3 / 49%)", -1},
                                      Row{" Navy ", 0x000080},
                                      Row{"transparent", -1},
                                      Row{"#12", -1},
                                      Row{"rebeccapurple", 0x663399},
                                      Row{"yellowgreen", 0x9ACD32},
                                      Row{"#0007", -1},
                                      Row{"#12345680", 0x123456},
                                      Row{"", -1},
                                      Row{"rgb(1)", -1},
                                      Row{"rgb(100%, 20%,0%)", 0xFF3300},
                                      Row{"#ggg", -1},
                                      Row{"rgb(1 2 3)", 0x010203},
                                      Row{"hsl(0,100%,50%)", 0xFF0000},
                                      Row{"HSL(210 50% 40%)", 0x336699},
                                      Row{"hsla(-150deg, 50%, 40%, .9)", 0x336699},
                                      Row{"hsl(570 50% 40%)", 0x336699},
                                      Row{"hsl(9 900% 900%)", 0xFFFFFF},
                                      Row{"hsl(1 2% 3% / 10%)", -1},
                                      Row{"hsl(.5turn 50% 40%)", -1},
                                      Row{"hsl(50%)", -1}}) {
    const auto read = ReadColour(value);
    EXPECT_EQ(read ? std::int64_t{*read} : -1, colour) << value;
  }
  struct SizeRow {
    const char* value;
    int half_points;
  };
  for (const auto& [value, half_points] :
       {SizeRow{"12pt", 24}, SizeRow{"16px", 24}, SizeRow{"1.5em", 30}, SizeRow{"50%", 10}, SizeRow{"x-large", 36},
        SizeRow{"larger", 24}, SizeRow{"Smaller", 17}, SizeRow{"9999pt", 800}, SizeRow{"0", 0}, SizeRow{"-3pt", 0},
        SizeRow{"1e9pt", 0}, SizeRow{".5IN", 72}, SizeRow{"1cm", 57}, SizeRow{"10mm", 57}, SizeRow{"1pc", 24},
        SizeRow{"calc(1)", 0}}) {
    EXPECT_EQ(ReadLetterSize(value, 20).value_or(0), half_points) << value;
  }
  EXPECT_EQ(ReadFontSize("+2"), 36);
  EXPECT_EQ(ReadFontSize("99"), 72);
  EXPECT_EQ(ReadFontSize("x"), std::nullopt);
  EXPECT_EQ(ReadPixels("12.7px"), 12);
  EXPECT_EQ(ReadPixels("50%"), std::nullopt);
}

}  // namespace
}  // namespace quillcast::html
