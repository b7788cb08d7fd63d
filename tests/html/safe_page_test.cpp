// What is left of a stranger's page: that nothing runs or loads, and that what is to be read is still there.
#include "html/safe_page.h"

#include <gtest/gtest.h>

#include "html/safe_css.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

// Without the marks, which are the same in every page.
std::string Safe(std::string_view page) {
  SafePageOptions options;
  options.forbids_loading = false;
  options.picture = [](std::string_view address) -> std::optional<std::string> {
    if (address == "cid:p@x") return "p.png";
    return {};
  };
  return platform::ReplaceAll(SafePage(page, options), "<head><meta charset=\"utf-8\"></head>", "");
}

TEST(SafePage, KeepsWhatIsReadAndDropsWhatActs) {
  struct Row {
    const char *page, *safe;
  };
  for (const auto& [page, safe] : {
           Row{"<p class=a style='color:red'>Grüße &amp; <b>mehr</b>",
               "<p class=\"a\" style=\"color:red\">Grüße &amp; <b>mehr</b>"},
           Row{"<p hidden>x<template shadowrootmode=open>y</template>", "<p hidden=\"\">x"},
           Row{"<svg><template></svg>a<form hidden>x</form><o:p style='display:none'>x</o:p>b<map>c</map>", "abc"},
           Row{"<div hidden>x<object></div>x</object></div>a", "<div hidden=\"\">xx</div>a"},
           Row{"<p hidden>x<form>a</form><details open>b", "<p hidden=\"\">x</p>a<details open=\"\">b"},
           Row{"a<script>alert(1)</script>b<SCRIPT src=//x></SCRIPT>c", "abc"},
           Row{"<script>a</script", ""},
           Row{"<p onclick=x() ONLOAD=y>a", "<p>a"},
           Row{"<img src=http://x/p.png><img src=cid:p@x alt='a\"b'>", "<img><img src=\"p.png\" alt=\"a&quot;b\">"},
           Row{"<img srcset='http://x 2x' src='&#99;id:p@x'>", "<img src=\"p.png\">"},
           Row{"<body background=http://x/b.png bgcolor=#ffffff>a", "<body bgcolor=\"#ffffff\">a"},
           Row{"<td background=cid:p@x>a", "<td background=\"p.png\">a"},
           Row{"<a href=https://example.org/?a=1&amp;b=2>x</a>", "<a href=\"https://example.org/?a=1&amp;b=2\">x</a>"},
           Row{"<a href=' java\tscript:x'>x</a><a href=data:text/html,x>y</a><a href=file:///etc>z</a>",
               "<a>x</a><a>y</a><a>z</a>"},
           Row{"<a href=MAILTO:ada@example.org>x</a>", "<a href=\"MAILTO:ada@example.org\">x</a>"},
           Row{"<a href=tel:1>x</a>", "<a href=\"tel:1\">x</a>"},
           Row{"<base href=http://x/><link rel=stylesheet href=x><meta http-equiv=refresh content=0>a", "a"},
           Row{"<form action=x>Name: <input value=y><button>Go</button><select><option>a</select></form>",
               "Name: <button>Go</button>a"},
           Row{"<iframe src=x>i</iframe><object data=x>o</object><embed src=x><textarea>t</textarea>", "o"},
           Row{"<svg onload=x><style>a{}</style><image href=http://x/></svg><math><mi>m</math>", "<style>a{}</style>m"},
           Row{"a<!-- c --><!--[if mso]><img src=x><![endif]--><?xml x?>b", "ab"},
           Row{"<title>A <b> &lt;c</title>x", "<title>A &lt;b&gt; &lt;c</title>x"},
           Row{"<xmp><script>a</script></xmp>", "&lt;script&gt;a&lt;/script&gt;"},
           Row{"<noscript><p title=\"</noscript><img src=x onerror=y>\"></noscript>a", "a"},
           Row{"<style>p{color:red}</style><p>a<style>@import 'http://x'; b{c:d}</style>",
               "<style>p{color:red}</style><p>a<style>; b{c:d}</style>"},
           Row{"a < b <c", "a &lt; b "},
           Row{"<!doctype html public 'x'><html lang=de><p>a", "<!DOCTYPE html><html lang=\"de\"><p>a"},
       }) {
    EXPECT_EQ(Safe(page), safe) << page;
  }
}

TEST(SafePage, SaysFirstHowItIsRead) {
  const std::string policy = "<meta http-equiv=\"Content-Security-Policy\"";
  for (const char* page : {"<html><head><meta charset=koi8-r><title>a</title></head>", "text", "<p>a", "", "</p>"}) {
    const std::string safe = SafePage(page, {});
    const std::size_t charset = safe.find("<head><meta charset=\"utf-8\">");
    EXPECT_NE(charset, std::string::npos) << page;
    EXPECT_EQ(safe.find(policy), charset + 28) << page;
    EXPECT_EQ(safe.rfind(policy), charset + 28) << page;
    EXPECT_EQ(safe.find("koi8"), std::string::npos);
  }
}

TEST(SafeCss, KeepsWhatLoadsNothing) {
  struct Row {
    const char *css, *safe;
  };
  for (const auto& [css, safe] :
       {Row{"color:red;margin:0 auto !important", "color:red;margin:0 auto !important"},
        Row{"background:URL(http://x);color:red", ";color:red"}, Row{"background:u\\72l(http://x)", ""},
        Row{"background:cross-fade('http://x', red)", ""},
        Row{" Background : #000 url('http://x') no-repeat;color:red", "background-color:#000000;color:red"},
        Row{"background:#036 url(x) ! Important", "background-color:#003366 !important"},
        Row{"a{background:url(http://x?a=#111)/cover\n RGB(1, 2,3)}", "a{background-color:#010203}"},
        Row{"a:'background:url(x) red'", ""}, Row{"background:ur/**/l(x);a:b/* url( */c", "background:ur l(x);a:b c"},
        Row{"width:expression(alert(1));behavior:x;-moz-binding:x", ";;"},
        Row{"background-image:image-set('http://x' 1x)", ""},
        Row{"@import 'x';@media print{p{color:red}}", ";@media print{p{color:red}}"},
        Row{"@font-face{font-family:x;src:local(a)}", "@font-face{font-family:x;}"},
        Row{"p:after{content:'</style>'}", "p:after{}"}, Row{"a:'x;url(y)';b:c", "a:'x;;b:c"},
        Row{"a:b/* never closed url(", "a:b "}}) {
    EXPECT_EQ(SafeCss(css), safe) << css;
  }
}

TEST(PageOfText, ShowsItsMarkup) {
  EXPECT_NE(PageOfText("1 < 2 & \"x\"\r\n").find("1 &lt; 2 &amp; &quot;x&quot;\r\n"), std::string::npos);
}

}  // namespace
}  // namespace quillcast::html
