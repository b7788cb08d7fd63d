// Which links of a letter are not in order, and what is said of them.
#include "document/link_trouble.h"

#include <gtest/gtest.h>

#include "document/local_links.h"

namespace quillcast::document {
namespace {

struct Case {
  const char* target;
  const char* text;
  const char* said;  // a part of the sentence; null where there is none
};

TEST(LinkTrouble, IsToldInASentenceThatNamesTheLink) {
  for (const Case& c : std::initializer_list<Case>{
           {"https://example.org", "our shop", nullptr},
           {" HTTPS://Example.org/a b ", "our shop", nullptr},
           {"http://user@example.org:8080/?a=b#c", "x", nullptr},
           {"http://[2001:db8::1]/", "x", nullptr},
           {"https://b\xC3\xBC"
            "cher.example",
            "x", nullptr},
           {"https://8.8.8.8/", "x", nullptr},
           {"https://example.org/?m=$*MergeEmail*$", "x", nullptr},
           {"$*MergeWebSite*$", "x", nullptr},
           {"#top", "up", nullptr},
           {"tel:+47123", "call", nullptr},
           {"", "our shop", "“our shop” leads nowhere"},
           {"#", "our shop", "“our shop” leads nowhere"},
           {" ", "", "A link without words leads nowhere"},
           {"https://example.org/x", "", "The link to “https://example.org/x” has no words"},
           {"javascript:void(0)", "more", "“more” is a script"},
           {"java\tscript:void(0)", "more", "“more” is a script"},
           {"\x01javascript:$*MergeCity*$", "more", "“more” is a script"},
           {"data:text/html,x", "more", "which no mail reader follows"},
           {"http://[fe80::1]/", "x", "which only this network knows"},
           {"http://[fd00::1]/", "x", "which only this network knows"},
           {"http://0.0.0.0/", "x", "which only this network knows"},
           {"http://nas.home.arpa/", "x", "which only this network knows"},
           {"file:///home/ada/list.pdf", "list", "a file of this computer"},
           {"C:\\list.pdf", "list", "a file of this computer"},
           {"file:///home/$*MergeCity*$.pdf", "list", "a file of this computer"},
           {"view-source:file:///home/a", "list", "a file of this computer"},
           {"file:///home/a", "", "“file:///home/a” leads to “file:///home/a”, a file of this computer"},
           {"\\\\server\\list.pdf", "list", "a file of this computer"},
           {"\\Users\\list.pdf", "list", "a file of this computer"},
           {"\\/x.example/list.pdf", "list", "no complete address"},
           {"https://x.example/search?q=C:\\Windows", "x", nullptr},
           {"https://x.example/?q=file:///etc#C%3A%5C", "x", nullptr},
           {"mailto:help@x.example?subject=Files in C:\\Users", "x", nullptr},
           {"ht\ntps://x.example/go?u=C%3A%5CWindows", "x", nullptr},
           {"D:\\_Projekte\\x.html", "x", "a file of this computer"},
           {"SMB://server/share/list.pdf", "list", "a file of this computer"},
           {"http://C:\\list.pdf", "list", "a file of this computer"},
           {"onenote:///D:\\list.one", "list", "a file of this computer"},
           {"http:\\\\www.example.com\\x", "x", "no complete address"},
           {"//localhost/?q=C:\\x", "x", "no complete address"},
           {"prices.html?q=C:\\x", "x", "no complete address"},
           {"whatsapp://send?text=C:\\x", "x", nullptr},
           {"$*MergeWebSite*$?u=file:///x", "x", nullptr},
           {"#C:\\x", "up", nullptr},
           {"prices.html", "prices", "“prices.html”, which is no complete address. Write https://"},
           {"//example.org/x", "prices", "no complete address"},
           {"example.org", "prices", "no complete address"},
           {"http:/example.org", "x", "no complete address"},
           {"https://", "x", "no complete address"},
           {"https://exa mple.org", "x", "no complete address"},
           {"https://example..org", "x", "no complete address"},
           {"http://localhost:8080/x", "x", "which only this network knows"},
           {"http://intranet/x", "x", "which only this network knows"},
           {"http://192.168.1.4", "x", "which only this network knows"},
           {"http://printer.local", "x", "which only this network knows"},
           {"https://10.example.org", "x", nullptr},
           {"http://172.16.0.9/x", "x", "which only this network knows"},
           {"http://172.31.255.255", "x", "which only this network knows"},
           {"http://172.32.0.1", "x", nullptr},
           {"http://172.15.0.1", "x", nullptr},
           {"htp://example.org", "x", "begins with “htp:”"},
           {"ttps://example.org", "x", "begins with “ttps:”"},
           {"sftp://example.org", "x", nullptr},
           {"https://https://www.example.org", "x", "which begins twice"},
           {"https://evil.example/", "www.bank.example",
            "shows another address than it leads to, “https://evil.example/”"},
           {"https://evil.example/", "https://bank.example/login", "shows another address"},
           {"https://notbank.example/", "bank.example", "shows another address"},
           {"https://click.bank.example/x?y", "www.bank.example", nullptr},
           {"https://bank.example/x", "HTTP://News.Bank.example", nullptr},
           {"https://example.org/a.pdf", "prices.pdf", nullptr},
           {"https://example.org/", "Version 2.0", nullptr},
           {"https://example.org/", "Node.js", nullptr},
           {"https://example.org/", "Dr.Who", nullptr},
           {"https://example.org/", "WWW.BANK.EXAMPLE", "shows another address"},
           {"https://example.org/", "2.50", nullptr},
           {"https://example.org/", "e.g.", nullptr},
           {"mailto:ada@example.org", "write", nullptr},
           {"MAILTO:ada@example.org,bob%40example.org?subject=x", "write", nullptr},
           {"mailto:?subject=Read%20this", "tell a friend", nullptr},
           {"mailto:", "write", "no mail address"},
           {"mailto:mailto:ada@example.org", "write", "no mail address"},
           {"mailto:a#b@example.org", "write", "writes to “a”, which is no mail address"},
           {"mailto:a%23b@example.org", "write", nullptr},
           {"mailto:ada", "write", "“write” writes to “ada”, which is no mail address"},
           {"mailto:ada@example", "write", "no mail address"},
           {"mailto:ada@example.org", "bob@example.org", "shows another address than it writes to, “ada@example.org”"},
           {"mailto:ada@example.org?subject=x", "ADA@example.org", nullptr},
       }) {
    const auto trouble = LinkTrouble(c.target, c.text);
    EXPECT_EQ(trouble.has_value(), c.said != nullptr) << c.target << ' ' << c.text;
    if (!trouble || c.said == nullptr) continue;
    EXPECT_NE(trouble->InEnglish().find(c.said), std::string::npos) << c.target << ": " << trouble->InEnglish();
  }
  const auto shown = LinkTrouble("javascript:\x1B[2J", std::string(5000, 'x') + "\n")->InEnglish();
  EXPECT_LT(shown.size(), 200U) << "cut";
}

TEST(LocalLinks, CountsWhatItDoesNotTell) {
  std::string html = "<a href='https://example.org/?q=C:\\a'>web</a><a href='smb://server/a'>share</a>";
  for (int i = 0; i < 21; ++i) html += "<a href='file:///home/ada/list.pdf'>list</a>";
  const auto told = LocalLinks(html, platform::CancelToken());
  ASSERT_EQ(told.size(), 21U);
  EXPECT_NE(told.front().InEnglish().find("“smb://server/a”"), std::string::npos);
  EXPECT_EQ(told.back().InEnglish(), "And 2 more links lead to files of this computer.");
}

TEST(LocalLinks, NameAPathWithBlanksAsAWhole) {
  for (const auto& [written, path] : std::initializer_list<std::pair<const char*, const char*>>{
           {"file:///C:/Users/Ada Love/a.pdf", "file:///C:/Users/Ada Love/a.pdf"},
           {"C:\\a &amp; b\\x.pdf id=k", "C:\\a & b\\x.pdf"}}) {
    const auto told = LocalLinks(std::string("<a href=") + written + ">w</a>", platform::CancelToken());
    ASSERT_EQ(told.size(), 1U) << written;
    EXPECT_NE(told.front().InEnglish().find("“" + std::string(path) + "”"), std::string::npos) << told[0].InEnglish();
  }
}

}  // namespace
}  // namespace quillcast::document
