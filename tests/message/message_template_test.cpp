// Whole messages as they go over the wire, for every structure and every way to encode.
#include "message/message_template.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <set>

#include "platform/text.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"

namespace quillcast::message {
namespace {

using enum TransferEncoding;
using document::Format;

constexpr const char* kPicture = "GIF89a\x01";

struct Letter {
  document::MessageDocument document;
  MessageOptions options;
};

class Messages : public ::testing::Test {
 protected:
  std::string File(const std::string& name, std::string_view content) { return folder_.Write(name, content).string(); }

  Letter Plain(const std::string& html) {
    Letter letter;
    letter.document.subject = "Hi";
    letter.document.html = html;
    letter.document.base_folder = folder_.path();
    letter.options.sender_name = "Ada";
    letter.options.sender_address = *smtp::Address::From("ada@example.org");
    return letter;
  }

  void Compile(const Letter& letter) {
    template_.emplace(letter.document, letter.options, folder_.path(), clock_, entropy_);
  }

  void Render(std::string_view first_name, std::string_view address = "bob@example.net") {
    recipient_.values[recipients::kFirstName] = first_name;
    ASSERT_TRUE(template_->Render(recipient_, *smtp::Address::From(address), 7, message_));
  }

  std::string Wire() {
    std::string out;
    for (auto bytes = message_.Next(); bytes && !bytes->empty(); bytes = message_.Next()) out += *bytes;
    return out;
  }

  static std::vector<std::string> Boundaries(std::string_view wire) {
    constexpr std::string_view kDeclared = "boundary=\"";
    std::vector<std::string> found;
    for (auto at = wire.find(kDeclared); at != std::string_view::npos; at = wire.find(kDeclared, at + 1)) {
      const auto value = wire.substr(at + kDeclared.size());
      found.emplace_back(value.substr(0, value.find('"')));
    }
    return found;
  }

  // What MIME and the body say, with "\n" line ends and the boundaries called B1, B2 in their order.
  static std::string Shown(std::string wire) {
    EXPECT_TRUE(wire.ends_with("\r\n"));
    const std::string last_header = "X-Mailer: Tarnwick Quillcast Classic 1.0\r\n";
    wire.erase(0, wire.find(last_header) + last_header.size());
    int number = 0;
    for (const auto& boundary : Boundaries(wire))
      wire = platform::ReplaceAll(wire, boundary, "B" + std::to_string(++number));
    const std::string picture = "picture1.";
    for (auto at = wire.find(picture); at != std::string::npos; at = wire.find(picture, at + 1))
      wire.replace(at + picture.size(), 16, "ID");
    return platform::ReplaceAll(wire, "\r\n", "\n");
  }

  test::TemporaryFolder folder_;
  test::FakeClock clock_;
  test::CountingEntropy entropy_;
  std::optional<MessageTemplate> template_;
  recipients::Recipient recipient_;
  RenderedMessage message_;
};

TEST_F(Messages, AreWhatTheAccountSays) {
  struct Case {
    const char* name;
    std::function<void(Letter&)> change;
    const char* first_name;
    std::string expected;
    std::string seven_bit;  // empty where it is the same
  };
  const std::string picture = File("p.gif", kPicture);
  const std::string lines = File("lines.txt", "one\r\n.two \r\n");
  const std::string sums = File("sums.txt", "1=1\r\n");
  const std::string cafe = File("cafe.txt", "caf\xC3\xA9\r\n");
  const std::string latin = File("latin.csv", "caf\xE9\r\n");
  const std::string unix_lines = File("unix.txt", "a\nb");
  const std::string mail = File("mail.eml", "Subject: x\n\n");
  const auto text = [](TransferEncoding encoding) {
    return [encoding](Letter& l) {
      l.document.format = Format::kText;
      l.options.body_encoding = encoding;
    };
  };
  const auto attach = [](const std::string& file, TransferEncoding encoding) {
    return [file, encoding](Letter& l) {
      l.document.format = Format::kText;
      l.document.attachments.Add(file);
      l.options.attachment_encoding = encoding;
    };
  };
  const auto bare = [](const std::string& file) {
    return [file](Letter& l) {
      l.options.is_bare = true;
      if (!file.empty()) l.document.attachments.Add(file);
    };
  };
  const auto part = [](const std::string& encoding, const std::string& body, const std::string& type = "text/plain",
                       const std::string& charset = "utf-8") {
    return "Content-Type: " + type + "; charset=" + charset + "\nContent-Transfer-Encoding: " + encoding + "\n\n" +
           body + "\n";
  };
  const std::string mime = "MIME-Version: 1.0\n";
  // A text and one attachment; `label` is that of the multipart.
  const auto with_file = [&](const std::string& name, const std::string& encoding, const std::string& body,
                             const std::string& type = "text/plain; charset=utf-8", const std::string& label = "") {
    return mime + "Content-Type: multipart/mixed;\n boundary=\"B1\"\n" + label + "\n--B1\n" +
           part("quoted-printable", "Dear=20Bob") + "\n--B1\nContent-Type: " + type + ";\n name=\"" + name +
           "\"\nContent-Transfer-Encoding: " + encoding + "\nContent-Disposition: attachment;\n filename=\"" + name +
           "\"\n\n" + body + "\n--B1--\n";
  };
  const std::string eight_bit = "Content-Transfer-Encoding: 8bit\n";
  const auto page = [&](const std::string& label, const std::string& text_part, const std::string& html_part) {
    return mime + "Content-Type: multipart/alternative;\n boundary=\"B1\"\n" + label + "\n--B1\n" + text_part +
           "\n--B1\nContent-Type: multipart/related;\n type=\"text/html\";\n boundary=\"B2\"\n" + label + "\n--B2\n" +
           html_part +
           "\n--B2\nContent-Type: image/gif;\n name=\"p.gif\"\nContent-Transfer-Encoding: base64\n"
           "Content-ID: <picture1.ID@example.org>\nContent-Disposition: inline;\n filename=\"p.gif\"\n\nR0lGODlhAQ==\n"
           "--B2--\n--B1--\n";
  };
  const std::vector<Case> cases = {
      {"text, quoted-printable", text(kQuotedPrintable), "J\xC3\xBCrgen",
       mime + part("quoted-printable", "Dear=20J=C3=BCrgen"), ""},
      {"text, base64", text(kBase64), "J\xC3\xBCrgen", mime + part("base64", "RGVhciBKw7xyZ2VuDQo="), ""},
      {"text in a set that bodies have to announce",
       [](Letter& l) {
         l.document.format = Format::kText;
         l.options.charset = *charset::FindCharset("iso-2022-kr");
       },
       "Bob", mime + part("quoted-printable", "=1B$)CDear=20Bob", "text/plain", "iso-2022-kr"), ""},
      {"text as it stands", text(kNone), ".Bob ", mime + part("7bit", "Dear .Bob "), ""},
      {"text with octets above 127", text(kNone), "J\xC3\xBCrgen", mime + part("8bit", "Dear J\xC3\xBCrgen"),
       mime + part("quoted-printable", "Dear J=C3=BCrgen")},
      {"a value makes a line that mailboxes quote", text(kNone), "you\nFrom me",
       mime + part("quoted-printable", "Dear you\n=46rom me"), ""},
      {"HTML with a text part and a picture, as it stands",
       [](Letter& l) {
         l.document.html = "$*MergeFirstName*$ <img src=p.gif>";
         l.options.body_encoding = kNone;
         l.options.charset = *charset::FindCharset("iso-8859-1");
       },
       "J\xC3\xBCrgen \xE2\x82\xAC",
       page(eight_bit, part("8bit", "J\xC3\xBCrgen \xE2\x82\xAC"),
            part("8bit", "J\xFCrgen &#8364; <img src=cid:picture1.ID@example.org>", "text/html", "iso-8859-1")),
       page("", part("quoted-printable", "J=C3=BCrgen =E2=82=AC"),
            part("quoted-printable", "J=FCrgen &#8364; <img src=3Dcid:picture1.ID@example.org>", "text/html",
                 "iso-8859-1"))},
      {"HTML whose style holds what the set lacks",
       [](Letter& l) {
         l.document.html = "<style>q{content:'\u20AC'}</style>\u20AC";
         l.options.body_encoding = kNone;
         l.options.text_part = false;
         l.options.charset = *charset::FindCharset("us-ascii");
       },
       "Bob", mime + part("7bit", "<style>q{content:'\\20AC '}</style>&#8364;", "text/html", "us-ascii"), ""},
      {"attachment, base64", attach(lines, kBase64), "Bob", with_file("lines.txt", "base64", "b25lDQoudHdvIA0K"), ""},
      {"attachment, quoted-printable", attach(sums, kQuotedPrintable), "Bob",
       with_file("sums.txt", "quoted-printable", "1=3D1=0D=0A"), ""},
      {"attachment as it stands", attach(lines, kNone), "Bob", with_file("lines.txt", "7bit", "one\n.two \n"), ""},
      {"attachment with octets above 127", attach(cafe, kNone), "Bob",
       with_file("cafe.txt", "8bit", "caf\xC3\xA9\n", "text/plain; charset=utf-8", eight_bit),
       with_file("cafe.txt", "base64", "Y2Fmw6kNCg==\n")},
      {"attachment that would not come back as it stands", attach(unix_lines, kNone), "Bob",
       with_file("unix.txt", "base64", "YQpi"), ""},
      {"a text in no set that could be known", attach(latin, kBase64), "Bob",
       with_file("latin.csv", "base64", "Y2Fm6Q0K", "application/octet-stream"), ""},
      {"a message that has to be encoded is no message part", attach(mail, kNone), "Bob",
       with_file("mail.eml", "base64", "U3ViamVjdDogeAoK", "application/octet-stream"), ""},
      {"no MIME", bare(""), "Bob", "\nDear Bob\n", ""},
      {"no MIME, made from HTML at the account's columns",
       [](Letter& l) {
         l.document.html = "<blockquote>one two three four five six seven eight nine ten eleven</blockquote>";
         l.options.is_bare = true;
         l.options.wrap = 32;
       },
       "Bob", "\n> one two three four five six\n> seven eight nine ten eleven\n", ""},
      {"no MIME, octets above 127", bare(""), "J\xC3\xBCrgen", "\nDear J\xC3\xBCrgen\n",
       mime + part("quoted-printable", "Dear J=C3=BCrgen")},
      {"no MIME, an attachment", bare(picture), "J\xC3\xBCrgen",
       "\nDear J\xC3\xBCrgen\n\nbegin 644 p.gif\n'1TE&.#EA`0``\n`\nend\n",
       mime + part("quoted-printable", "Dear J=C3=BCrgen") + "\nbegin 644 p.gif\n'1TE&.#EA`0``\n`\nend\n"},
      {"no MIME, a text that the set cannot hold",
       [](Letter& l) {
         l.options.is_bare = true;
         l.options.charset = *charset::FindCharset("iso-8859-1");
       },
       "\xE2\x82\xAC", mime + part("8bit", "Dear \xE2\x82\xAC"), mime + part("quoted-printable", "Dear =E2=82=AC")},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Letter letter = Plain("<p>Dear $*MergeFirstName*$</p>");
    c.change(letter);
    Compile(letter);
    ASSERT_FALSE(template_->trouble());
    Render(c.first_name);
    const std::string wire = Wire();
    EXPECT_EQ(Shown(wire), c.expected);
    EXPECT_EQ(message_.envelope.size, wire.size());
    EXPECT_EQ(message_.envelope.eight_bit, !c.seven_bit.empty());
    EXPECT_TRUE(message_.MayHaveLeadingDots() || wire.find("\n.") == std::string::npos);
    for (int time = 0; time < 2; ++time) {  // a second server may ask again
      message_.Rewind();
      const auto size = message_.UseSevenBit();
      ASSERT_TRUE(size);
      const std::string seven_bit = Wire();
      EXPECT_EQ(Shown(seven_bit), c.seven_bit.empty() ? c.expected : c.seven_bit);
      EXPECT_EQ(*size, seven_bit.size());
    }
    message_.Rewind();
    EXPECT_EQ(Wire(), wire) << "the first form is there again";
  }
}

TEST_F(Messages, NameAPriorityWhereItIsNotNormal) {
  using enum document::Priority;
  for (const auto& [priority, field] :
       {std::pair{kLow, "X-Priority: 5\r\n"}, {kNormal, ""}, {kHigh, "X-Priority: 1\r\n"}}) {
    Letter letter = Plain("x");
    letter.document.priority = priority;
    Compile(letter);
    Render("");
    EXPECT_NE(Wire().find(std::string("Classic 1.0\r\n") + field + "MIME-Version"), std::string::npos) << field;
  }
}

TEST_F(Messages, BoundariesGetTheirOwnPrefixEachTime) {
  Letter letter = Plain("<p>x <img src=p.gif></p>");
  File("p.gif", kPicture);
  letter.document.attachments.Add(File("a.bin", "abc"));
  letter.options.own_boundary_prefix = true;
  Compile(letter);
  std::set<std::string> prefixes;
  std::set<std::string> remainders;
  for (int message = 0; message < 300; ++message) {
    clock_.now += std::chrono::microseconds(1);
    Render("");
    const std::string wire = Wire();
    EXPECT_EQ(wire.size(), message_.envelope.size);
    const auto boundaries = Boundaries(wire);
    ASSERT_EQ(boundaries.size(), 3U);
    for (const auto& boundary : boundaries) {
      EXPECT_NE(wire.find("\r\n--" + boundary + "\r\n"), std::string::npos);
      EXPECT_NE(wire.find("\r\n--" + boundary + "--\r\n"), std::string::npos);
      for (std::size_t i = 0; i < 10; ++i) {
        const char least = i % 2 == 0 ? 'A' : '1';
        const char most = i % 2 == 0 ? 'Z' : '9';
        EXPECT_TRUE(boundary[i] >= least && boundary[i] <= most) << boundary;
      }
      EXPECT_EQ(boundary.substr(10, 2), "=_");
      prefixes.insert(boundary.substr(0, 10));
      remainders.insert(boundary.substr(10));
    }
  }
  EXPECT_EQ(prefixes.size(), 300U);
  EXPECT_EQ(remainders.size(), 3U);
}

TEST_F(Messages, EnvelopeCarriesWhatTheAccountAsksFor) {
  struct Case {
    smtp::DsnNotify notify;
    smtp::DsnReturn what;
    bool has_id;
  };
  for (const auto& [notify, what, has_id] :
       {Case{smtp::DsnNotify::kNone, smtp::DsnReturn::kNone, false},
        Case{smtp::DsnNotify::kServerDefault, smtp::DsnReturn::kServerDefault, false},
        Case{smtp::DsnNotify::kDelay, smtp::DsnReturn::kNone, true},
        Case{smtp::DsnNotify::kNone, smtp::DsnReturn::kFull, true}}) {
    Letter letter = Plain("x");
    letter.options.notify = notify;
    letter.options.dsn_return = what;
    Compile(letter);
    Render("", "bob@m\xC3\xBCller.example");
    EXPECT_EQ(message_.envelope.notify, notify);
    EXPECT_EQ(message_.envelope.dsn_return, what);
    const std::string wire = Wire();
    EXPECT_NE(wire.find("To: bob@xn--mller-kva.example\r\n"), std::string::npos);
    const std::string& id = message_.envelope.envelope_id;
    EXPECT_EQ(!id.empty(), has_id);
    EXPECT_TRUE(!has_id || wire.find("Message-ID: <" + id + ">\r\n") != std::string::npos) << id;
  }
  Render("", "j\xC3\xBCrgen@example.net");
  EXPECT_TRUE(message_.envelope.eight_bit);
  EXPECT_EQ(message_.UseSevenBit().error().failure, Failure::kBadData) << "a header has no other form";
}

TEST_F(Messages, TellWhyAnAttachmentIsNotInThem) {
  using smtp::ResultCode;
  for (const bool is_bare : {false, true}) {
    for (const auto& [file, code] : {std::pair{(folder_ / "gone.pdf").string(), ResultCode::kFileNotOpened},
                                     {folder_.path().string(), ResultCode::kFileNotOpened},
                                     {"/dev/null", ResultCode::kFileNotOpened},
                                     {"/proc/self/mem", ResultCode::kFileNotRead}}) {
      Letter letter = Plain("x");
      letter.options.is_bare = is_bare;
      ASSERT_TRUE(letter.document.attachments.Add(file));
      Compile(letter);
      ASSERT_TRUE(template_->trouble()) << file;
      EXPECT_EQ(template_->trouble()->code, code) << file << is_bare;
    }
  }
}

TEST_F(Messages, TellWhatBecameOfEachPicture) {
  std::filesystem::create_directory(folder_.path() / "folder");
  File("text.gif", "no picture");
  File("p.gif", kPicture);
  ASSERT_EQ(::mkfifo((folder_.path() / "pipe").c_str(), 0600), 0);
  const std::string too_long(300, 'x');
  struct Case {
    std::string reference;
    std::int32_t code;  // 0 when it is taken along
  };
  for (const auto& [reference, code] :
       {Case{"p.gif", 0}, Case{"missing.gif", 1}, Case{"folder", 2}, Case{"pipe", 3}, Case{"/dev/null", 3},
        Case{too_long + ".gif", 3}, Case{"text.gif", 101}, Case{"https://example.org/p.gif", 0}}) {
    const auto taken = TakePictures(Plain("<img src='" + reference + "'><img src='" + reference + "'>").document, "x");
    ASSERT_EQ(taken.troubles.size(), code == 0 ? 0U : 1U) << reference;
    EXPECT_TRUE(code == 0 || taken.troubles[0].code == code) << reference;
    EXPECT_EQ(taken.pictures.size(), reference == "p.gif" ? 1U : 0U);
  }
}

TEST_F(Messages, SayTruthOfWhatIsNoFileHere) {
  File("[[a]] 1.gif", "no picture");
  const std::string here = folder_.path().string();
  const std::string cut = " is missing or may not be read. The message goes out without it; its name alone stays.";
  const std::string filled_in =
      " is no file of this computer. Its address goes out as it is written, for another program to fill in.";
  for (const auto& [reference, told] : std::initializer_list<std::pair<const char*, std::string>>{
           {"{{image}}", "{{image}}" + filled_in},
           {"{{C:\\ada\\a.gif}}", "{{C:/ada/a.gif}}" + cut},
           {"${C:\\x\\a}.gif", "${C:/x/a}.gif" + cut},
           {"{{x:/home/ada/a}}", "{{x:/home/ada/a}}" + cut},
           {"{{#if x}}a{{else}}b{{?}}.gif", "{{#if x}}a{{else}}b{{?}}.gif" + filled_in},
           {"{{a?b#c}}/x.gif?y#z", "{{a?b#c}}/x.gif" + filled_in},
           {"{{x}}{{#y}}/home/ada/x.gif", "{{x}}{{#y}}/home/ada/x.gif" + cut},
           {"[[cdn]]/a b/x.gif?y", "[[cdn]]/a b/x.gif" + filled_in},
           {"[[cdn/x.gif", here + "/[[cdn/x.gif" + cut},
           {"{{x}}/home/ada/x.gif", "{{x}}/home/ada/x.gif" + cut},
           {"[[a]] 1.gif", here + "/[[a]] 1.gif is no picture. The message goes out without it; its name alone stays."},
           {"C:\\Users\\ada\\x.gif", "C:/Users/ada/x.gif" + cut},
           {"mailbox:///C|/ada/x?number=1", "mailbox:///C|/ada/x" + cut},
           {"gone.gif", here + "/gone.gif" + cut}}) {
    const auto taken = TakePictures(Plain(std::string("<img src='") + reference + "'>").document, "x");
    ASSERT_EQ(taken.troubles.size(), 1U) << reference;
    EXPECT_EQ(GoesWithout(taken.troubles[0]).InEnglish(), "The picture " + told);
  }
}

TEST_F(Messages, TakeNoPictureOfThePersonsOwnUnasked) {
  const std::string home = File("home/private photo.gif", kPicture);
  File("page/own.gif", kPicture);
  std::filesystem::create_symlink(home, folder_ / "page/link.gif");
  Letter letter = Plain("");
  letter.document.base_folder = folder_ / "page";
  for (const char* const written :
       {"<img src='../home/private photo.gif'>", "<img src='..\\home\\private%20photo.gif'>", "<img src='link.gif'>",
        "<img src='sub/../../home/private%20photo.gif'>", "<img src='HOME'>", "<img src='file://HOME'>",
        "<img src='FILE://localhost/HOME'>", "<!--[if mso]><v:image src='HOME'><![endif]-->",
        "<div style=\"display:none;background:url('../home/pri\\76 ate photo.gif')\">x</div>",
        "<style>p{background:url(../home/private%20photo.gif)}</style>",
        "<img srcset='../home/private%20photo.gif 2x'>", "<base href='../home/'><img src='private photo.gif'>"}) {
    const std::string html = "<img src=own.gif>" + platform::ReplaceAll(written, "HOME", home);
    letter.document.html = html;
    letter.document.picture_places = {};
    Compile(letter);
    EXPECT_EQ(template_->pictures().size(), 1U) << html;
    ASSERT_EQ(PicturesToAskFor(template_->foreign_pictures()), std::vector<std::filesystem::path>{home}) << html;
    const std::string sent = TakePictures(letter.document, "x").html;
    EXPECT_EQ(sent.find(folder_.path().string()), std::string::npos) << sent;
    EXPECT_EQ(sent.find("home/"), std::string::npos) << sent;
    Render("Bob");
    EXPECT_EQ(Wire().find("picture2."), std::string::npos) << html;
    letter.document.picture_places.LeaveOut(home);
    Compile(letter);
    EXPECT_EQ(template_->pictures().size(), 1U) << html;
    EXPECT_TRUE(PicturesToAskFor(template_->foreign_pictures()).empty()) << html;
    letter.document.picture_places.AllowFile(home);
    Compile(letter);
    EXPECT_EQ(template_->pictures().size(), 2U) << html;
  }
  // What is no picture yet, or none at all, tells no folder either.
  for (const auto& [written, sent] : std::initializer_list<std::pair<const char*, const char*>>{
           {"<base href='file:///home/ada/letters/'><base href=\"\\home\\\"><img src=$*MergeCity*$.gif>",
            "<base href='#'><base href=\"#\"><img src=$*MergeCity*$.gif>"},
           {"<base href='$*MergeCompany*$'><a href='/a'>l</a>", nullptr},
           {"<base href='{{url}}'><a href='/a'>l</a><img src='b.png'>", nullptr},
           {"<base href='https://x.example/home/'><img src='/a/$*MergeCity*$.gif'>", nullptr},
           {"<img src='file:///home/ada/$*MergeCity*$.gif'>", "<img src='$*MergeCity*$.gif'>"},
           {"<td background='FILE:%2Fhome%2F$*MergeCity*$&quot;)'>", "<td background='$*MergeCity*$%22%29'>"},
           {"<img src='/home/$*MergeField1*$/'><p style=\"x:url(file:$*MergeCity*$)\">",
            "<img src='#'><p style=\"x:url($*MergeCity*$)\">"},
           {"<img src='$*MergeField1*$/home/logo.gif'>", nullptr},
           {"<style>@import url(file:///home/ada/a.css);@import '/home/b.css';p{x:url(file:/c/d.woff)}</style>",
            "<style>@import url(a.css);@import 'b.css';p{x:url(d.woff)}</style>"},
           {"<link href=\"file:///home/ada/a.css\"><img alt='' longdesc='/home/ada/l.html' lowsrc=C:\\home\\l.gif>",
            "<link href=\"a.css\"><img alt='' longdesc='l.html' lowsrc=l.gif>"},
           {"<img srcset='C:\\Users\\Ada Love\\a.png 1x, b.png 2x,/home/ada love/c d.png, file:///C:/Ada Love/e.png'>",
            "<img srcset='a.png 1x, b.png 2x,c%20d.png, e.png'>"},
           {"<a href='file:///C:%5CUsers%5Cada%5Cx.pdf'>l</a><td background='C:\\Users\\ada%5Cleaf.png'>",
            "<a href='x.pdf'>l</a><td background='leaf.png'>"},
           {"<p style='background:url(file:///C:\\Users\\ada\\x.png)'><p style=\"x:url('\\\\srv\\ada\\y.png')\">",
            "<p style='background:url(x.png)'><p style=\"x:url('y.png')\">"},
           {"<p style='x:url(C:%5cada,x\\l%65af.png);y:url(C:\\Program Files (x86)\\ada\\x.png);z:url(a\\(b.png)'>",
            "<p style='x:url(leaf.png);y:url(x.png);z:url(a%28b.png)'>"},
           {"<p "
            "style='x:url(-C:\\Users\\ada\\x.png);y:url(&nbsp;D:\\ada%5Cy.png)'><style>p{x:url(\"file:///"
            "\\\\srv\\ada\\z.png\");"
            "y:url(\"file:///home/a\\ b.png\")}</style>",
            "<p style='x:url(x.png);y:url(y.png)'><style>p{x:url(\"z.png\");y:url(\"a%20b.png\")}</style>"},
           {"<style>@import "
            "'\\\\srv\\ada\\a.css';p{x:url(C:\\\\Users\\\\ada\\\\x.png);y:url(c:/Users\\ada\\z.png)}</style>",
            "<style>@import 'a.css';p{x:url(x.png);y:url(z.png)}</style>"},
           {"<form action='file:///home/send'><a href='FILE:///home/ada/my%20list.html'>l</a><a href='/home/'>m</a>",
            "<form action='send'><a href='my%20list.html'>l</a><a href='#'>m</a>"},
           {"<image xlink:href='/home/ada/x.png'/><use o:href='/home/y'/><a ping='/home/p https://x.example/home/q'>"
            "<a ping='file:///home/ada love/q'><link imagesrcset='/home/ada/a.png 1x, b.png 2x'><param name=Movie "
            "value='/home/m.swf'><param name=a "
            "value='/x/b'>",
            "<image xlink:href='x.png'/><use o:href='y'/><a ping='p https://x.example/home/q'>"
            "<a ping=''><link imagesrcset='a.png 1x, b.png 2x'><param name=Movie value='m.swf'><param name=a "
            "value='/x/b'>"},
           {"<meta http-equiv=refresh content='0; url=/home/x.html'><meta http-equiv=Refresh content=\"5;URL = "
            "'/home/y' \"><meta http-equiv=refresh content=3><meta name=a content='0;url=/x/y'>",
            "<meta http-equiv=refresh content='0; url=x.html'><meta http-equiv=Refresh content=\"5;URL = "
            "'y' \"><meta http-equiv=refresh content=3><meta name=a content='0;url=/x/y'>"},
           {"<img src='%%image%%'><img src='<%url%>'><td background='%recipient.url%'><img src='[[a]]/b.png'>"
            "<img src='&lt;%url%>/a/b.png'><p style='x:url(*|IMAGE|*/a.png)'>",
            nullptr},
           {"<a href='/home/l.html?x=1'>l</a><base href='https://x.example/d/'>", nullptr},
           {"<img src='mailbox:///C|/Users/ada/Drafts?part=1.2'><td background='smb://srv/ada/b.png'>",
            "<img src='Drafts'><td background='b.png'>"},
           // The further words of an address without quotation marks belong to it where they lead on.
           {"<img src=C:\\Program Files\\ada\\a.png alt=x><a href=file:///C:/Users/Ada Love/a.pdf id=y>",
            "<img src=a.png alt=x><a href=a.pdf id=y>"},
           {"<a href=C:\\Users\\Ada Love\\my list.pdf hidden><img src=Bilder\\Ada Love\\a.png><img id=x src=/home/Ada "
            "Love/b.png >",
            "<a href=my%20list.pdf hidden><img src=a.png><img id=x src=b.png >"},
           {"<img alt=C:\\Program Files\\ada\\a.png id=y><p data-a=\\\\srv\\Ada Love\\x id=z>",
            "<img alt=\"\" id=y><p data-a=\"\" id=z>"},
           {"<img src=a.png hidden/><a href=a/b.html hidden/id=x><a href=https://x.example/a b/c>", nullptr},
           {"<img srcset=C:\\a b\\ada\\c.png src=pic.png><source srcset=/home/ada b/ada/c.png 2x><link "
            "imagesrcset=/home/a "
            "b/c.png><p style=background:url(/home/ada b/zoe/c.png)><p style=\"\" title=/home/ada b/zoe/c.png id=y>",
            "<img srcset=c.png src=pic.png><source srcset=c.png 2x><link imagesrcset=c.png><p "
            "style=background:url(c.png)><p style=\"\" title=\"\" id=y>"},
           {"<img srcset=a/b.png 2x, c/d.png><p style=x:url(a.png);y:url(https://x.example/a) hidden/ismap/>"
            "<p title=and/or b/c style=x:image-set('a/b') c/d>",
            "<img srcset=b.png 2x, c/d.png><p style=x:url(a.png);y:url(https://x.example/a) hidden/ismap/>"
            "<p title=and/or b/c style=x:image-set('a/b') c/d>"},
           {"<p data-a=/x/y D:\\ada\\z id=k><a href=a/b file:///ada/x><source srcset=a/b \\\\srv\\ada>",
            "<p data-a=/x/y  id=k><a href=a/b ><source srcset=b >"},
           {"<p style=x:image-set('file:///C:/ada b/c.png') id=y>", "<p style=\"x:image-set(&#39;&#39;)\" id=y>"},
           {"<p style='x:url(my\\_pic.png);y:url(&quot;my\\_pic.png&quot;);z:url(..\\_ada\\_z.png);"
            "a:url(\\_a.png)'>",
            "<p style='x:url(my_pic.png);y:url(&quot;my_pic.png&quot;);z:url(_z.png);a:url(_a.png)'>"},
           // What another program writes there belongs to it no more, nor what stands behind a whole file.
           {"<img src=img/a.png {{#if x}}ismap{{/if}}><img src=img/a [[if x]]ismap[[/if]] id=y><td background=img/a "
            "{% if a/b %}nowrap{% endif %}><a href=/docs/x.html {{#if a}}hidden{{/if}} class=k><a href=/docs/x "
            "*|IF:a/b|* hidden>",
            "<img src=a.png {{#if x}}ismap{{/if}}><img src=a [[if x]]ismap[[/if]] id=y><td background=a "
            "{% if a/b %}nowrap{% endif %}><a href=x.html {{#if a}}hidden{{/if}} class=k><a href=x "
            "*|IF:a/b|* hidden>"},
           {"<img src=img/a.png hidden/ismap/><img src=img/a.png?b hidden/ismap><img src=/home/Ada Love/b.png @x.y>",
            "<img src=a.png hidden/ismap/><img src=a.png hidden/ismap><img src=b.png @x.y>"},
           {"<img src=C:\\My {{a}} Files\\ada\\a.png><img src=C:\\x\\a.jpg - Kopie\\b.png><img src=/home/a.b c/d.png>",
            "<img src=a.png><img src=b.png><img src=d.png>"},
           {"<p style='x:url(\\Users\\ada\\x.png);y:url(..\\home\\x.png);z:url(Bilder\\ada\\x.png)'><style>@import "
            "'\\ada\\zoe\\a.css';p{x:url(\"%USERPROFILE%\\ada\\x.png\");y:url(file:Bilder\\ada\\x.png);"
            "z:url(bilder\\x (1).png)}</style>",
            "<p style='x:url(x.png);y:url(x.png);z:url(x.png)'><style>@import "
            "'a.css';p{x:url(\"x.png\");y:url(x.png);z:url(x%20%281%29.png)}</style>"},
           {"<p style=\"x:url('C:\\Users\\O'Hara\\x.png');y:url('a.png')\"><p "
            "style='x:url(https://x.example/\\pics\\a)'>",
            "<p style=\"x:url('x.png');y:url('a.png')\"><p style='x:url(https://x.example/\\pics\\a)'>"},
           {"<style>a{x:url(C:\\x\\a(1.png)}b{x:url(p.png)}c{x:url(/home/ada/q.png)}</style><p "
            "style='x:url(C:\\ada\\a\\));y:url(/home/z.png)'>",
            "<style>a{x:url(a%281.png)}b{x:url(p.png)}c{x:url(q.png)}</style><p style='x:url(%29);y:url(z.png)'>"},
           {"<p style='color:red;x:url(C:\\Program Files (x86)\\ada\\x.png'><p style='y:url(/home/ada/b.png)'>",
            "<p style='color:red;x:url('><p style='y:url(b.png)'>"},
           {"<img src='%%a/ada/x.png'><img src='[[a/ada/x.png'><img src='{{x}}/home/ada/a.png'><td "
            "background='{{x}}/../../home/ada/y.png'><p style='x:url([[a]]/C:/ada/z.png)'>",
            "<img src='x.png'><img src='x.png'><img src='a.png'><td background='y.png'><p style='x:url(z.png)'>"},
           {"<img src='app://3b3f0e/home/ada/a.png?1'><img src='asset://localhost/Users/ada/b.png'><img "
            "src='view://abc/file///home/ada/c.png'><img src='https://file%2B.r.example/home/ada/d.png?v=1'><img "
            "src='http://asset.localhost/C%3A%5CUsers%5Cada%5Ce.png'>",
            "<img src='a.png'><img src='b.png'><img src='c.png'><img src='d.png'><img src='e.png'>"},
           {"<img src='asset://localhost/%2Fhome%2Fada%2Ff%20g.png'><img "
            "src='asset://localhost/C%3A%5CUsers%5Ch.png'><img "
            "src='app://local/C:/Users/ada/i.png?1'><img src='note-resource:/home/ada/j.png'>",
            "<img src='f%20g.png'><img src='h.png'><img src='i.png'><img src='j.png'>"},
           {"<img src='app://x/home'><img src='https://x.example/home/ada/a.png'><img "
            "src='http://localhost/home/ada/b.png'><a href='webcal://x.example/home/team/c.ics'>c</a>",
            nullptr},
           {"<img src=\"%%=Concat('https://x.example/',@img)=%%\"><img src=\"@Url.Content(\"~/img/l.png\")\" alt=x>",
            nullptr},
           {"<img src='{{cdn}}/a/x.png'><img src='[[Archiv]]/a/x.png'><img src='${cdn}/../x.png'><img src='%%a%%x%%b'>",
            nullptr},
           {"<a href='/{{x}}'>l</a><form action='/home/{{a}}/%%b%%.htm'><td background='/home/ada/[[a]] b.png'>"
            "<img src='ada/*|IMG|*'><img src='/home/{{&quot;a}}'>",
            "<a href='{{x}}'>l</a><form action='%%b%%.htm'><td background='[[a]]%20b.png'>"
            "<img src='*|IMG|*'><img src='%7B%7B%22a%7D%7D'>"},
           {"<meta http-equiv=refresh content='0;/home/ada/x.html'><meta http-equiv=refresh content='1 ; "
            "../a.html'><meta http-equiv=refresh content='3'>",
            "<meta http-equiv=refresh content='0;x.html'><meta http-equiv=refresh content='1 ; "
            "../a.html'><meta http-equiv=refresh content='3'>"},
           // Wherever an address of a file stands, in whichever spelling; words to be read stay.
           {"<p data-a='file:///home/ada/a'  data-b=\"FI\nLE:\\\\home\\a\" data-c= file:/home/a "
            "data-d=\"a.png\">file:///c</p>",
            "<p data-a=''  data-b=\"\" data-c= \"\" data-d=\"a.png\">file:///c</p>"},
           {"<meta http-equiv=refresh content='0; URL=file:home/a'><use xlink:href=\" \x01&#102;ile:///home/a\"/>",
            "<meta http-equiv=refresh content='0; URL=a'><use xlink:href=\"\"/>"},
           {"<iframe srcdoc=\"&lt;img src='&amp;#x66;ile:///home/a'&gt;\"></iframe><a "
            "href='view-source:file:///home/a'>l</a>",
            "<iframe srcdoc=\"\"></iframe><a href=''>l</a>"},
           {"<p data-a='C:\\home\\a' data-b='x, c:/home/a' data-c='{\"a\":\"\\\\\\\\srv\\\\home\"}' "
            "data-d='(\\\\srv/home)'"
            " onclick=\"x='\\x66ile:\\/\\/\\/home'\" data-e='%66ile%3A%2f%2Fhome' data-f=f&Tab;ile&colon;&sol;home>",
            "<p data-a='' data-b='' data-c='' data-d='' onclick=\"\" data-e='' data-f=\"\">"},
           {"<!-- saved from\nfile:///home/ada/a.html --><!--[if mso]><p "
            "title='file:///home/a'>m</p>file:///home/b<![endif]-->"
            "<?xml file:///home?><!-- kept --><img alt='x' data-a=\"file:///home/",
            "<!----><!--[if mso]><p title=''>m</p>file:///home/b<![endif]--><!----><!-- kept --><!---->"},
           {"<!DOCTYPE html SYSTEM 'file:///home/a.dtd'><script>x='file:///home/a'</script><b file:///home/a "
            "c='d'>b</b>",
            "<!DOCTYPE html><script> </script><b  c='d'>b</b>"},
           {"<style>/* file:///home/a */p{color:red;x:image-set(\"file:///home/it's a.png\" 1x, "
            "'b')}q{src:f\\69le:///home"
            "/a;y:z}</style>",
            "<style>/**/p{color:red;x:image-set(\"\" 1x, 'b')}q{;y:z}</style>"},
           {"<p style='display:none;x:image-set(&quot;file:///home/a&quot; 1x)'><p style=x:'\\\\srv\\home'>",
            "<p style='display:none;x:image-set(&quot;&quot; 1x)'><p style=\"x:&#39;&#39;\">"},
           {"<a href='https://x.example/w?title=File:AC/DC' class='file:mr-4 x' title='The file: a/b'>Profile:/x</a>"
            "<!-- file: a, x.cfile:/b --><a href='https://x.example/c:/home'>C:\\x</a>",
            nullptr},
           {"<a href='https://x.example/search?q=C:\\Windows'>a</a><a href=https://x.example/go?u=C%3A%5CWindows>b</a>"
            "<a href='https://x.example/?e=a:/b&amp;c=d'>c</a><a href='HTTPS://x.example/r?url=b:%2Fabc'>d</a>"
            "<a href=' https://x.example/?q=file:///etc'>e</a><a href='//x.example/#file:/a'>f</a>"
            "<a href='http:\\\\x.example\\x'>j</a><a href='whatsapp://send?text=C:\\x'>k</a><a href='#C:\\x'>l</a>"
            "<a href='$*MergeSite*$?u=file:///x'>m</a><a href='next.html?q=C:\\x'>n</a><a href='//[::1]/?C:\\x'>o</a>"
            "<a href='mailto:help@x.example?subject=Files%20in%20C:%5CUsers'>g</a>"
            "<a href='mailto:help@x.example?subject=Files in C:\\Users'>h</a><a href='sms:+49123?body=C:\\x'>i</a>"
            "<p style=\"background:url(https://x.example/file:Logo/a.png)\" data-a='{\"a\":\"//x.example/?C:\\x\"}'>",
            nullptr},
           {"<p data-a='https://x.example/a file:///home/b' data-b='https://x.example/a,C:\\home' "
            "data-c='file&amp;colon;//srv.x/home' data-d='f\\69le\\3a //srv.x/home' data-e='file:&#10;//srv.x/home' "
            "data-f='hotel:C:\\home tel:1 C:\\home'><a href='view-source:file://https://home/a'>l</a>",
            "<p data-a='' data-b='' data-c='' data-d='' data-e='' data-f=''><a href=''>l</a>"},
           {"<p data-a=\"D:\\_Projekte\\x.html\" data-b='C:\\%USERPROFILE%\\x' data-c='x C:\\~tmp\\x' "
            "data-d='C:\\.ssh' "
            "data-e='D:/_P/x'><!-- saved from D:\\(Ada)\\l.html --><p data-a='so :\\' data-b='x:\\'>",
            "<p data-a=\"\" data-b='' data-c='' data-d='' data-e=''><!----><p data-a='so :\\' data-b='x:\\'>"},
           {"<img alt='Open C:\\Users in the Explorer'><!--[if mso]><p title='In D:\\x'>Open C:\\Users "
            "now</p><![endif]-->",
            nullptr},
           {"<img alt='Beschreibung: Description: C:\\Users\\Ada Lovelace\\a.png' title='Logo: \\\\srv\\ada\\a.png'>",
            "<img alt='' title=''>"},
           {"<img alt='C:\\Users\\Ada Lovelace\\a.png' title=' file:///home/a b'><!--[if mso]><p> C:\\home\\a "
            "b</p><![endif]-->",
            "<img alt='' title=''><!--[if mso]><p> C:\\home\\a b</p><![endif]-->"},
           {"<a href='https://x.example/home/l.html'>l</a><a href='#place'>m</a><a href='next.html'>n</a>", nullptr},
           {"<base href='https://x.example/'><a href='/home/l.html'>l</a>", nullptr}})
    EXPECT_EQ(TakePictures(Plain(written).document, "x").html, sent == nullptr ? written : sent);
  // The folder of the document, and whose it is, are known for what they are in data too.
  Letter at_home = Plain("");
  for (const auto& [written, sent] : std::initializer_list<std::pair<const char*, const char*>>{
           {"<p data-a='/home/ada/x' data-b='{\"a\":\"\\/home\\/ada\"}' data-c='%2Fhome%2Fada%2Fx' "
            "onclick='go(\"/srv/x/y\")'>",
            "<p data-a='' data-b='' data-c='' onclick='go(\"/srv/x/y\")'>"},
           {"<script>x='/home/ada/x'</script><style>/* /home/ada/x */p{a:\"/home/ada\"}</style><b "
            "/home/ada/x=y>/home/ada</b>",
            "<script> </script><style>/**/p{a:\"\"}</style><b>/home/ada</b>"},
           {"<p data-a='/home/adam/x' data-b='https://x.example/home/ada/x' data-c='https://x.example/?q=/home/ada/x'>",
            nullptr},
           {"<p title='In /home/ada/x' data-a='my/home/ada/x'>", nullptr}}) {
    at_home.document.html = written;
    at_home.document.base_folder = "/home/ada/letters";
    EXPECT_EQ(TakePictures(at_home.document, "x").html, sent == nullptr ? written : sent);
    at_home.document.base_folder = "/home";
    EXPECT_EQ(TakePictures(at_home.document, "x").html, written);
  }
  // By the name that the folder was opened by, and by its own.
  std::filesystem::create_directory_symlink(folder_ / "page", folder_ / "linked");
  const std::string here = folder_.path().string();
  at_home.document.html = "<p data-a='" + here + "/page/x' data-b='" + here + "/linked/x' data-c='" + here + "/x'>";
  at_home.document.base_folder = folder_ / "linked";
  EXPECT_EQ(TakePictures(at_home.document, "x").html, "<p data-a='' data-b='' data-c='" + here + "/x'>");
  platform::CancelToken cancel;
  EXPECT_EQ(LookForPictures(letter.document, letter.options, cancel)->pictures.size(), 2U);
  cancel.Request();
  EXPECT_EQ(LookForPictures(letter.document, letter.options, cancel).error().failure, Failure::kTryAgain);
}

}  // namespace
}  // namespace quillcast::message
