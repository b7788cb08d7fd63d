// Which addresses in HTML are files of this computer, where they stand, and putting others in their place.
#include "html/local_pictures.h"

#include <gtest/gtest.h>

namespace quillcast::html {
namespace {

// The raw texts and the paths found: "raw->path;".
std::string Found(std::string_view html) {
  std::string found;
  for (const PictureReference& r : FindLocalPictures(html)) {
    found += std::string(html.substr(r.offset, r.length)) + "->" + r.path + ';';
  }
  return found;
}

TEST(LocalPictures, FindsFilesWhereverAPictureIsNamed) {
  const std::pair<const char*, const char*> cases[] = {
      {"<img src=a.png><IMG SRC=' b c.png '>", "a.png->a.png;b c.png->b c.png;"},
      {"<input type=image src=\"x/y.gif?v=1#f\">", "x/y.gif?v=1#f->x/y.gif;"},
      {"<img src='a&amp;b%20c%2.png'>", "a&amp;b%20c%2.png->a&b c%2.png;"},
      {"<img src='file:///home/a%C3%A9.png'>", "file:///home/a%C3%A9.png->/home/a\u00E9.png;"},
      {"<img src='FILE://localhost/x.png'><img src='file:/y.png'>",
       "FILE://localhost/x.png->/x.png;file:/y.png->/y.png;"},
      {"<img src='C:\\pics\\a.png'>", "C:\\pics\\a.png->C:/pics/a.png;"},
      {"<body background=b.jpg><table><td background='c.jpg'>", "b.jpg->b.jpg;c.jpg->c.jpg;"},
      {"<img style=x srcset='a.png, b.png 2x,data:image/png;base64,AA== 3x' src=c.png>",
       "a.png->a.png;b.png->b.png;c.png->c.png;"},
      {"<p style=\"background: URL( &quot;a b.png&quot; ) x, url('c.png'),url(d.png)\">",
       "a b.png->a b.png;c.png->c.png;d.png->d.png;"},
      {"<style>@import url(x.css?1);/* url(no.png) */p{background:url(\"a&amp;b.png\")}@import "
       "'q';i{b:url(z.png)}</style>",
       "a&amp;b.png->a&amp;b.png;z.png->z.png;"},
      // Escapes of CSS, and what only looks like an address.
      {"<style>p{background:url(a\\ b\\).png) url('it\\27 s.png')url(\"q\\\"q.png\")url(\n\tc.png\n)}</style>",
       "a\\ b\\).png->a b).png;it\\27 s.png->it's.png;q\\\"q.png->q\"q.png;c.png->c.png;"},
      {"<style>p{background:url(\"a.png\\\n\") url(b\\ )}</style>", "a.png\\\n->a.png;b\\ ->b;"},
      {"<style>p:after{content:'url(no.png)';x:my-url(no.png);src:url('no\n.png);y:URL(a.png)}</style>",
       "a.png->a.png;"},
      {"<p style='font-family:&quot;url(no.png)&quot;;background:url(&#39;a.png&#39;)/*url(no.png)*/'>",
       "a.png->a.png;"},
      {"<p style=\"b:url('a.png'\n)\">", "a.png->a.png;"},
      {"<style><!-- p{b:url(a.png)} --></style>", "a.png->a.png;"},
      {"<style>@font-face{src:url(f.woff2)}</style><img src=first.png src=second.png>", "first.png->first.png;"},
      {"<picture><source srcset='a,b.png 1x , c.png (x) 2.5x,\nd&amp;.png'><img alt=url(no.png)></picture>",
       "a,b.png->a,b.png;c.png->c.png;d&amp;.png->d&.png;"},
      {"<img srcset=', a.png,'><img srcset='b.png 2x'>x, y<img srcset=''>", "a.png->a.png;b.png->b.png;"},
      {"<link rel=icon href=no.png><video src=no.mp4 poster=p.png></video><a href=no.png>", "p.png->p.png;"},
      {"<IMG\nSRC\n=\n'a.png'\nSTYLE='B:URL(b.png)' Background=c.png>", "a.png->a.png;b.png->b.png;c.png->c.png;"},
      {"<img src='./x/../a.png?a=b.gif'><img src='a&#46;png#f'><img src='%3F%23.png'>",
       "./x/../a.png?a=b.gif->./x/../a.png;a&#46;png#f->a.png;%3F%23.png->?#.png;"},
      // Files that only another computer has: found, to be reported as missing.
      {"<img src='file:///C:/x.png'><img src='file://server/x.png'><img src='file:///C|/x.png'>"
       "<img src='\\\\server\\x.png'>",
       "file:///C:/x.png->/C:/x.png;file://server/x.png->//server/x.png;file:///C|/x.png->/C|/x.png;"
       "\\\\server\\x.png->//server/x.png;"},
      {"<!--[if mso]><v:rect><v:fill type=tile src='a.png' /><v:imagedata src=\"b.png\"/></v:rect><![endif]-->"
       "<!--[if !mso]><!--><img src=c.png><!--<![endif]--><!-- [if mso]><img src=no.png><![endif]-->",
       "a.png->a.png;b.png->b.png;c.png->c.png;"},
      {"<!--[if mso]><img src=a.png><![endif]--><!--[if mso]><img src=--><b background=b.png>",
       "a.png->a.png;b.png->b.png;"},
      {"<!--[if gte mso 9]><style>td{background:url(a.png)}</style><![endif]--><!--[if mso]><img src=no.png>",
       "a.png->a.png;"},
      {"<base target=_blank><base href='#x'><base href='https://x.example/'><img src=no.png><img src='/no.png'>"
       "<img src='file:///a.png'>",
       "file:///a.png->/a.png;"},
      {"<base href='file:///srv/mail/index.html'><img src=a.png><img src='/b.png'>",
       "a.png->/srv/mail/a.png;/b.png->/b.png;"},
      {"<p style=\"background:url('never closed\"><img src=a.png>", "a.png->a.png;"},
      {"<img src='http://x/a.png'><img src='HTTPS:a'><img src='//x/a.png'><img src='data:x'>"
       "<img src='cid:x'><img src='mailto:x'><img src='about:blank'><img src=''><img src=' #x'><img src><img "
       "src='a%00b'>"
       "<img src='$*MergeID*$.png'><script src=a.js></script><!--<img src=a.png>-->",
       ""},
      {"<img src='ht\ntp://x/a.png'>", ""},
  };
  for (const auto& [html, expected] : cases) EXPECT_EQ(Found(html), expected) << html;
}

TEST(LocalPictures, ReplacesAddressesAndNothingElse) {
  const std::string html =
      "<a  HREF=x><img src='a.png' alt=\"a.png\"><p style='b:url(b.png)'><img src=c.png><!--[if mso]>\r\n<v:fill "
      "SRC = \"d.png\"/>\t<![endif]-->";
  const auto found = FindLocalPictures(html);
  EXPECT_EQ(RewriteReferences(html, found, {"cid:1@x", "", "cid:3@x", "cid:4@x"}),
            "<a  HREF=x><img src='cid:1@x' alt=\"a.png\"><p style='b:url(b.png)'><img src=cid:3@x><!--[if mso]>\r\n"
            "<v:fill SRC = \"cid:4@x\"/>\t<![endif]-->");
  EXPECT_EQ(RewriteReferences(html, {}, {}), html);
}

TEST(LocalPictures, AreToldWhenATagNamesThem) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"<img src='$*MergeCity*$.png'><img src='$*MergeCity*$.png'><td background='pics/$*MergeState*$.gif'>",
       {"$*MergeCity*$.png", "pics/$*MergeState*$.gif"}},
      {"<p style='background:url($*MergeField1*$)'><img src='file:///x/$*MergeField2*$'>",
       {"$*MergeField1*$", "file:///x/$*MergeField2*$"}},
      {"<img src='https://example.org/$*MergeCity*$.png'><img src='//example.org/$*MergeCity*$'><img src='a.png'>", {}},
      {"<base href='https://example.org/'><img src='$*MergeCity*$.png'><a href='$*MergeWebSite*$'>", {}},
      {"<style>@font-face{src:url($*MergeCity*$.woff)}</style><img src='cid:$*MergeCity*$'>", {}},
  };
  for (const auto& [html, named] : cases) {
    EXPECT_EQ(FindPicturesNamedByTags(html), named) << html;
    for (const auto& found : FindLocalPictures(html)) EXPECT_EQ(found.path, "a.png");
  }
}

}  // namespace
}  // namespace quillcast::html
