// Of the texts and pages of a message: which are shown, each once and in order, as a text and as a page.
#include <gtest/gtest.h>

#include "html/html_to_text.h"
#include "mail_file/body_formats.h"
#include "mail_file/body_page.h"
#include "mail_file/body_texts.h"
#include "mail_file/winmail_bytes.h"
#include "platform/base64.h"
#include "platform/text.h"
#include "support/temporary_folder.h"

namespace quillcast::mail_file {
namespace {

// Parts, each with its header.
std::string Text(const std::string& words, const std::string& fields = "") { return fields + "\r\n" + words; }
std::string Page(const std::string& words, const std::string& name = "") {
  return "Content-Type: text/html" + name + "\r\n\r\n<html><body>" + words + "</body></html>";
}
const std::string kNamed = "Content-Disposition: inline; filename=a.txt\r\n";
const std::string kPicture = "Content-Type: image/gif; name=a.gif\r\nContent-ID: <a>\r\n\r\nGIF89a";
std::string Holder(const std::string& kind, const std::vector<std::string>& parts) {
  static int count = 0;
  const std::string boundary = "b" + std::to_string(++count) + "x";
  std::string out = "Content-Type: multipart/" + kind + "; boundary=" + boundary + "\r\n";
  for (const std::string& part : parts) out += "\r\n--" + boundary + "\r\n" + part;
  return out + "\r\n--" + boundary + "--\r\n";
}
std::string Mixed(const std::vector<std::string>& parts) { return Holder("mixed", parts); }
std::string Related(const std::vector<std::string>& parts) { return Holder("related", parts); }
std::string Alternative(const std::vector<std::string>& parts) { return Holder("alternative", parts); }
std::string Winmail(const std::string& page) {
  return "Content-Type: application/ms-tnef; name=winmail.dat\r\nContent-Transfer-Encoding: base64\r\n\r\n" +
         platform::Base64(Tnef(Attribute(1, 0x00069003, Properties(1, Property(0x0102, 0x1013, page)))));
}
const std::string kUnknown = "Content-Transfer-Encoding: x-foo\r\n";
const std::string kManyBlanks = "\r\n\xC2\xA0 \r\n\r\n\r\n\r\n \r\n\r\n\r\n\r\n";

// The words parted by one blank, "*" for a picture, or what the error says.
std::string WordsOf(const Result<std::string>& body, bool is_html) {
  if (!body) return InOneLine(body.error());
  std::string text = is_html ? html::HtmlToText(platform::ReplaceAll(*body, "<img", "*<img")) : *body;
  std::string words;
  for (const char c : platform::ReplaceAll(text, "\xC2\xA0", " ")) {
    const bool is_blank = c == ' ' || c == '\r' || c == '\n';
    if (!is_blank || !(words.empty() || words.ends_with(' '))) words += is_blank ? ' ' : c;
  }
  return std::string(platform::Trim(words));
}

TEST(BodyOrder, ShowsEachTextOnceAndInPlace) {
  struct Row {
    const char* name;
    std::string message;
    const char* text;
    const char* page;
  };
  const test::TemporaryFolder folder;
  const std::string both = Alternative({Text("one"), Page("One")});
  const std::string empty = Alternative({Text("one"), Page("<br>&nbsp;")});
  for (const auto& [name, message, text, page] : {
           Row{"an empty page, and a page beside it", Mixed({empty, Page("Two")}), "one Two", "one Two"},
           {"an empty page between pages", Mixed({Page("One"), empty, both}), "One one one", "One one One"},
           {"an empty page and its pictures", Mixed({empty, Related({Page("<img src=cid:a>"), kPicture})}), "one",
            "one *"},
           {"a page of a picture of elsewhere", Alternative({Text("one"), Page("<img src='http://x.example/a.gif'>")}),
            "one", "one"},
           {"a page of a drawing in its address",
            Alternative({Text("one"), Page("<img src='data:image/svg+xml,<svg/>'>")}), "one", "one"},
           {"a page of a picture in its address",
            Alternative({Text("one"), Page("<img src='data:image/gif;base64,R0lGODlh'>")}), "one", "*"},
           {"a page of wide blanks", Alternative({Text("one"), Page("<p>&emsp;&#12288;&#12644;&#8234;</p>")}), "one",
            "one"},
           {"a page that hides its picture and link",
            Related({Alternative({Text("one"), Page("<img hidden src=cid:a><a style='display:none' href=#>x</a>")}),
                     kPicture}),
            "one", "one *"},
           {"a page of a picture that is not there", Alternative({Text("one"), Page("<img src=cid:gone>")}), "one",
            "one"},
           {"a page of a linked picture of elsewhere",
            Alternative({Text("one"), Page("<a href='http://x.example/'><img src='http://x.example/a.gif'></a>")}),
            "one", "one"},
           {"a page of lines, quotes and places to press",
            Alternative({Text("one"), Page("<map><area href='http://x.example/'></map><hr><q></q>&lrm;&#8288;")}),
            "one", "one"},
           {"a page of a part that is no picture",
            Related({Alternative({Text("one"), Page("<img src=cid:t>")}), "Content-ID: <t>\r\n\r\nplain"}), "one plain",
            "one plain"},
           {"a page of a picture by its base",
            Alternative({Text("one"), Related({Page("<base href='http://x.example/y/'><img src=a.gif>"),
                                               "Content-Type: image/gif\r\nContent-Location: "
                                               "http://x.example/y/a.gif\r\n\r\nGIF89a"})}),
            "one", "*"},
           {"a page of a picture that is", Related({Alternative({Text("one"), Page("<img src=cid:a>")}), kPicture}),
            "one", "*"},
           {"a page of a picture of elsewhere alone", Page("<img src='http://x.example/a.gif'>"), "", "*"},
           {"a blank text", Alternative({Text(kManyBlanks), Page("One")}), "One", "One"},
           {"a text of signs that nobody sees", Alternative({Text("\u200b\u200c \ufeff\u00ad"), Page("One")}), "One",
            "One"},
           {"a blank text in base64",
            Alternative({Text(platform::Base64(kManyBlanks),
                              "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: base64\r\n"),
                         Page("One")}),
            "One", "One"},
           {"a blank text, and a text beside it", Mixed({Alternative({Text(kManyBlanks), Page("One")}), Text("two")}),
            "One two", "One two"},
           {"a page and a text in one branch", Alternative({Text("one"), Mixed({Page("One"), Text("two")})}), "One two",
            "One two"},
           {"a text between pages in one branch",
            Alternative({Text("one two three"), Mixed({Page("One"), Text("two"), Page("Three")})}), "One two Three",
            "One two Three"},
           {"a choice in a branch", Alternative({Text("one"), Related({both, kPicture})}), "one", "One *"},
           {"two pages", Alternative({Text("one"), Page("One"), Page("ONE")}), "one", "ONE"},
           {"two texts", Alternative({Text("one"), Text("ONE"), Page("One")}), "ONE", "One"},
           {"the page first", Alternative({Page("One"), Text("one")}), "one", "One"},
           {"a footer put into the alternative", Alternative({Text("one"), Page("One"), Text("footer")}), "one footer",
            "One footer"},
           {"a picture of the branch that is not chosen",
            Alternative({Mixed({Text("one"), kPicture}), Related({Page("One"), kPicture})}), "one", "One *"},
           {"a picture alone in a branch", Alternative({Text("\r\n"), Mixed({kPicture})}), "", "*"},
           {"winmail.dat between texts", Mixed({Text("warning"), Text("one"), Winmail("One"), Text("footer")}),
            "warning one footer", "warning One footer"},
           {"winmail.dat before a page", Mixed({Text("one"), Winmail("One"), Page("Footer")}), "one Footer",
            "One Footer"},
           {"winmail.dat alone before a text", Mixed({Winmail("One"), Text("footer")}), "One footer", "One footer"},
           {"winmail.dat before a picture", Mixed({Text("one"), Winmail("One"), kPicture}), "one", "One *"},
           {"winmail.dat behind a choice", Mixed({Text("warning"), both, Winmail("One")}), "warning one",
            "warning One"},
           {"winmail.dat behind two texts in one", Mixed({Mixed({Text("one"), Text("two")}), Winmail("One")}),
            "one two One", "one two One"},
           {"a text that cannot be decoded", Mixed({Text("one"), Text("?", kUnknown)}), "one", "one"},
           {"a form that cannot be decoded", Alternative({Text("?", kUnknown), Page("One")}), "One", "One"},
           {"names", Alternative({Text("one", kNamed), Related({Page("One", "; name=a.htm"), kPicture})}), "one",
            "One *"},
           {"a named text, first and alone", Mixed({Text("one", kNamed), kPicture}), "one", "one *"},
           {"a named page below two multiparts", Mixed({Mixed({Page("One", "; name=a.htm")}), kPicture}), "One",
            "One *"},
           {"a named text that is first of two", Mixed({Text("?", kNamed), Text("one")}), "one", "one"},
           {"a named text before winmail.dat", Mixed({Text("?", kNamed), Winmail("One")}), "One", "One"},
           {"a named text behind a picture", Mixed({kPicture, Text("?", kNamed)}), "", "*"},
           {"a named text in a message that goes along",
            Mixed({"Content-Type: message/rfc822\r\n\r\n" + Text("?", kNamed), kPicture}), "", "*"},
           {"the text again behind its page", Alternative({Text("one\r\n"), Page("One"), Text("one")}), "one", "One"},
           {"the text again, and a footer behind it",
            Alternative({Text("one"), Page("One"), Text("one"), Text("footer")}), "one footer", "One footer"},
           {"zeros", Mixed({Text(std::string("o\0ne", 4)), Page(std::string("T\0wo", 4))}), "one Two", "one Two"},
           {"a text with a name beside", Mixed({Page("One"), Page("?", "; name=a.htm")}), "One", "One"},
           {"a page to be saved", Related({"Content-Disposition: attachment\r\n" + Page("?"), kPicture}), "", "*"},
       }) {
    const auto loaded = *Load(folder.Write("a.eml", message), {});
    EXPECT_EQ(WordsOf(BodyAsText(*loaded.message), false), text) << name;
    EXPECT_EQ(WordsOf(BodyAsHtml(*loaded.message), true), page) << name;
  }
}

TEST(BodyOrder, TakesThePartThatARelatedNamesForItsBeginning) {
  const test::TemporaryFolder folder;
  const std::string message =
      Holder("related; start=\"<s>\"", {kPicture, "Content-ID: <s>\r\n" + Page("One", "; name=x")});
  EXPECT_EQ(WordsOf(BodyAsText(*Load(folder.Write("a.eml", message), {})->message), false), "One");
}

// The error stands where nothing else is left.
TEST(BodyOrder, TellsWhatCannotBeDecodedWhereItIsAll) {
  const test::TemporaryFolder folder;
  struct Row {
    const char* name;
    std::string message;
    bool is_told;
  };
  for (const auto& [name, message, is_told] :
       {Row{"alone", Text("?", kUnknown), true},
        {"beside a blank one", Mixed({Text("?", kUnknown), Text(kManyBlanks)}), true},
        {"beside another", Mixed({Text("?", kUnknown), Text("one")}), false},
        {"another form of it", Alternative({Text("?", kUnknown), Page("One")}), false},
        {"8 bit", Text("one", "Content-Transfer-Encoding: 8 bit\r\n"), false},
        {"none", Text("one", "Content-Transfer-Encoding: none\r\n"), false}}) {
    const auto loaded = *Load(folder.Write("a.eml", message), {});
    for (const auto format : {BodyFormat::kText, BodyFormat::kHtml, BodyFormat::kRtf, BodyFormat::kXml}) {
      const bool is_xml_beside_blanks = format == BodyFormat::kXml && std::string_view(name) == "beside a blank one";
      const auto written = WriteBody(*loaded.message, format, "", [](auto) { return Result<void>(); });
      EXPECT_EQ(!written, is_told && !is_xml_beside_blanks) << name << static_cast<int>(format);
    }
  }
}

TEST(BodyOrder, HasPicturesOfAddressesInRichText) {
  struct Row {
    const char* address;
    const char* rtf;
  };
  const test::TemporaryFolder folder;
  for (const auto& [address, rtf] :
       {Row{"data:image/png;base64,iVBORw0KGgoAAAANSUhEUgAAAAMAAAACCAYAAAA=", "\\pngblip\\picw3\\pich2"},
        {"data:image/png;base64,iVBORw0KGgo=", "{words}"},
        {"data:image/gif,GIF89a%01%01%01%01", "{words}"}}) {
    std::string out;
    const auto file = folder.Write("a.eml", Page("<img alt={words} src=\"" + std::string(address) + "\">"));
    ASSERT_TRUE(WriteBody(*Load(file, {})->message, BodyFormat::kRtf, "", [&](std::string_view piece) {
      out += piece;
      return Result<void>();
    }));
    out = platform::ReplaceAll(platform::ReplaceAll(out, "\\{", "{"), "\\}", "}");
    EXPECT_NE(out.find(rtf), std::string::npos) << address << out;
    EXPECT_EQ(out.find("89504e470d0a1a0a0000000d494844520000000300000002080600") != std::string::npos, *rtf == '\\');
  }
}

}  // namespace
}  // namespace quillcast::mail_file
