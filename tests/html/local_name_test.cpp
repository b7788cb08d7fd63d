// What names a file of the writer's computer, and what leads to the net, in each kind of place of a page.
#include "html/local_name.h"

#include <gtest/gtest.h>

#include "html/local_names.h"

namespace quillcast::html {
namespace {

constexpr bool kFile = true;
constexpr bool kKept = false;

struct Row {
  const char* text;
  bool is_file;
};
using Rows = std::initializer_list<Row>;

TEST(LocalName, OfAnAddressIsByWhereItLeads) {
  for (const Row& row : Rows{
           // The web, with slashes of any kind and number, or none.
           {"http:\\\\www.example.com\\x", kKept},
           {"https:/x.example", kKept},
           {"https:x.example/?q=C:\\x", kKept},
           {"HTTPS:\\/\\x.example\\C:\\x", kKept},
           {" ht\ntps://x.example/?q=file:///etc", kKept},
           {"ftp://x.example/C:/x", kKept},
           {"wss:x.example#\\\\srv\\x", kKept},
           {"http://intranet/c:/x", kKept},
           {"https://[2001:db8::1]:8080/?C:\\x", kKept},
           {"https://file.example/?q=C:\\x", kKept},
           {"https://$*MergeSite*$/?q=C:\\x", kKept},
           {"mailto:ada@x.example?subject=Files in C:\\Users", kKept},
           {"sms:+49123&body=C:\\x", kKept},
           // A scheme before what is a file.
           {"http://C:\\Users\\ada\\x", kFile},
           {"https://file:///home/ada/x", kFile},
           {"http:/c%3A/Users/ada/x", kFile},
           {"https://x.example:C:\\Users", kFile},
           {"mailto:C:\\Users\\ada\\x", kFile},
           // Programs have schemes of their own.
           {"whatsapp://send?text=C:\\x", kKept},
           {"app:send?text=C:\\x", kKept},
           {"app://open#file:///x", kKept},
           {"webcal://x.example/C:/x.ics", kKept},
           {"ssh://git@host/C:/x", kKept},
           {"view-source:https://x.example/?q=C:\\x", kKept},
           // A folder "/home" of another server, or a page of an app, is none of this computer.
           {"webcal://cal.example/home/team/cal.ics", kKept},
           {"sftp://h.example/home/ada/x.png", kKept},
           {"ssh://git@host/home/ada/x.git", kKept},
           {"git+ssh://nas/home/ada/x.git", kKept},
           {"sftp://nas:22/home/ada/x.png", kKept},
           {"intent://example.com/home/ada/x.html#Intent;scheme=https;end", kKept},
           {"myapp://app.example.com/users/42/settings", kKept},
           {"myapp://app.example.com/Users/ada/x.png", kKept},
           {"myapp://profile/users/42/a.png", kKept},
           {"myapp://open/home/feed/42", kKept},
           {"myapp://open/home/feed/v1.2", kKept},
           // What programs ask themselves for: no server, an id that they made up, or a path to a file within it.
           {"app:///home/ada/notes/today", kFile},
           {"app://3b3f0e/home/ada/vault/today", kFile},
           {"app://note/home/ada/a.png?169", kFile},
           {"app://note/Users/ada/my%20a.md", kFile},
           {"app://note/home/ada/my%20letters%20of%20old/my%20letters%20of%20old/my%20letters%20of%20old/my%20letters"
            "%20of%20old/my%20letters%20of%20old/my%20letters%20of%20old/my%20letters%20of%20old/my%20letters%20of/my/"
            "a.png",
            kFile},
           {"app:/home/ada/a", kFile},
           {"app:/settings/home/ada", kKept},
           {"media://home/ada/a.png", kFile},
           {"media://home/feed/42", kKept},
           {"app://local/C%3A/Users/ada/a.png", kFile},
           {"asset://localhost/home/ada/a", kFile},
           {"asset://localhost:80/%2Fhome%2Fada%2Fa.png", kFile},
           {"asset://app.localhost/Users/ada/a", kFile},
           {"note-content://viewer//home/ada/a", kFile},
           {"view://r.example/file///home/ada/a", kFile},
           {"onenote:///D:\\x\\y.one", kFile},
           {"onenote:///\\\\srv\\share\\y.one", kFile},
           {"vscode://file/C:/x", kFile},
           {"vscode://file/home/ada/x", kFile},
           {"editor://file//srv/x", kFile},
           {"slack://file?team=T1&id=F2", kKept},
           {"figma://file/abc/Design", kKept},
           {"mailbox:///C|/Users/ada/Mail/Drafts?number=1", kFile},
           {"mailbox:///home/ada/Mail/Drafts?number=1", kFile},
           {"imap://ada@x.example:993/fetch%3EUID%3E/INBOX%3E7?part=1.2", kFile},
           {"imap://x.example/INBOX;UID=7", kKept},
           {"imap://x.example/fetch-all", kKept},
           {"imap://ada@x.example/fetch>UID>/INBOX>7", kFile},
           {"ms-word:ofe|u|file:///C:/x.docx", kFile},
           {"ms-word:ofe|u|https://x.example/C:/x.docx", kKept},
           {"git+file:///home/ada/x", kFile},
           {"javascript:open('x?y=file:///home/ada')", kFile},
           {"data:text/html,<a href='?file:///home/ada'>", kFile},
           // Relative, with or without a server.
           {"?q=C:\\x", kKept},
           {"?/C:/x", kKept},
           {"#C:\\x", kKept},
           {"next.html?u=file:///x", kKept},
           {"$*MergeTitle*$?q=C:\\x", kKept},
           {"wiki/File:Logo/a.png", kKept},
           {"a:/b.html?c", kFile},
           {"//localhost/?q=C:\\x", kKept},
           {"//localhost/C:/x", kKept},
           {"//m\xC3\xBCnchen.example/C:/x", kKept},
           {"//ada@host:8080/C:/x", kKept},
           {"//host:8080/C:/x", kKept},
           {"//[::1]/?q=C:\\x", kKept},
           {"/\\x.example/C:/x", kKept},
           {"///x.example/C:/x", kKept},
           {"//host/?q=C:\\x", kKept},
           {"/home/x.html", kKept},
           {"../x", kKept},
           // Files, and servers of the person's own network.
           {"file:x", kFile},
           {"\x01 FI\tLE:\\\\x", kFile},
           {"C:\\x", kFile},
           {"c:x", kFile},
           {"/C:/Users/ada/x", kFile},
           {"//C|/Users/ada/x", kFile},
           {"/C%3A/Users/ada/x", kFile},
           {"%66ile:home/x", kFile},
           {"\xC2\xA0"
            "file:///x",
            kFile},
           {"///home/ada/x", kFile},
           {"\\\\srv\\share\\x", kFile},
           {"\\\\srv.example", kFile},
           {"//?/C:/x", kFile},
           {"\\\\?\\C:\\x", kFile},
           {"//?/UNC/srv/share/x", kFile},
           {"//wsl$/Ubuntu/home/ada", kFile},
           {"//wsl.localhost/Ubuntu/home/ada", kFile},
           {"%5C%5C%3F%5CUNC%5Csrv%5Cx", kFile},
           {"smb://srv/share/x", kFile},
           {"SMB:\\\\srv\\share", kFile},
       }) {
    EXPECT_EQ(AddressNamesLocalFile(row.text), row.is_file) << row.text;
  }
}

TEST(LocalName, OfATextIsAnyThatStandsBesideAddressesOfTheNet) {
  for (const Row& row : Rows{
           {"https://x.example/?q=C:\\x", kKept},
           {"https://x.example/file:Logo/c:/x", kKept},
           {"http:\\\\www.example.com\\x", kKept},
           {"see...https://x.example/?a=1&b=file:///x", kKept},
           {"https://x.example/?a[b]={C:\\x}", kKept},
           {"0; URL=https://x.example/?a=1&b=C:\\x", kKept},
           {"{\"a\":\"//localhost/?C:\\x\"}", kKept},
           {"{\"a\":\"//[::1]/?C:\\x\"}", kKept},
           {"//a.example/a.png 1x, //b.example/b.png?C:\\x 2x", kKept},
           {"whatsapp://send?text=C:\\x&a=file:///x", kKept},
           {"feed:https://x.example/?q=C:\\x", kKept},
           {"{\"t\":\"\\\\u003cdiv\\\\u003e\\\\u00dcber\\\\u003c\\/div\\\\u003e\"}", kKept},
           {"{\"t\":\"\\\\n\\\\ty\"} ^\\\\w+\\.x$", kKept},
           {"\"\\\\u003cdiv\\share\"", kFile},
           {"\"\\\\n\\share\"", kFile},
           {"a file:b/c", kKept},
           {"my profile:/x", kKept},
           {"///x", kKept},
           {"w:\\ :\\ \\d", kKept},
           // Right behind an address.
           {"https://x.example[file:///home/x", kFile},
           {"https://x.example/y[file:///home/x", kFile},
           {"{https://x.example/?q=y}{C:\\x}", kFile},
           {"https://[::1]/}{C:\\x", kFile},
           {"a=https://x.example/y&b=file:///home/x", kFile},
           {"a=https://x.example/?y=z&b=file:///home/x", kFile},
           {"a=b&c=https://x.example/?y=z&d=file:///home/x", kFile},
           {"https://x.example&nbsp;file:///home/x", kFile},
           {"https://x.example/?q=y&nbsp;file:///home/x", kFile},
           {"https://x.example/?q=y\xC2\xA0"
            "file:///home/x",
            kFile},
           {"https://x.example/\xE2\x80\x89"
            "C:\\x",
            kFile},
           {"https://x.example=C:\\x", kFile},
           {"https://x.example/,C:\\x", kFile},
           {"whatsapp://send?text=y C:\\x", kFile},
           {"app://open/C:/x?y", kFile},
           // Wherever it stands.
           {"x='\\\\?\\UNC\\srv\\share\\x'", kFile},
           {"u:/shop/x", kFile},
           {"C:/.ssh/x C:/@x", kFile},
           {"x 'C:/$ada/x'", kFile},
           {"a:/. b:/- c:/! d:/@", kKept},
           {"path:C:\\x", kFile},
           {"see...file:///home/x", kFile},
           {"saved_C:\\x", kFile},
           {"\"C:\\/Users\\/ada\"", kFile},
           {"src=/C:/x", kFile},
           {"'//?/C:/x'", kFile},
           {"'///home/ada/x'", kFile},
           {"//x#C:\\x", kFile},
           {"//[\\\\srv\\x", kFile},
           {"URL=file:home/x", kFile},
           {"file:home/x", kFile},
           {"'smb://srv/x'", kFile},
           {"f\\69le:///x", kFile},
           {"a%20file%3A%2F%2F%2Fx", kFile},
           {"https://x.example/?q=%20C:%5Cx", kKept},
           {"https%3A//x.example/ file&colon;//srv.x/home", kFile},
       }) {
    EXPECT_EQ(NamesLocalFile(row.text), row.is_file) << row.text;
  }
}

TEST(LocalName, OfWordsIsWhatTheyBeginWith) {
  for (const Row& row : Rows{
           {"Open C:\\Users in the Explorer", kKept},
           {"Open\tC:\\Users", kKept},
           {"Open\nC:\\Users", kKept},
           {"Open\xC2\xA0"
            "C:\\Users",
            kKept},
           {"File:Logo.png", kKept},
           {"file:Logo/a.png", kKept},
           {"Description: File:Logo.png", kKept},
           {"S:/M:/L sizes", kKept},
           {"S:/M/L/XL sizes", kKept},
           {"C:/S/ada", kFile},
           {"C:/D: drives", kKept},
           {"I/O: r:/w:", kKept},
           {"p:/unit", kKept},
           {"C:/Documents and Settings/ada", kFile},
           {"c:/x/y.png", kFile},
           {"c:/home/y.png", kFile},
           {"Our shop: https://x.example/?q=C:\\x", kKept},
           {"C:\\Users\\Ada Lovelace\\a.png", kFile},
           {"\xC2\xA0"
            "file:///home/a b",
            kFile},
           {"(C:\\Users\\a.png)", kFile},
           {"\"\\\\srv\\ada\\a.png\"", kFile},
           {"- C:\\Users\\a.png", kFile},
           {"\xE2\x80\xA2 C:\\Users\\a.png", kFile},
           {"\xE8\xAF\xB4\xEF\xBC\x9A C:\\Users\\a.png", kFile},
           {"Description:\nC:\\Users\\a.png", kFile},
           {"Description:\xC2\xA0"
            "C:\\Users\\a.png",
            kFile},
           {"Description:C:\\Users\\a.png", kFile},
           {"Description: C:\\Users\\a.png, size: 3 KB", kFile},
           {"Description: \"C:\\Users\\a.png\"", kFile},
           {"smb://srv/ada/a.png", kFile},
           {"Tip: C:\\Temp can be emptied", kKept},
           {"C:\\Windows is where it lives, isn't it?", kKept},
           {"Step 1: C:\\Setup.exe start", kKept},
           {"C:\\Ada Lovelace.png", kFile},
           {"C:\\Ada Love\\a b", kFile},
           {"C:\\Temp or file:///home/ada", kFile},
           {"C:\\Users\\ada is mine", kFile},
           {"C:\\Temp", kFile},
           {"/home/ada/a.png", kFile},
           {"Description: \"/Users/ada love/a.png\"", kFile},
           {"~/letters/a.png", kFile},
           {"/root/a.png", kFile},
           {"/home/ is where people live", kKept},
           {"/home/office and /home/garden", kKept},
           {"Open /home/ada/a.png", kKept},
           {"~/ ~ News ~", kKept},
       }) {
    EXPECT_EQ(WordsNameLocalFile(row.text), row.is_file) << row.text;
  }
}

TEST(LocalNames, AreTakenByWhatTheirPlaceIsFor) {
  struct Page {
    const char* written;
    const char* clean;  // null where it stays
  };
  for (const Page& page : std::initializer_list<Page>{
           {"<img srcset='a.png?C:\\x 1x, //b.example/b.png?C:\\x 2x,https://c.example/?C:\\x 3x'>", nullptr},
           {"<img srcset='a.png 1x,file:///b.png 2x'>", "<img srcset=''>"},
           {"<a href='?q=C:\\x'>a</a><a href='http:\\\\x.example\\x'>b</a><form action='next?u=file:///x'>", nullptr},
           {"<a href='smb://srv/share'>a</a><p data-a='smb://srv/share'>", "<a href=''>a</a><p data-a=''>"},
           {"<p class='file:mr-4 file:w-1/2' aria-label='Open C:\\Users' title='a C:\\x'>", nullptr},
           {"<p aria-label='C:\\Users\\ada' class='file:///x'>", "<p aria-label='' class=''>"},
           {"<meta name=description content='Open C:\\Users'><meta property='og:title' content='On C:\\x'>", nullptr},
           {"<meta property='og:image:alt' content='On C:\\x'><meta itemprop=name content='On C:\\x'>"
            "<meta itemprop=description content='Open C:\\x'>",
            nullptr},
           {"<meta name=description content='C:\\x\\y z'><meta name=source content='at C:\\x'>",
            "<meta name=description content=''><meta name=source content=''>"},
           {"<meta http-equiv=refresh content='0; URL=https://x.example/?a=C:\\x'>", nullptr},
           {"<!--[if gte mso 9]><xml><o:Description>Saved at C:\\Users\\ada\\x.docx</o:Description></xml>"
            "<p>Open C:\\Users</p><![endif]--><p>Saved at C:\\x</p>",
            "<!--[if gte mso 9]><xml><o:Description> </o:Description></xml>"
            "<p>Open C:\\Users</p><![endif]--><p>Saved at C:\\x</p>"},
           {"<!--[if mso]><p>C:\\Temp is emptied</p><v:textbox>C:\\x</v:textbox><w:anchorlock/>C:\\x<o:p>C:\\x</o:p>"
            "<o:File>C:\\x</o:File><![endif]-->",
            "<!--[if mso]><p>C:\\Temp is emptied</p><v:textbox>C:\\x</v:textbox><w:anchorlock/>C:\\x<o:p>C:\\x</o:p>"
            "<o:File> </o:File><![endif]-->"},
           {"<a title=\"see \"C:\\x\"\" href=\"https://x.example/a\">w</a>",
            "<a title=\"see \" href=\"https://x.example/a\">w</a>"},
           {"<a href=\"https://x.example/a\" title=\"\"C:/Users/ada/x\"\" id=y>w</a>",
            "<a href=\"https://x.example/a\" title=\"\" id=y>w</a>"},
           {"<a href=\"https://x.example/a\" title=\"see \"C:/x/y\" now\">w</a><td bgcolor=\"#fff\" \"D:/x\" width=5>",
            "<a href=\"https://x.example/a\" title=\"see \">w</a><td bgcolor=\"#fff\"  width=5>"},
           {"<a href=\"https://x.example/a\" x:c:/b=\"1\" @a.b/c d/e=f>w</a>",
            "<a href=\"https://x.example/a\" /b=\"1\" @a.b/c d/e=f>w</a>"},
           {"<!--[if supportFields]><b style='x:y'></b> INCLUDEPICTURE \"C:\\\\Users\\\\ada\\\\x.png\" <![endif]-->w"
            "<!--[if SupportFields]>LINK Excel.Sheet.12 \"\\\\\\\\srv\\\\ada\\\\x.xlsx\"<b>/home/ada/x</b><![endif]-->",
            "<!--[if supportFields]><b style='x:y'></b> <![endif]-->w<!--[if SupportFields]> <b> </b><![endif]-->"},
           {"<!--[if  supportFields ]> INCLUDEPICTURE <b lang=EN>\"C:\\\\Users\\\\Ada</b><i>zoe\\\\x.png\"</i> \\* "
            "MERGEFORMAT<![endif]-->",
            "<!--[if  supportFields ]> <b lang=EN> </b><i> </i> <![endif]-->"},
           {"<!--[if supportFields]>INCLUDEPICTURE \\d &quot;Bilder\\\\ada\\\\x.png&quot;<![endif]-->w<!--[if "
            "supportFields]>INCLUDETEXT \"..\\\\ada<b>\\\\x.doc\"</b><![endif]-->",
            "<!--[if supportFields]> <![endif]-->w<!--[if supportFields]> <b> </b><![endif]-->"},
           {"<!--[if supportFields]><b></b>INCLUDEPICTURE <i>\"cid:x.png@1\"</i> \\* MERGEFORMAT "
            "\\d<![endif]--><!--[if "
            "supportFields]>DATE \\@ \"dd.MM\" PAGEREF _Toc1 \\h<![endif]-->",
            nullptr},
           {"<a href=\"https://x.example/a\" title=\"a \"/home/ada/zoe/x\" b\">w</a><p class=k ~/zoe/x id=y>",
            "<a href=\"https://x.example/a\" title=\"a \"/>w</a><p class=k  id=y>"},
           {"<p class=k /home/ada/x><p /home/x home/ada/x a=/home/ada/x><a href=\"{{ url(\"/home/ada/x\") }}\">w</a>",
            "<p class=k /><p /home/x home/ada/x a=/home/ada/x><a href=\"{{ url(\"/home/ada/x\") }}\">w</a>"},
           {"<!--[if supportFields]>HYPERLINK \"https://x.example/?q=C:\\\\x\"<![endif]--><!--[if "
            "!supportFields]><p>C:\\Temp is emptied</p><![endif]-->",
            nullptr},
           {"<a href=\"https://x.example/q\" C:\\Users\\Ada Love\\x.html>w</a><a C:\\x=y id=z>",
            "<a href=\"https://x.example/q\" >w</a><a  id=z>"},
           {"<a style='color:red;background:url(https://x.example/a.png?x=1;y=C:/z);font-weight:bold'>", nullptr},
           {"<style>p{x:url(\"https://x.example/?q=a&amp;x=C:/d\");y:url( file:///x;y "
            ");z:URL(https://x.example/?;C:/d)}</style>",
            "<style>p{x:url(\"https://x.example/?q=a&amp;x=C:/d\");y:url(  );z:URL(https://x.example/?;C:/d)}</style>"},
           {"<input type=submit value='Move C:\\a to D:\\b'><input value='C:\\x'>", nullptr},
           {"<input type=Hidden value='C:\\x'><option value='C:\\x'>", "<input type=Hidden value=''><option value=''>"},
           {"<!-- made of /home/ada/letter.md --><!--~/l.md--><meta name=template content='/home/ada/t.ott'>",
            "<!----><!----><meta name=template content=''>"},
           {"<!-- path=/home/ada/y --><!--t:~/y--><!-- {/Users/ada/y} --><!--//x.example//home/a/b-->",
            "<!----><!----><!----><!--//x.example//home/a/b-->"},
           {"<!-- home/ada/x and https://x.example/home/ada/x --><p data-page='/home/shop/x'>", nullptr},
           {"<img alt='/home/ada/d.png' title='/Users/ada/d.png'>/home/ada/d.png",
            "<img alt='' title=''>/home/ada/d.png"},
           {"<!--a=https://x.example/y&b=file:///home/x--><!--https://x.example/?q=C:\\x-->",
            "<!----><!--https://x.example/?q=C:\\x-->"},
       }) {
    EXPECT_EQ(WithoutLocalNames(page.written), page.clean == nullptr ? page.written : page.clean);
  }
}

}  // namespace
}  // namespace quillcast::html
