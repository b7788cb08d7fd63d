// Every reader of foreign bytes takes time in proportion to what it reads, whatever it reads: nobody is to be kept busy
// for minutes by a page, a list or a server of a megabyte.
#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <filesystem>
#include <functional>
#include <limits>
#include <span>

#include "charset/charset.h"
#include "document/body_colours.h"
#include "document/body_file.h"
#include "document/body_source.h"
#include "document/cut_picture.h"
#include "document/declared_charset.h"
#include "document/document_look.h"
#include "document/document_pictures.h"
#include "document/link_choice.h"
#include "document/mailto.h"
#include "document/merge_pieces.h"
#include "document/message_document.h"
#include "document/message_properties.h"
#include "document/signature.h"
#include "domain/whois.h"
#include "html/closed_page.h"
#include "html/html_to_rtf.h"
#include "html/html_to_text.h"
#include "html/html_tokenizer.h"
#include "html/line_wrap.h"
#include "html/local_pictures.h"
#include "html/safe_page.h"
#include "html/simple_page.h"
#include "mail_file/body_page.h"
#include "mail_file/extraction.h"
#include "mail_file/mail_message.h"
#include "message/escape_in_styles.h"
#include "message/related_pictures.h"
#include "mime/header_text.h"
#include "mime/media_type.h"
#include "mime/quoted_printable.h"
#include "mime/read_header.h"
#include "net/address.h"
#include "net/idna.h"
#include "platform/base64.h"
#include "platform/text.h"
#include "recipients/check_email.h"
#include "recipients/import/address_harvest.h"
#include "recipients/import/archive_directory.h"
#include "recipients/import/find_delimiter.h"
#include "recipients/import/headings.h"
#include "recipients/import/open_lines.h"
#include "recipients/sort_order.h"
#include "recipients/text_order.h"
#include "smtp/capabilities.h"
#include "smtp/client/client_session.h"
#include "smtp/client/reply_habits.h"
#include "smtp/envelope_address.h"
#include "smtp/mailbox/server_rule.h"
#include "smtp/mailbox/server_session.h"
#include "smtp/sasl/ntlm.h"
#include "smtp/sasl/sasl_prep.h"
#include "support/stored_archive.h"
#include "support/temporary_folder.h"

namespace quillcast {
namespace {

constexpr std::size_t kSize = std::size_t{24} * 1024;

// Four times the input takes four times as long, or a little more; where the work is its square, sixteen times.
constexpr double kMostGrowth = 9;
constexpr double kMeasurable = 20e-3;  // seconds; in less, what a processor keeps at hand counts for more than the work
constexpr int kFewestRounds = 2;
constexpr int kMostRounds = 12;

// What a sanitizer adds says nothing of the program's own time: there each reads its input once, and faults show.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsMeasured = false;
#else
constexpr bool kIsMeasured = true;
#endif

using Reader = std::function<void(const std::string&)>;
using Source = std::function<std::string(std::size_t size)>;

// The pattern again and again; "\1" in it becomes a number, another one each time.
std::string Repeated(std::string_view pattern, std::size_t size) {
  std::string out;
  for (std::size_t n = 0; out.size() < size; ++n) {
    for (const char c : pattern) c == '\1' ? out += std::to_string(n) : out += c;
  }
  return out;
}

// Of this thread alone, so that others on the processor do not count.
double SecondsOf(const Reader& read, const std::string& input) {
  const auto now = [] {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
  };
  const double begin = now();
  read(input);
  return now() - begin;
}

// What disturbs a measurement only lengthens it: the shortest of several is compared, and more are made while it looks
// as if it grew too fast. Who is too quick to tell gets more to read.
void ExpectSteadyGrowth(const std::string& name, const Reader& read, const Source& source, std::size_t size = kSize) {
  if (!kIsMeasured) return read(source(size));
  const std::array inputs = {source(size), source(2 * size), source(4 * size)};
  std::array<double, 3> shortest;
  shortest.fill(std::numeric_limits<double>::max());
  const auto grows = [&] { return shortest[2] / std::max(shortest[0], 1e-9); };
  for (int round = 0; round < kMostRounds && (round < kFewestRounds || grows() > kMostGrowth); ++round) {
    for (std::size_t i = 0; i < inputs.size(); ++i) shortest[i] = std::min(shortest[i], SecondsOf(read, inputs[i]));
  }
  if (grows() > kMostGrowth && shortest[2] < kMeasurable) return ExpectSteadyGrowth(name, read, source, 8 * size);
  EXPECT_LE(grows(), kMostGrowth) << name << " takes " << shortest[0] << ", " << shortest[1] << ", " << shortest[2]
                                  << " s for one, two and four times the input";
}

struct NamedReader {
  const char* name;
  Reader read;
};

void CheckEach(const std::vector<NamedReader>& readers, std::span<const std::string_view> patterns) {
  // Memory is kept, so that growing to a size for the first time does not count.
  ::mallopt(M_MMAP_THRESHOLD, 1 << 30);
  ::mallopt(M_TRIM_THRESHOLD, 1 << 30);
  for (const NamedReader& reader : readers) {
    for (const std::string_view pattern : patterns) {
      const std::string name = std::string(reader.name) + " of \"" + platform::Printable(pattern) + "\"";
      ExpectSteadyGrowth(name, reader.read, [&](std::size_t size) { return Repeated(pattern, size); });
    }
  }
}

void ReadAttributes(const std::string& html) {
  html::HtmlTokenizer tokenizer(html);
  html::HtmlToken token;
  while (tokenizer.Next(token)) tokenizer.Value(token, "style");
}

const std::vector<NamedReader> kHtmlReaders = {
    {"HtmlTokenizer", ReadAttributes},
    {"HtmlToText", [](const std::string& html) { return html::HtmlToText(html); }},
    {"HtmlToRtf", [](const std::string& html) { return html::HtmlToRtf(html).text; }},
    {"Simplify", [](const std::string& html) { return html::Simplify(html, html.size()); }},
    {"ClosedPage", [](const std::string& html) { return html::ClosedPage(html); }},
    {"SafePage", [](const std::string& html) { return html::SafePage(html, {}); }},
    {"LookAt",
     [](const std::string& html) {
       document::MessageDocument document;
       document.html = html;
       return document::LookAt(document, false, platform::CancelToken());
     }},
    {"WithCharset", [](const std::string& html) { return document::WithCharset(html, document::BodyEncoding::kUtf8); }},
    {"FindLocalPictures", [](const std::string& html) { return html::FindLocalPictures(html); }},
    {"FindPicturesNamedByTags", [](const std::string& html) { return html::FindPicturesNamedByTags(html); }},
    {"EscapeInStyles",
     [](const std::string& html) { return message::EscapeInStyles(html, *charset::FindCharset("us-ascii")); }},
    {"TakePictures",
     [](const std::string& html) {
       document::MessageDocument document;
       document.html = html;
       document.base_folder = "/nowhere";
       return message::TakePictures(document, "x");
     }},
    {"WrapHtml", [](const std::string& html) { return html::WrapHtml(html, 76); }},
    {"CutAtBody", [](const std::string& html) { return document::CutAtBody(html); }},
    {"WithBodyColours", [](const std::string& html) { return document::WithBodyColours(html, {.text = "#000000"}); }},
    {"SignatureNotes", [](const std::string& html) { return document::SignatureNotes(html); }},
    {"TitleOf", [](const std::string& html) { return document::TitleOf(html); }},
    {"PropertiesLoad", [](const std::string& html) { return document::PropertiesLoad("", "", html); }},
    {"DecodeCharacterReferences", [](const std::string& html) { return html::DecodeCharacterReferences(html, true); }},
    {"UnknownTags", [](const std::string& text) { return document::UnknownTags(text); }},
    {"MergePieces", [](const std::string& text) { return document::MergePieces(text); }},
    {"ReplaceMergeFields",
     [](const std::string& text) { return document::ReplaceMergeFields(text, document::MergeValues{}); }}};

// clang-format off
constexpr std::string_view kPiecesOfPages[] = {
    "<", "</", "<!", "<!--", "<!-->", "--!", "<![CDATA[", "<?", "<a ", "<a b='", "<a b=\"\" ", "a = ", "<a\n",
    "<a href=\1>", "<a href=\1></a>", "<a href=x><img>", "<area href=\1>", "<area href=\1 alt=x>", "<b>", "</b>",
    "<div>", "<div>x", "<ul><li>", "<ol type=i><li>x", "<table><tr><td>", "<table>", "<td>x", "</td>", "</table>",
    "<blockquote>x", "<dl><dd>", "<p>", "<pre>\n", "<q>", "<hr>", "<br>", "<style>", "<style>url(",
    "<style>url('x')</style>", "<style>/*", "<style>@import ", "<style>\\", "<script>", "</script", "<textarea>",
    "<title>", "<plaintext>", "<svg><title/>", "<img src=\1>", "<img src=\1.png>", "<img srcset='\1,",
    "<img src='$*Merge\1'>", "<style>\u20AC\\", "<i style=\u20AC>", "<img alt=x ", "<div style='display:none'>",
    "<div style='url(\1)'>", "<div hidden>", "<p hidden>x", "<template>", "<base href=\1/>",
    "<p style='mso-list:l level9'><b style='mso-list:ignore'>x</b>y", "<div>&nbsp;</div>", "<table><tr><td>a b ",
    "<!--[if mso]><img src=\1>", "<!--[if mso]>x<![endif]-->", "]>", "<![", "&", "&amp", "&#1", "&a", "$*Merge",
    "$*Merge\1*$", "$*MergeEmail*$", "$*M", "$", "x", " ", "\n", "\u00E9", "\u4E2D", "e\u0301", "a ", "://",
    "white-space:", "- ", "<body>", "</body>x", "<!doctype>"
};
// clang-format on

TEST(Growth, OfReadingHtml) { CheckEach(kHtmlReaders, kPiecesOfPages); }

// Two things that grow together, and what grows within one place.
TEST(Growth, OfReadingHtmlInOnePlace) {
  struct Row {
    const char *name, *before, *pattern, *behind;
  };
  for (const NamedReader& reader : kHtmlReaders) {
    for (const Row& row : {Row{"a srcset", "<img srcset='", "\1 1x, ", "'>"},
                           Row{"a style", "<p style='", "url(\1);", "'>"},
                           Row{"declarations", "<p style='", "a:b;", "'>"},
                           Row{"blanks", "<p style", " ", ">"},
                           Row{"a style sheet", "<style>", "url(\1)", "</style>"},
                           Row{"a name", "<", "a", ">"},
                           Row{"a link", "<a href='", "x", "'>x</a>"},
                           Row{"a comment", "<!--[if x]>", "<![", "-->"},
                           Row{"files in an attribute", "<p a='", "x=file:", "'>"},
                           Row{"programs", "<p a='", "ab://c=", "'>"},
                           Row{"servers of the net", "<p a='", "=//a", "'>"},
                           Row{"brackets", "<p a='", "https:x?[", "'>"},
                           Row{"pairs", "<p a='", "&a=https:x", "'>"},
                           Row{"labels", "<p title='", "a: ", "'>"},
                           Row{"a staircase of cells", "<table>", "<tr><td rowspan=1000>x<td>", "</table>"},
                           Row{"a steeper one", "<table>", "<tr><td rowspan=\1>x", "</table>"},
                           Row{"one of four rows", "<table>", "<tr><td rowspan=4>x<td rowspan=3>x", "</table>"},
                           Row{"fonts within fonts", "<div>", "<i><b>", "</div></i>"},
                           Row{"servers in styles", "<style>", "\\\\a", "</style>"},
                           Row{"sheets where letters hide", "<p style='font-size:0'>x</p>", "<style x ", ""}}) {
      ExpectSteadyGrowth(std::string(reader.name) + " of " + row.name, reader.read,
                         [&](std::size_t size) { return row.before + Repeated(row.pattern, size) + row.behind; });
    }
    ExpectSteadyGrowth(std::string(reader.name) + " of a long base", reader.read, [&](std::size_t size) {
      return "<base href='" + Repeated("x", size / 2) + "/'>" + Repeated("<img src=\1>", size / 2);
    });
  }
}

// What a disk still has to write for others takes its time from whoever writes next: where files are what is timed,
// they are kept in memory.
std::filesystem::path InMemory() {
  constexpr const char* kMemory = "/dev/shm";
  return ::access(kMemory, W_OK | X_OK) == 0 ? kMemory : std::filesystem::temp_directory_path();
}

TEST(Growth, OfPicturesThatMayNotBeTaken) {
  const test::TemporaryFolder folder(InMemory());
  constexpr std::string_view kReference = "<img src=\1>";
  const std::string all = Repeated(kReference, 4 * kSize);
  for (auto n = std::count(all.begin(), all.end(), '<'); n > 0; --n) folder.Write(std::to_string(n - 1), "GIF89a\x01");
  const std::string base = "<base href='file://" + folder.path().string() + "/'>";
  const auto take = [](const std::string& html) {
    document::MessageDocument document;
    document.html = html;
    return message::TakePictures(document, "x");
  };
  EXPECT_EQ(take(base + all).foreign.size(), static_cast<std::size_t>(std::count(all.begin(), all.end(), '<')));
  ExpectSteadyGrowth("TakePictures", take, [&](std::size_t size) { return base + Repeated(kReference, size); });
}

// Pictures of one name in as many folders, each of which needs a name of its own; and a picture that grows with the
// number of times that it is named.
TEST(Growth, OfPicturesThatAreCopied) {
  const test::TemporaryFolder folder(InMemory());
  constexpr std::size_t kPages = std::size_t{1} * 1024;
  constexpr std::string_view kReference = "<img src=\1/logo.gif>";
  const std::string all = Repeated(kReference, 4 * kPages);
  for (auto n = std::count(all.begin(), all.end(), '<'); n > 0; --n)
    folder.Write(std::to_string(n - 1) + "/logo.gif", "GIF89a" + std::to_string(1'000'000 + n));
  document::PicturePlaces places;
  places.AllowFolder(folder.path());
  const auto copy = [&](const std::string& html) {
    const test::TemporaryFolder target(InMemory());
    folder.Write("large.gif", "GIF89a" + Repeated(html, 8 * html.size()));
    const auto copied = document::CopyPictures(html, folder.path(), places, {target.path(), "p"});
    EXPECT_EQ(copied->find("p/logo%20%282%29.gif") != std::string::npos, html.find("large") == std::string::npos);
  };
  ExpectSteadyGrowth(
      "CopyPictures", copy, [&](std::size_t size) { return Repeated(kReference, size); }, kPages);
  ExpectSteadyGrowth("CopyPictures of one", copy,
                     [](std::size_t size) { return Repeated("<img src=large.gif>", size); });
}

// As many messages, each with a part of the same name.
void ExtractIntoOneFolder(const std::string& messages) {
  const test::TemporaryFolder target(InMemory());
  mail_file::ChosenFolders folders({});
  const auto loading =
      mail_file::Load(target.Write("letter", "Content-Disposition: attachment; filename=a\r\n\r\nx"), {});
  for (std::size_t n = 0; n < messages.size(); ++n) {
    const auto outcome = mail_file::Extract(*loading->message, {.parts_folder = target.path() / "parts"}, folders, {});
    EXPECT_EQ(outcome.parts.size(), 1U);
  }
}

TEST(Growth, OfFilesOfOneName) {
  ExpectSteadyGrowth(
      "Extract", ExtractIntoOneFolder, [](std::size_t size) { return std::string(size, ' '); }, 200);
}

std::size_t FindAll(const std::string& text) {
  std::size_t count = 0;
  for (auto found = recipients::FindAddress(text, 0); found; ++count)
    found = recipients::FindAddress(text, found->position + found->length);
  return count;
}

// A file of lines with fields, in whichever way it is read.
Reader ReadLines(const recipients::ReadingOptions& options) {
  return [options](const std::string& content) {
    const test::TemporaryFolder folder(InMemory());
    const auto lines = recipients::OpenLines(folder.Write("list", content), options, "");
    if (!lines) return;
    const auto mapping = *recipients::ParseMapping("Email Address=18");
    IgnoreErrors((*lines)->Read([&mapping](const recipients::FieldLine& line) {
      recipients::MapFields(line.fields, true, mapping);
      if (line.number > 1) return true;
      recipients::SampleEntries(line.fields, true);
      recipients::MapByHeadings(line.fields);
      return true;
    }));
  };
}

// What stands in a spreadsheet, in the place of its rows.
Reader ReadSheet(std::vector<test::StoredPart> (*book)(const std::string& rows)) {
  return [book, read = ReadLines({})](const std::string& rows) { read(test::StoredArchive(book(rows))); };
}

void FindDelimiter(const std::string& content) {
  const std::vector<std::string> lines(3, content);
  recipients::FindDelimiter(lines);
}

void Harvest(const std::string& text) {
  recipients::AddressHarvest harvest([](std::string_view, bool) { return true; });
  for (std::size_t at = 0; at < text.size(); at += 100) harvest.Feed(std::string_view(text).substr(at, 100));
  harvest.Finish();
}

template <typename Append>
Reader Header(const Append& append) {
  return [append](const std::string& text) {
    std::string out;
    append(out, text);
  };
}

Reader InCharset(const char* name) {
  return [charset = *charset::FindCharset(name)](const std::string& text) {
    std::string out;
    charset.Encode(text, out);
    charset.Decode(text);
  };
}

// A term fits nearly everywhere in a text that grows with it.
TEST(Growth, OfComparingATermWithAText) {
  struct Row {
    const char *name, *letter, *term, *behind;
  };
  for (const Row& row :
       {Row{"one letter", "a", "a", "b%"}, Row{"any character", "a", "_a", "b%"}, Row{"two pieces", "a", "a", "b%a"},
        Row{"letters beyond ASCII", "\u00E9", "\u00C9", "b%"}, Row{"an end", "a", "a", "b"}}) {
    const auto compare = [&row](const std::string& term) {
      recipients::LikeText("%" + term + row.behind, Repeated(row.letter, 400 * term.size()));
    };
    ExpectSteadyGrowth(
        std::string("LikeText of ") + row.name, compare, [&row](std::size_t size) { return Repeated(row.term, size); },
        250);
  }
}

TEST(Growth, OfSheetsThatNameOnePart) {
  ExpectSteadyGrowth("an .xlsx file of one part", ReadLines({}), [](std::size_t size) {
    auto parts = test::Workbook(Repeated("<row/>", size) + "<row><c><v>1</v></c></row>");
    parts[1].content = "<workbook><sheets>" + Repeated("<sheet r:id='rId1'/>", size / 8) + "</sheets></workbook>";
    return test::StoredArchive(parts);
  });
}

// clang-format off
constexpr std::string_view kPiecesOfText[] = {
    "a@", "\1,", "&\1=x", "%41", "@", "a@b.", "a.", "a@b.cc ", "a@b.c", "<", ">", "\"", "\"\"", "\\", ",", "\"a\",",
    ";", "\r", "\n", "\t", " ", "'", "=", "=3D", "=\n", "\xFF", "\xC3", "\u00E9", "\u0130", "\u00E9 a ", "e\u0301",
    "\u0301", "\u4E2D", "\u4E2Da", "\u3042\u300D", "\u05D0", "\u200D", "a", "A B", "a b ", "(", "=?utf-8?q?", "%", "+",
    "+-", "+AAA-", "~", "\x1B$B", "\x1B", "\x0E", "[Email] ASC,", "Email Address=1,", "://", "AAAA", "[", "::", "xn--",
    "BEGIN:VCARD\n", "EMAIL:a@b.cc\n", "N;ENCODING=QUOTED-PRINTABLE:=\n", "\n ", "mail: a@b.cc\n",
    std::string_view("PK\1\2\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 46),
    "PK\5\6", "<row><c><v>1</v></c></row>", "<row><c r='XFD1'><v>1</v></c></row>",
    "<table:table-row><table:table-cell table:number-columns-repeated='99'><text:p>a</text:p>",
    std::string_view("\0", 1)
};
// clang-format on

TEST(Growth, OfReadingText) {
  const auto utf8 = charset::Charset::Utf8();
  const auto shifted = *charset::FindCharset("iso-2022-jp");
  using enum mime::HeaderEncoding;
  CheckEach(
      {{"FindAddress", FindAll},
       {"AddressHarvest", Harvest},
       {"EnvelopeAddress", [](const std::string& text) { return smtp::EnvelopeAddress(text); }},
       {"delimited lines", ReadLines({.most_fields = 1'000'000})},
       {"quoted records", ReadLines({.rfc4180 = true, .most_fields = 1'000'000})},
       {"FindDelimiter", FindDelimiter},
       {"a vCard file", ReadLines({.format = recipients::FileFormat::kVCard})},
       {"a card", [read = ReadLines({.format = recipients::FileFormat::kVCard})](
                      const std::string& text) { read("BEGIN:VCARD\nN;" + text + "\nADR:" + text + "\n" + text); }},
       {"an LDIF file", ReadLines({.format = recipients::FileFormat::kLdif})},
       {"an LDIF value",
        [read = ReadLines({.format = recipients::FileFormat::kLdif})](const std::string& text) {
          read("dn: a\nstreet: " + text + "\nmail:: " + text + "\n" + text);
        }},
       {"an archive", ReadLines({.format = recipients::FileFormat::kSpreadsheet})},
       {"the directory of an archive",
        [](const std::string& text) { return recipients::ArchiveDirectory::Parse(text, "list"); }},
       {"an .xlsx file", ReadSheet(test::Workbook)},
       {"an .ods file", ReadSheet(test::OpenDocument)},
       {"ParseMapping", [](const std::string& text) { return recipients::ParseMapping(text); }},
       {"OrderByOf", [](const std::string& text) { return recipients::OrderByOf(text); }},
       {"CompareText", [](const std::string& text) { return recipients::CompareText(text, text + "x"); }},
       {"ReadMailto", [](const std::string& text) { return document::ReadMailto("mailto:" + text); }},
       {"mailto fields", [](const std::string& text) { return document::ReadMailto("mailto:?" + text); }},
       {"ReadLink", [](const std::string& text) { return document::ReadLink("mailto:" + text).address; }},
       {"a JPEG file", [](const std::string& text) { document::IsCutShort("\xFF\xD8\xFF\xDA\0\2" + text); }},
       {"a PNG file", [](const std::string& text) { document::IsCutShort("\x89PNG\r\n\x1A\n" + text); }},
       {"HashText", [](const std::string& text) { return recipients::HashText(text); }},
       {"AppendUnstructured", Header([=](std::string& out, const std::string& text) {
          mime::AppendUnstructured(out, "Subject", mime::HeaderText(text), utf8, kNone);
        })},
       {"AppendUnstructured in a shifted set", Header([=](std::string& out, const std::string& text) {
          mime::AppendUnstructured(out, "Subject", mime::HeaderText(text), shifted, kB);
        })},
       {"AppendMailbox", Header([=](std::string& out, const std::string& text) {
          mime::AppendMailbox(out, "To", mime::HeaderText(text), mime::HeaderText(text), utf8, kQ);
        })},
       {"AppendParameter",
        Header([](std::string& out, const std::string& text) { mime::AppendParameter(out, "filename", text); })},
       {"AppendNameParameter",
        Header([](std::string& out, const std::string& text) { mime::AppendNameParameter(out, text); })},
       {"ReadHeader", [](const std::string& text) { return mime::ReadHeader("Subject: " + text, "Subject"); }},
       {"WrapText", [](const std::string& text) { return html::WrapText(text, 76); }},
       {"HtmlFromText", [](const std::string& text) { return document::HtmlFromText(text); }},
       {"ReadBodyFile",
        [](const std::string& text) {
          const test::TemporaryFolder folder;
          const auto body = document::ReadBodyFile(folder.Write("body", text));
          if (body) document::EncodeBody(body->text, document::BodyEncoding::kWindows1252);
        }},
       {"windows-1252", InCharset("windows-1252")},
       {"iso-2022-jp", InCharset("iso-2022-jp")},
       {"iso-2022-kr", InCharset("iso-2022-kr")},
       {"utf-7", InCharset("utf-7")},
       {"gb18030 or gb2312", InCharset("gb2312")},
       {"MediaTypeOf", [](const std::string& text) { return mime::MediaTypeOf(text, text); }},
       {"DecodeQuotedPrintable", [](const std::string& text) { return mime::DecodeQuotedPrintable(text); }},
       {"DecodeBase64", [](const std::string& text) { return platform::DecodeBase64(text); }},
       {"Printable", [](const std::string& text) { return platform::Printable(text, text.size()); }},
       {"PrintableJson", [](const std::string& text) { return platform::PrintableJson(text); }},
       {"ParseHostPort", [](const std::string& text) { return net::ParseHostPort(text, 25); }},
       {"AsciiHost", [](const std::string& text) { return net::AsciiHost(text); }},
       {"SaslPrep", [](const std::string& text) { return smtp::SaslPrep(text); }}},
      kPiecesOfText);
}

// Everything of a message file is read. What comes before the text is as good as nothing.
Reader ReadMessage(std::string_view before) {
  return [before](const std::string& text) {
    const test::TemporaryFolder folder;
    const auto file = folder.Write("message", std::string(before) + text);
    for (const auto mode : {mail_file::LoadMode::kPlain, mail_file::LoadMode::kExtended}) {
      const auto loading = mail_file::Load(file, {.mode = mode});
      for (const auto& part : loading->message->parts()) {
        IgnoreErrors(loading->message->TextOf(part));
        IgnoreErrors(loading->message->EachField(part, [](std::string_view, std::string_view) {}));
      }
      IgnoreErrors(mail_file::BodyAsHtml(*loading->message));
    }
  };
}

// clang-format off
constexpr std::string_view kPiecesOfMessages[] = {
    "x", " ", "\n", "\r", "\n ", "a,", "a@b.c,", "(", "()", "\"", "<", ";", ":", "\\", "=?utf-8?q?", "=?utf-8?q?a?= ", "=?a?b? ",
    "from ", "a\1=b;", "a*\1*=b;", "a*0=b;", "\xE9", "=", "=3D", "--", "\n--b", "--b\n", "--b--\n", "--b\n\nx\n",
    "--b\nContent-Type: text/html\n\n<b>x<img src=cid:a>\n", "--b\nContent-Type: text/html\n\n<img>\n",
    "--b\nContent-Type: text/html\n\n<img src=cid:a>\n--b\nContent-Type: image/gif\nContent-ID: <a>\n\nGIF89a\n",
    "--b\nContent-Location: a\1/../../b\nContent-Type: text/css\n\np{background:url(b)}\n", "--x\nContent-\n",
    "X: y\n", "To: a@b.c\n", "Content-Type: message/rfc822\n\n",
    "Content-Type: multipart/mixed; boundary=b\1\n\n--b\1\n", "Content-Type: multipart/mixed\n\n--b\1\n",
    "begin 644 a\n", "begin 644 a\n!  \nend\n", "=ybegin \n", "(This file must be converted with BinHex\n:", "!!!!",
    std::string_view("\2\2\x90\6\0\0\0\0\0\0\0\2\xF\x80\6\0\1\0\0\0xx\0", 23),
    std::string_view("\1\3\x90\6\0\x10\0\0\0\xFF\0\0\0", 13), std::string_view("\0", 1)
};
// clang-format on

TEST(Growth, OfMessageFiles) {
  CheckEach(
      {{"a message file", ReadMessage("")},
       {"a subject", ReadMessage("Subject: ")},
       {"a list of mailboxes", ReadMessage("To: ")},
       {"a relay stamp", ReadMessage("Received: ")},
       {"a content type", ReadMessage("Content-Type: text/plain; ")},
       {"a mailbox",
        ReadMessage("From b Sat Nov 14 22:40:05 2026\nContent-Type: multipart/mixed; boundary=b\n\n--b\n\n")},
       {"a multipart", ReadMessage("Content-Type: multipart/mixed; boundary=b\n\n--b\n")},
       {"a multipart without a boundary", ReadMessage("Content-Type: multipart/mixed\n\n")},
       {"a text", ReadMessage("Subject: x\n\n")},
       {"a base64 part", ReadMessage("Content-Transfer-Encoding: base64\n\n")},
       {"a quoted-printable part", ReadMessage("Content-Transfer-Encoding: quoted-printable\n\n")},
       {"a page", ReadMessage("Content-Type: text/html\n\n")},
       {"a BinHex part", ReadMessage("Content-Type: application/mac-binhex40\n\n:")},
       {"winmail.dat", ReadMessage(std::string_view("Content-Type: application/ms-tnef\n\n\x78\x9F\x3E\x22\1\0", 41))}},
      kPiecesOfMessages);
}

class NoSink final : public smtp::MessageSink {
 public:
  void Begin() override {}
  Result<void> Write(std::string_view) override { return {}; }
  Result<std::string> Keep(const smtp::ReceivedEnvelope&) override { return std::string("kept"); }
  void Drop() override {}
};

void Serve(const std::string& bytes, std::string_view before) {
  smtp::ServerOptions options;
  options.user = "ada";
  options.password = "s3cret";
  options.rules = {*smtp::ParseServerRule("*a*@*b*=550", smtp::RuleKind::kRefuse)};
  const smtp::ServerPeer peer{"127.0.0.1:1", true, std::string(24, 'x')};
  NoSink sink;
  smtp::ServerSession session(options, peer, sink);
  session.Receive(before);
  for (std::size_t at = 0; at < bytes.size(); at += 7) {
    session.Receive(std::string_view(bytes).substr(at, 7));
    session.Sent(session.BytesToSend().size());
  }
}

void Answer(const std::string& bytes, std::string_view before, std::size_t piece) {
  smtp::ClientOptions options;
  options.sign_in = true;
  options.user = "ada";
  options.password = platform::Secret("s3cret");
  smtp::SendWindow window;
  smtp::ClientSession session(options, {"[127.0.0.1]", true, false, std::string(24, 'x')}, window);
  const auto receive = [&session](std::string_view some) {
    session.Receive(some);
    for (auto out = session.BytesToSend(); !out.empty(); out = session.BytesToSend()) session.Sent(out.size());
    while (session.NextEvent() != nullptr) {
    }
  };
  receive("220 mx ESMTP\r\n");
  receive(before);
  for (std::size_t at = 0; at < bytes.size(); at += piece) receive(std::string_view(bytes).substr(at, piece));
}

// clang-format off
constexpr std::string_view kPiecesOfTalks[] = {
    "x", "\r", "\n", "\r\n", ".", ".\r\n", "\r\n.", " ", "*", "=", "NOOP\r\n", "RCPT TO:<a@b.example>\r\n",
    "RCPT TO:<aaaaaaaaaaaaaaaaaaaa>\r\n", "MAIL FROM:<a@b.example>\r\nRSET\r\n", "DATA\r\n", "BDAT 1\r\nx",
    "AUTH LOGIN\r\n", "QUIT\r\n", "250-x\r\n", "250-AUTH X\1\r\n", "X\1 ", "AUTH X\1\n", "AUTH\n", "SIZE 1\n",
    "334 \r\n", "334 eA==\r\n", "250 ok\r\n", "421-x\r\n", "whois: a b\n", "@ ", std::string_view("\0", 1)
};
// clang-format on

TEST(Growth, OfServersAndClients) {
  const auto serve = [](std::string_view before) {
    return [before](const std::string& bytes) { Serve(bytes, before); };
  };
  const auto answer = [](std::string_view before, std::size_t piece) {
    return [before, piece](const std::string& bytes) { Answer(bytes, before, piece); };
  };
  constexpr std::string_view kSignedIn =
      "EHLO c\r\nAUTH PLAIN AGFkYQBzM2NyZXQ=\r\nMAIL FROM:<a@b.example>\r\nRCPT TO:<c@d.example>\r\n";
  static const std::string in_data = std::string(kSignedIn) + "DATA\r\n";
  CheckEach({{"the mailbox", serve("")},
             {"the mailbox in a transaction", serve(kSignedIn)},
             {"the mailbox in a message", serve(in_data)},
             {"the mailbox in a sign-in", serve("EHLO c\r\nAUTH SCRAM-SHA-256\r\n")},
             {"the client", answer("", 7)},
             {"the client in large pieces", answer("", 16384)},
             {"the client at EHLO", answer("250-mx\r\n250-AUTH ", 16384)},
             {"the client in a sign-in", answer("250-mx\r\n250 AUTH LOGIN\r\n", 7)},
             {"ReplyHabits",
              [](const std::string& text) {
                smtp::SendWindow window;
                smtp::ReplyHabits(window).OnSender({250, "", text});
              }},
             {"ParseCapabilities", [](const std::string& text) { return smtp::ParseCapabilities(text); }},
             {"ReadWhoisAnswer", [](const std::string& text) { return domain::ReadWhoisAnswer(text); }},
             {"NtlmChallenge", [](const std::string& text) { return smtp::ParseNtlmChallenge("NTLMSSP" + text); }}},
            kPiecesOfTalks);
}

TEST(Growth, OfRules) {
  ExpectSteadyGrowth(
      "MatchesGlob", [](const std::string& text) { return smtp::MatchesGlob("*a*ab*aab", text); },
      [](std::size_t size) { return Repeated("a", size); });
}

}  // namespace
}  // namespace quillcast
