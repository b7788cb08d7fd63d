// Where the links of a message lead: what a person types, what is checked, and back from an address.
#include "document/link_address.h"

#include <gtest/gtest.h>

#include "document/link_choice.h"

namespace quillcast::document {
namespace {

TEST(LinkAddress, GetsTheSchemeThatWasMeant) {
  struct Case {
    const char *typed, *address;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"example.org", "https://example.org"},
           {" www.example.org/a?b=c:d ", "https://www.example.org/a?b=c:d"},
           {"example.org:8080/x", "https://example.org:8080/x"},
           {"//example.org/x", "https://example.org/x"},
           {"example.org/@ada", "https://example.org/@ada"},
           {"ada@example.org", "mailto:ada@example.org"},
           {"ada@example.org?subject=a/b", "mailto:ada@example.org?subject=a/b"},
           {"http://example.org", "http://example.org"},
           {"HTTPS://example.org", "HTTPS://example.org"},
           {"https://HTTP://https://example.org/http://x", "https://example.org/http://x"},
           {"https://http://", ""},
           {"mailto:ada@example.org", "mailto:ada@example.org"},
           {"mailto:1234@example.org", "mailto:1234@example.org"},
           {"sip:1000@example.org", "sip:1000@example.org"},
           {"geo:48.2,16.4", "geo:48.2,16.4"},
           {"tel:0123456", "tel:0123456"},
           {"SMS:0123456?body=a", "SMS:0123456?body=a"},
           {"localhost:8080", "https://localhost:8080"},
           {"localhost:8080?a=b", "https://localhost:8080?a=b"},
           {"localhost:8080#a", "https://localhost:8080#a"},
           {"$*MergeWebSite*$", "$*MergeWebSite*$"},
           {"#prices", "#prices"},
           {"https://", ""},
           {"mailto:", ""},
           {"  ", ""},
       }) {
    EXPECT_EQ(LinkAddress(c.typed), c.address) << c.typed;
  }
}

TEST(LinkChoice, IsCheckedForForm) {
  constexpr const char* kNoMail = "That is no mail address. It has the form name@example.org.";
  constexpr const char* kNoPlace = "The name of a place has no blanks, and neither #, \", < nor >.";
  constexpr const char* kBlocked = "Mail programs follow no link of this kind. Give the address of a page on the web.";
  constexpr const char* kNoServer = "The server is missing in the address. It has the form example.org/page.";
  constexpr const char* kNoTag = "There is no such merge tag. Copy its name from the menu of merge tags.";
  struct Case {
    LinkChoice choice;
    const char* result;  // the address, or what is wrong
  };
  for (const Case& c : std::initializer_list<Case>{
           {{LinkKind::kWeb, " example.org/a "}, "https://example.org/a"},
           {{LinkKind::kWeb, "$*MergeWebSite*$"}, "$*MergeWebSite*$"},
           {{LinkKind::kWeb, "https://example.org/?n=$*MergeFirstName*$"}, "https://example.org/?n=$*MergeFirstName*$"},
           {{LinkKind::kWeb, "https://$*MergeField1*$/x"}, "https://$*MergeField1*$/x"},
           {{LinkKind::kWeb, "tel:0123"}, "tel:0123"},
           {{LinkKind::kWeb, "https://"}, "Please enter the address of a page."},
           {{LinkKind::kWeb, "example.org/a b"}, "There is a blank in the address. Take it out, or write %20 for it."},
           {{LinkKind::kWeb, "https:///x"}, kNoServer},
           {{LinkKind::kWeb, "/etc/passwd"}, kNoServer},
           {{LinkKind::kWeb, "https:example.org"}, kNoServer},
           {{LinkKind::kWeb, "https://@/"}, kNoServer},
           {{LinkKind::kWeb, "C:\\x.html"}, kBlocked},
           {{LinkKind::kWeb, "about:blank"}, kBlocked},
           {{LinkKind::kWeb, "htp://example.org"}, kBlocked},
           {{LinkKind::kWeb, "JavaScript:alert(1)"}, kBlocked},
           {{LinkKind::kWeb, "file:///home/ada/a.html"}, kBlocked},
           {{LinkKind::kWeb, "https://example.org/$*MergeNick*$"}, kNoTag},
           {{LinkKind::kMail, "ada@example.org"}, "mailto:ada@example.org"},
           {{LinkKind::kMail, " ada@example.org ", "50 % off: a&b, \u00e4?"},
            "mailto:ada@example.org?subject=50%20%25%20off:%20a%26b,%20%C3%A4%3F"},
           {{LinkKind::kMail, "$*MergeEmail*$", "For $*MergeLastName*$"},
            "mailto:$*MergeEmail*$?subject=For%20$*MergeLastName*$"},
           {{LinkKind::kMail, "MailTo:ada@example.org", "x"}, "mailto:ada@example.org?subject=x"},
           {{LinkKind::kMail, "a#b%2+o'c@example.org", "x"}, "mailto:a%23b%252+o'c@example.org?subject=x"},
           {{LinkKind::kMail, "mailto:mailto:ada@example.org"}, kNoMail},
           {{LinkKind::kMail, ""}, "Please enter a mail address."},
           {{LinkKind::kMail, "ada"}, kNoMail},
           {{LinkKind::kMail, "ada@example.org, bob@example.net"}, kNoMail},
           {{LinkKind::kMail, "ada@example.org?cc=eve@example.net"}, kNoMail},
           {{LinkKind::kMail, "ada@example.org", "a\nBcc: eve"}, "A subject is one line."},
           {{LinkKind::kMail, "ada@example.org", "$*MergeNick*$"}, kNoTag},
           {{LinkKind::kPlace, "prices"}, "#prices"},
           {{LinkKind::kPlace, "pr\u00e9cis-2"}, "#pr\u00e9cis-2"},
           {{LinkKind::kPlace, " "}, "Please choose or name a place in the message."},
           {{LinkKind::kPlace, "our prices"}, kNoPlace},
           {{LinkKind::kPlace, "a\">"}, kNoPlace},
       }) {
    const auto complaint = CheckLink(c.choice);
    EXPECT_EQ(complaint ? complaint->message : LinkTarget(c.choice), c.result) << c.choice.address;
  }
}

// What a link says comes back as it was, or is left to the box for all addresses.
TEST(LinkChoice, IsReadFromAnAddress) {
  struct Case {
    const char* target;
    LinkKind kind;
    const char *address, *subject;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"", LinkKind::kWeb, "", ""},
           {"https://example.org/?a=b", LinkKind::kWeb, "https://example.org/?a=b", ""},
           {"#prices", LinkKind::kPlace, "prices", ""},
           {"MAILTO:ada@example.org?Subject=a%20b", LinkKind::kMail, "ada@example.org", "a b"},
           {"mailto:sales%23eu%25x@example.org", LinkKind::kMail, "sales#eu%x@example.org", ""},
           {"mailto:a%40b@example.org", LinkKind::kWeb, "mailto:a%40b@example.org", ""},
           {"mailto:ada@example.org?cc=bob@example.net", LinkKind::kWeb, "mailto:ada@example.org?cc=bob@example.net",
            ""},
           {"mailto:ada@example.org?subject=a&body=b", LinkKind::kWeb, "mailto:ada@example.org?subject=a&body=b", ""},
       }) {
    const LinkChoice read = ReadLink(c.target);
    EXPECT_EQ(read.kind, c.kind) << c.target;
    EXPECT_EQ(read.address, c.address);
    EXPECT_EQ(read.subject, c.subject);
    const std::string_view target = c.target;
    if (target.starts_with("mailto:")) {
      EXPECT_EQ(LinkTarget(read), target) << "unchanged";
    }
  }
}

}  // namespace
}  // namespace quillcast::document
