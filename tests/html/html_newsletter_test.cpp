// Three newsletters as their makers write them, and the text that a person would write in their place.
#include <gtest/gtest.h>

#include "html/html_to_text.h"

namespace quillcast::html {
namespace {

struct Newsletter {
  const char* name;
  const char* html;
  const char* text;
};

constexpr Newsletter kNewsletters[] = {
    {"a shop", R"html(<!DOCTYPE html>
<html lang="en" xmlns:v="urn:schemas-microsoft-com:vml"><head><meta charset="utf-8"><title>Spring at Leaf &amp;
Kettle</title>
<!--[if
mso]><xml><o:OfficeDocumentSettings><o:PixelsPerInch>96</o:PixelsPerInch></o:OfficeDocumentSettings></xml><![endif]-->
<style>@media (max-width:600px){.col{width:100%!important}}</style></head>
<body style="margin:0;padding:0"><div style="display:none!important;font-size:1px;max-height:0;overflow:hidden">New
harvest inside&#847;&zwnj;&nbsp;&#847;&zwnj;&nbsp;</div>
<table role="presentation" width="100%" cellspacing="0" cellpadding="0"><tr><td align="center">
<!--[if mso]><table width="600"><tr><td><![endif]-->
<table role="presentation" width="600" cellspacing="0"><tr><td style="padding:20px" align="center"><a
href="https://leaf.example/?m=$*MergeID*$"><img src="logo.png" width="120" alt="Leaf &amp; Kettle"></a></td></tr>
<tr><td height="20" style="font-size:1px;line-height:1px">&nbsp;</td></tr>
<tr><td><a href="https://leaf.example/harvest"><img src="hero.jpg" width="600" alt=""
style="display:block"></a></td></tr>
<tr><td style="padding:20px"><h1 style="margin:0">First flush is here</h1>
<p>Dear&nbsp;$*MergeFirstName*$,</p><p>our first Darjeeling of the year has arrived.<br>It is light, flowery and
<em>very</em> fresh&hellip;</p>
<table role="presentation" cellspacing="0"><tr><td bgcolor="#336633" style="border-radius:4px"><a
href="https://leaf.example/harvest" style="color:#fff">Taste&nbsp;it&nbsp;&rarr;</a></td></tr></table></td></tr>
<tr><td><table role="presentation" width="100%"><tr>
<td class="col" width="50%" valign="top"><a href="https://leaf.example/pot"><img src="pot.jpg" alt="A glass
teapot"></a><h3>Teapot</h3><p>Glass, 0.8&nbsp;l<br>24 &euro;</p></td>
<td class="col" width="50%" valign="top"><a href="https://leaf.example/cup"><img src="cup.jpg" alt="Two
cups"></a><h3>Cups</h3><p>A pair<br>12 &euro;</p></td></tr></table></td></tr>
<tr><td style="border-top:1px solid #ccc;font-size:11px;color:#888" align="center">Leaf &amp; Kettle Ltd &#183; 1
Harbour Street &#183; Bristol<br>
<a href="https://leaf.example/web?$*MergeID*$">Read online</a> &nbsp;|&nbsp; <a
href="mailto:off@leaf.example?subject=Unsubscribe%20$*MergeEmail*$">Unsubscribe</a> &nbsp;|&nbsp; <a
href="tel:+44117496000">+44 117 496000</a></td></tr></table>
<!--[if mso]></td></tr></table><![endif]-->
</td></tr></table><img src="https://leaf.example/open.gif" width="1" height="1" alt=""></body></html>
)html",
     R"text(Leaf & Kettle <https://leaf.example/?m=$*MergeID*$>

First flush is here

Dear $*MergeFirstName*$,

our first Darjeeling of the year has arrived.
It is light, flowery and very fresh…

Taste it → <https://leaf.example/harvest>

A glass teapot <https://leaf.example/pot>

Teapot

Glass, 0.8 l
24 €

Two cups <https://leaf.example/cup>

Cups

A pair
12 €

Leaf & Kettle Ltd · 1 Harbour Street · Bristol
Read online <https://leaf.example/web?$*MergeID*$> | Unsubscribe <off@leaf.example> | +44 117 496000
)text"},
    {"a club", R"html(<html><body bgcolor="#ffffff"><center><table border=0 width=580><tr><td><font face="Arial"
size=2>
<p><b>Minutes of the rowing club</b></p>
<p>Hello $*MergeFirstName*$ $*MergeLastName*$,</p>
<ol type="a" start="2"><li>The <a href="https://row.example/boats?for=$*MergeFirstName*$">new boat</a> is
paid.</li><li>Open points:<ul><li>Oars<li>Paint: <ul><li>blue</li><li>white</li></ul></ul></li></ol>
<blockquote><p>I shall bring the paint.</p><p>&#8211; Jean</p></blockquote>
<table
border=1><caption>Results</caption><thead><tr><th>Crew</th><th>Time</th></tr></thead><tbody><tr>
<td>$*MergeFirstName*$</td><td align=right>7:02</td></tr><tr><td>Ada &amp; Bea</td><td
align=right>7:15</td></tr></tbody></table>
<pre>Mon   18:00
Wed   19:30</pre>
<hr><p>Photo: <img src="file:///home/jean/DSC_0042.JPG" alt="$*MergeFirstName*$ at the finish"> <img src=x.png
alt="DSC_0043.JPG"></p>
<p><a href="https://row.example">www.row.example</a> &middot; <a
href="mailto:jean@row.example">jean@row.example</a> <a name="end"></a><a href="#top">Top</a></p>
</font></td></tr></table></center></body></html>
)html",
     R"text(Minutes of the rowing club

Hello $*MergeFirstName*$ $*MergeLastName*$,

b. The new boat <https://row.example/boats?for=$*MergeFirstName*$> is paid.
c. Open points:
   - Oars
   - Paint:
     - blue
     - white

> I shall bring the paint.
>
> – Jean

Results
Crew  Time
$*MergeFirstName*$  7:02
Ada & Bea  7:15

Mon   18:00
Wed   19:30

----

Photo: $*MergeFirstName*$ at the finish

www.row.example · jean@row.example Top
)text"},
    {"an order",
     R"html(<!doctype
html><html><head><style>.body{width:100%}</style><noscript><xml>x</xml></noscript></head><body>
<div style="max-height:0;overflow:hidden;opacity:0">Secret preview</div><div
style="background-color:#f4f4f4"><!--[if mso | IE]><table align="center"><tr><td
style="line-height:0px;font-size:0px;"><![endif]-->
<div style="margin:0 auto;max-width:600px"><table align="center" role="presentation"
style="width:100%"><tbody><tr><td style="direction:ltr;font-size:0px;padding:20px 0;text-align:center">
<div class="column" style="font-size:0px;display:inline-block;width:100%"><table role="presentation"
width="100%"><tbody>
<tr><td align="left" style="font-size:0px;padding:10px 25px"><div style="font-family:Arial;font-size:20px">Ihre
Bestellung, $*MergeFirstName*$</div></td></tr>
<tr><td style="font-size:0px;padding:10px 25px"><p style="border-top:solid 4px #F45E43;font-size:1px;margin:0
auto;width:100%"></p></td></tr>
<tr><td style="font-size:0px"><table width="100%"><tr style="border-bottom:1px
solid"><th>Artikel</th><th>Menge</th><th>Preis</th></tr><tr><td>Stra&szlig;enkarte</td><td>1</td>
<td>9,80&nbsp;&#128;</td></tr><tr><td>Ka&shy;len&shy;der</td><td>2</td><td>24,00&nbsp;&#x80;</td></tr><tr><td
colspan="2">Summe</td><td><b>33,80&nbsp;&euro;</b></td></tr></table></td></tr>
<tr><td align="center" style="font-size:0px"><table role="presentation"><tr><td align="center" bgcolor="#414141"
role="presentation"><a href="https://shop.example/o/$*MergeID*$?a=1&amp;b=2" target="_blank"><p
style="margin:0">Sendung verfolgen</p></a></td></tr></table></td></tr>
<tr><td>
<ul style="list-style-type:none;padding:0"><li><p>Lieferung: Mo&ndash;Fr</p></li><li><p>R&uuml;ckgabe:
30&nbsp;Tage</p></li></ul></td></tr>
<tr><td><a href="https://shop.example/f"><img src=f.png></a> <a href="https://shop.example/i"><img src=i.png
alt="Instagram"></a><template>no</template></td></tr>
</tbody></table></div></td></tr></tbody></table></div></div>
<p dir="rtl">&#1588;&#1603;&#1585;&#1575; &#1604;&#1603;!</p><p>&#35613;&#35613;&#12290;<noscript>kein
Skript</noscript></p></body></html>
)html",
     R"text(Ihre Bestellung, $*MergeFirstName*$

Artikel  Menge  Preis
Straßenkarte  1  9,80 €
Kalender  2  24,00 €
Summe  33,80 €

Sendung verfolgen <https://shop.example/o/$*MergeID*$?a=1&b=2>

- Lieferung: Mo–Fr
- Rückgabe: 30 Tage

<https://shop.example/f> Instagram <https://shop.example/i>

شكرا لك!

謝謝。
)text"},
};

TEST(HtmlNewsletter, ReadsAsAPersonWouldWriteIt) {
  for (const Newsletter& letter : kNewsletters) EXPECT_EQ(HtmlToText(letter.html), letter.text) << letter.name;
}

}  // namespace
}  // namespace quillcast::html
