// What is found in a document before it is sent.
#include "document/document_look.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace quillcast::document {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

// A letter that nothing is wrong with; "%" is where a case puts its own.
constexpr const char* kLetter =
    "<title>Spring</title><p>Dear reader, this letter has as many words as a short letter needs, so that nobody takes "
    "a picture in it for all it holds.%<p><a href='https://example.org/off'>Unsubscribe</a>";

DocumentLook LookOver(const MessageDocument& document, bool has_text_part = true) {
  const platform::CancelToken never;
  auto look = LookAt(document, has_text_part, never);
  EXPECT_TRUE(look);
  return look ? *look : DocumentLook();
}

DocumentLook LookOver(std::string html, bool has_text_part = true) {
  MessageDocument document;
  document.html = std::move(html);
  document.base_folder = "/nowhere";
  return LookOver(document, has_text_part);
}

std::vector<std::string> Findings(const DocumentLook& look) {
  std::vector<std::string> findings;
  for (const auto& finding : look.findings) findings.push_back(finding.InEnglish());
  return findings;
}

TEST(DocumentLook, FindsWhatWouldHurt) {
  struct Case {
    std::string inside;   // of the letter, or a page of its own
    const char* finding;  // how the only one begins; null for none
    bool has_text_part = true;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"", nullptr},
           {"<img src=https://example.org/a.png alt='Tulips'>", nullptr},
           {"<img src=https://example.org/a.png alt=''>", nullptr},
           {"<img src=https://example.org/count.gif width=1 height=1>", nullptr},
           {"<div style='display:none'><img src=https://example.org/a.png><a href=x>y</a></div>", nullptr},
           {"<!--[if mso]><a href=x>y</a><![endif]--><a name=place></a>", nullptr},
           {"<img src=https://example.org/a.png><img src=https://example.org/b.png>",
            "2 pictures have no alternative text, the first is “https://example.org/a.png”. Say what they show"},
           {"<img src=https://example.org/a.png>", "1 picture has no alternative text: “https://example.org/a.png”"},
           {"<img src=a%20b.png alt=x>", "1 picture is missing: “a b.png”. Put it where the document says"},
           {"<a href=''>more</a>", "The link “more” leads nowhere."},
           {"<a href='https://example.org/'><img src=https://example.org/a.png alt=''></a>",
            "The link to “https://example.org/” has no words"},
           {"<a href='https://example.org/'><b>our</b>\n <img src=https://example.org/a.png alt='shop'></a>", nullptr},
           {"<a href='https://evil.example/'>bank.<b>example</b></a>", "The link “bank.example” shows another address"},
           {"<area href='' alt=there>", "The link “there” leads nowhere."},
           {"<!--" + std::string(102 * 1024, 'x') + "-->", "The HTML is 10"},
           {"", "The account sends no text part", false},
           {"$*MergeFristName*$ $*MergeFirstName*$", "Unknown tag $*MergeFristName*$"},
           {"<p>[your street, postcode and town]", "“[your street, postcode and town]” stands in the letter still."},
       }) {
    std::string html = kLetter;
    html.replace(html.find('%'), 1, c.inside);
    const auto findings = Findings(LookOver(html, c.has_text_part));
    if (c.finding == nullptr) {
      EXPECT_THAT(findings, IsEmpty()) << c.inside;
    } else {
      EXPECT_THAT(findings, ElementsAre(StartsWith(c.finding))) << c.inside.substr(0, 100);
    }
  }
}

TEST(DocumentLook, TellsTheWorstFirst) {
  EXPECT_THAT(Findings(LookOver("")), ElementsAre(StartsWith("The text part will be empty"),
                                                  StartsWith("Nothing tells readers how to get no more"),
                                                  StartsWith("The document has no title")));
  EXPECT_THAT(Findings(LookOver("<img src=https://example.org/a.png><a href=x>off</a>", false)),
              ElementsAre(StartsWith("The message is one picture"), StartsWith("The account sends no text part"),
                          StartsWith("Nothing tells readers"), StartsWith("The link “off”"),
                          StartsWith("1 picture has no alternative"), StartsWith("The document has no title")));
  EXPECT_THAT(Findings(LookOver("<title>x</title><img src=https://x.example/ alt='Leave: unsubscribe'><img alt=b>")),
              ElementsAre(StartsWith("The message is hardly more than pictures")));
}

TEST(DocumentLook, TellsOfATitleThatNamesAFile) {
  for (const auto& [title, is_told] : std::initializer_list<std::pair<const char*, bool>>{
           {"C:\\Users\\ada\\letter.html", true},
           {"file:///home/ada/letter.html", true},
           {"~/letters/news.html", true},
           {"How to empty C:\\Temp", false},
           {"~ News ~", false},
       }) {
    const auto findings = Findings(LookOver("<title>" + std::string(title) + "</title>Unsubscribe"));
    EXPECT_EQ(findings.size(), is_told ? 1U : 0U) << title;
    for (const auto& finding : findings)
      EXPECT_THAT(finding, StartsWith("The title “" + std::string(title) + "” tells"));
  }
}

TEST(DocumentLook, KnowsTheWayOutInManyLanguages) {
  for (const char* words : {"<a href='https://x.example/UNSUBSCRIBE?1'>here</a>",
                            "<p>Zum Abmelden antworten Sie bitte.",
                            "<a href=x>Se d&eacute;sabonner</a>",
                            "SE D\u00C9SABONNER",
                            "Darse de baja",
                            "<b>\u041E\u0442\u043F\u0438\u0441\u0430\u0442\u044C\u0441\u044F</b>",
                            "退订",
                            "配信停止",
                            "수신거부",
                            "إلغاء الاشتراك",
                            "To opt\n  out, reply",
                            "opt&nbsp;out",
                            "e-mail<br>preferences",
                            "Un<b>sub</b>scribe",
                            "ab&shy;bestellen",
                            "opt <a href=https://x.example/>out</a>",
                            "annulla l\u2019iscrizione",
                            "<img src=https://x.example/a.png alt='Unsubscribe'>",
                            "Wenn Sie nichts mehr h\u00F6ren wollen: hier austragen",
                            "<a href=x> <b>Austragen</b></a>",
                            "<a href=x>Austragen!</a>",
                            "<a href=x>\u2709\uFE0F <b>\u201Eaus&shy;tragen\u201C</b> &raquo;</a>",
                            "Meld af",
                            "Jetzt austragen",
                            "Zum Austragen <a href=x>hier klicken</a>",
                            "ביטול הרשמה",
                            "Doneu-vos de baixa",
                            "Odjavite se",
                            "Отписване",
                            "Atsisakyti prenumeratos",
                            "Loobu uudiskirjast",
                            "Hủy đăng ký",
                            "Berhenti berlangganan",
                            "ยกเลิกการสมัคร",
                            "सदस्यता समाप्त करें",
                            "<a href=x>Manage preferences</a>"}) {
    const auto findings = Findings(LookOver(words));
    for (const auto& finding : findings) EXPECT_EQ(finding.find("Nothing tells readers"), std::string::npos) << words;
  }
  for (const char* words :
       {"<style>.unsubscribe{}</style><p class=unsubscribe>hello", "<p>opt<p>out",
        "<p>Wir werden das Turnier austragen", "<a href=https://x.example/>\u2026 das Turnier austragen!</a>",
        "<p>Wir werden <a href=https://x.example/>das Turnier austragen</a>",
        "<p>opt<img src=https://x.example/ alt='a.png'>-in"}) {
    EXPECT_THAT(Findings(LookOver("<title>x</title>" + std::string(words) + std::string(9000, '.'))),
                testing::Contains(StartsWith("Nothing tells readers")))
        << words;
  }
}

std::string Picture(std::size_t size) {
  std::string bytes = "GIF89a";
  bytes.resize(size, 'x');
  return bytes;
}

TEST(DocumentLook, CountsAndLists) {
  const test::TemporaryFolder folder;
  folder.Write("a.png", Picture(3000));
  folder.Write("b.png", std::string(57, 'x'));
  MessageDocument document;
  document.base_folder = folder.path();
  document.html =
      "<p style='background:url(b.png)'>Two w<b>or</b>ds&nbsp;more <img src=a.png alt=not-counted><img src=a.png>"
      "<p>\xE8\xAC\x9D\xE8\xAC\x9D\xE3\x80\x82 &mdash; 3<br>d\xC3\xA9j\xC3\xA0-vu<script>none</script><img "
      "src=gone.png>"
      "<a href='https://example.org/?a=1&amp;b=2'>\n the <i>link</i>\n</a>";
  const DocumentLook look = LookOver(document);
  EXPECT_EQ(look.words, 9) << "two, words, more, two characters, 3, déjà-vu, the, link";
  EXPECT_THAT(look.pictures, ElementsAre(LookedPicture{"b.png", 57, true}, LookedPicture{"a.png", 3000},
                                         LookedPicture{"gone.png", std::nullopt}));
  // 3000 octets are 4000 characters on 53 lines, 57 are 76 on one.
  EXPECT_EQ(look.picture_size, 4000U + 2 * 53 + 76 + 2);
  EXPECT_THAT(look.links, ElementsAre(LookedLink{"the link", "https://example.org/?a=1&b=2", std::nullopt}));
  EXPECT_EQ(Describe(look.links[0]).InEnglish(), "the link: https://example.org/?a=1&b=2");
  EXPECT_THAT(Findings(look), testing::Contains(StartsWith("1 file that stands for a picture is none: “b.png”")));
  EXPECT_EQ(Describe(look.pictures[0]).InEnglish(), "b.png, no picture");
  EXPECT_EQ(Describe(look.pictures[1]).InEnglish(), "a.png, 2.9 KiB");
  EXPECT_EQ(Describe(look.pictures[2]).InEnglish(), "gone.png, missing");
  EXPECT_TRUE(MoreLinks(look).empty() && MorePictures(look).empty());
  EXPECT_THAT(SizeOf(look).InEnglish(), StartsWith("9 words; a message is about 1."));
  document.base_folder.clear();
  document.html = "<img src='" + folder.path().relative_path().string() + "/a.png'>";
  EXPECT_EQ(LookOver(document).pictures.at(0).size, 3000U) << "without a folder, from the root";
}

TEST(DocumentLook, FindsPicturesThatAreTheMessage) {
  const auto begins = [](const char* inside) {
    const auto findings = Findings(LookOver("<title>x</title>" + std::string(inside) + " Unsubscribe"));
    return findings.empty() ? std::string() : findings.front().substr(0, 39);
  };
  EXPECT_EQ(begins("<img src=https://x.example/a alt=Sale>"), "The message is one picture: who does no");
  EXPECT_EQ(begins("<img src=https://x.example/a alt=Sale><img src=https://x.example/b alt=Logo width=90>"),
            "The message is hardly more than picture");
  EXPECT_EQ(begins("<img src=https://x.example/a alt=Sale><img src=https://x.example/b alt='' width=300>"),
            "The message is hardly more than picture");
  EXPECT_EQ(begins("<img src=https://x.example/b alt=Logo width=90> A line"), "");
}

TEST(DocumentLook, TellsOfAMessageThatIsHeavy) {
  const test::TemporaryFolder folder;
  MessageDocument document;
  document.base_folder = folder.path();
  document.html = kLetter;
  document.html.replace(document.html.find('%'), 1, "<img src=a.jpg alt=Tulips>");
  folder.Write("a.jpg", Picture(2'200'000));
  EXPECT_THAT(Findings(LookOver(document)), IsEmpty());
  folder.Write("a.jpg", Picture(20'000'000));
  EXPECT_THAT(Findings(LookOver(document)),
              ElementsAre(StartsWith("A message is about 26.1 MiB, which goes out once")));
}

TEST(DocumentLook, OfTextLooksForNoHtml) {
  MessageDocument document;
  document.format = Format::kText;
  document.text = "Hello there";
  document.html = "Hello there";
  const DocumentLook look = LookOver(document, false);
  EXPECT_EQ(look.words, 2);
  EXPECT_THAT(Findings(look), ElementsAre(StartsWith("Nothing tells readers")));
}

TEST(DocumentLook, KeepsTheFirstOfManyAndCountsTheRest) {
  std::string html;
  for (int n = 0; n < 100'000; ++n)
    html += "<a href=x" + std::to_string(n) + ">y</a><img alt='' src=" + std::to_string(n) + ">";
  const DocumentLook look = LookOver(html);
  EXPECT_EQ(look.links.size(), kMostListed);
  EXPECT_EQ(look.link_count, 100'000);
  EXPECT_EQ(look.pictures.size(), kMostListed);
  EXPECT_EQ(look.picture_count, 100'000);
  EXPECT_EQ(MoreLinks(look).InEnglish(), "And 99,700 more links.");
  EXPECT_EQ(MorePictures(look).InEnglish(), "And 99,700 more pictures.");
  EXPECT_LT(look.findings.size(), 30U);
  platform::CancelToken cancel;
  cancel.Request();
  MessageDocument document;
  document.html = html;
  EXPECT_EQ(LookAt(document, true, cancel).error().failure, Failure::kTryAgain);
}

}  // namespace
}  // namespace quillcast::document
