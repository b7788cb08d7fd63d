// What is loaded of message files: bodies, recipients, stamps, codes, and what stays bounded whatever a stranger
// writes.
#include "mail_file/mail_message.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <fstream>

#include "mail_file/body_formats.h"
#include "mail_file/gmime_border.h"
#include "platform/text.h"
#include "support/memory.h"
#include "support/temporary_folder.h"

namespace quillcast::mail_file {
namespace {

Loading LoadFile(const std::filesystem::path& file, LoadMode mode = LoadMode::kPlain) {
  auto loading = Load(file, {.mode = mode});
  EXPECT_TRUE(loading);
  return std::move(loading).ValueOr({});
}

Loading LoadSample(const std::string& name, LoadMode mode = LoadMode::kPlain) {
  return LoadFile(QUILLCAST_TEST_DATA "/files/" + name + ".eml", mode);
}

std::string ContentOf(const MailMessage& message, const Part& part) {
  std::string out;
  auto reader = message.Open(part);
  for (auto block = reader->Next(); block && !block->empty(); block = reader->Next()) out += *block;
  return out;
}

TEST(MailMessage, TellsItsBodies) {
  struct Row {
    const char* file;
    const char* text;
    const char* html;
  };
  for (const Row& row : {
           Row{"lf_alone", "Grüße\r\nvon Ada\r\n", ""},
           Row{"cr_alone", "one", ""},
           Row{"alternative", "Grüße weich", "<p>Grüße</p>"},
           Row{"apple", "before\r\nafter", ""},
           Row{"related", "", "<img src=\"cid:p@x\">"},
           Row{"nested_message", "see below", ""},
           Row{"uuencode_in_text", "Here it is:\r\n\r\n\r\nbegin to read at once.\r\nBye\r\n", ""},
           Row{"yenc", "Here:\r\nBye\r\n", ""},
           Row{"binhex_in_text", "My file:\r\nBye\r\n", ""},
           Row{"tnef", "plain words", "<p>From winmail</p>"},
           Row{"only_header", "", ""},
       }) {
    const Loading loading = LoadSample(row.file);
    ASSERT_TRUE(loading.message) << row.file;
    EXPECT_EQ(loading.message->TextBody().ValueOr("failed"), row.text) << row.file;
    EXPECT_EQ(loading.message->HtmlBody().ValueOr("failed"), row.html) << row.file;
    EXPECT_EQ(loading.message->HasBody("text/html"), *row.html != '\0') << row.file;
  }
}

// Sets that are declared and are not what the bytes are, or are known under a smaller name.
TEST(MailMessage, FindsOutCharacterSets) {
  struct Row {
    const char* type;
    const char* bytes;
    const char* text;
  };
  for (const Row& row : {
           Row{"text/plain; charset=us-ascii", "caf\xC3\xA9", "café"},
           Row{"text/plain; charset=iso-8859-1", "\x80 5", "€ 5"},
           Row{"text/plain; charset=utf-8", "caf\xE9", "café"},
           Row{"text/plain; charset=gb2312", "\x81\x30\x81\x30", "\xC2\x80"},
           Row{"text/plain; charset=ibm437", "caf\x82", "café"},
           Row{"text/plain; charset=utf-8", "\xEF\xBB\xBFmark", "mark"},
           Row{"text/plain; charset=x", "caf\xC3\xA9", "café"},
           Row{"text/plain; charset=utf-16le", "\xAC\x20\x53\x30", "€こ"},
           Row{"text/plain; charset=iso-2022-jp", "\x1B$B$3$s\x1B(B", "こん"},
           Row{"text/html", "<meta charset=windows-1251>\xCF", "<meta charset=windows-1251>П"},
           Row{"text/html; charset=x", "<meta content='text/html; charset=koi8-r'>\xC1",
               "<meta content='text/html; charset=koi8-r'>а"},
       }) {
    const test::TemporaryFolder folder;
    const Loading loading = LoadFile(folder.Write("m", std::string("Content-Type: ") + row.type + "\n\n" + row.bytes));
    EXPECT_EQ(loading.message->TextOf(loading.message->parts()[0]).ValueOr("failed"), row.text) << row.type;
  }
}

// As its facts are read: what the one takes for a field, the other does.
TEST(MailMessage, GivesEachFieldOfAHeader) {
  for (const auto& [header, fields] : {
           std::pair("From : Ada\nFrom\t: b\nSubject:t\n", "From=Ada|From=b|Subject=t|"),
           {"\xEF\xBB\xBF"
            "From: Ada\nX:\n",
            "From=Ada|X=|"},
           {"\n\nFrom ada@x.org Sat Nov 14 22:40:05 2026\n>From b: x\nX: y\n", "X=y|"},
           {"X:  =?utf-8?q?Gr=C3=BC?=\n =?utf-8?q?=C3=9Fe?=\n\tund\nZ: z\n", "X=Grüße und|Z=z|"},
           {"X: y\nno field\nZ: z\n", "X=y|"},
       }) {
    const test::TemporaryFolder folder;
    const Loading loading = LoadFile(folder.Write("m", std::string(header) + "\nY: body\n"));
    std::string told;
    const auto read = loading.message->EachField(loading.message->parts()[0], [&](auto name, auto value) {
      told.append(name).append("=").append(value) += '|';
    });
    EXPECT_TRUE(read && told == fields) << header << told;
  }
}

TEST(MailMessage, TellsRecipientsInTheirOrder) {
  const std::pair<const char*, const char*> rows[] = {
      {"recipients",
       "0 Bob <bob@example.net>\n0  <carol@example.net>\n0 Last, First <lf@example.net>\n"
       "1 Dave <dave@example.net>\n1  <eve@example.net>\n2  <secret@example.net>\n"},
      {"recipients_odd",
       "0 Bob <bob@example.net>\n0  <carol@example.net>\n0 dave@example.net <dave@example.net>\n"
       "0 Eve, E. <eve@example.net>\n0 Frank, F. <frank@example.net>\n"},
  };
  for (const auto& [file, expected] : rows) {
    const Loading loading = LoadSample(file);
    std::string told;
    for (const auto& [mailbox, type] : loading.message->facts().recipients)
      told += std::to_string(static_cast<int>(type)) + " " + mailbox.name + " <" + mailbox.address + ">\n";
    EXPECT_EQ(told, expected) << file;
  }
}

TEST(MailMessage, TellsOfTheMessagesBehindIt) {
  struct Case {
    const char* name;
    const char* rest;
    bool is_told;
  };
  const test::TemporaryFolder folder;
  const std::string line = "From ada@x.org Sat Nov 14 22:40:05 2026\n";
  for (const Case& c : std::initializer_list<Case>{
           {"another", "a\n\nFrom bob@x.org Sat Nov 14 22:41:00 2026\nSubject: y\n\nb\n", true},
           {"behind an empty one", "From bob@x.org Sat Nov 14 22:41:00 2026\nX: y\n\nFrom b 1:2\nX: y\n", true},
           {"no blank line before it", "a\nFrom bob@x.org Sat Nov 14 22:41:00 2026\nSubject: y\n", false},
           {"no time in it", "a\n\nFrom here on:\nSubject: y\n", false},
           {"a time alone", "a\n\nFrom now on at 10:30 we meet\nNote: all\n", false},
           {"of a log", "a\n\nFrom server1 log at 12:30:\nERROR: all\n", false},
           {"a day and a time", "a\n\nFrom Sat Nov 14 at 10:30 we meet in 2026 again\nNote: all\n", false},
           {"no fields behind it", "a\n\nFrom bob@x.org Sat Nov 14 22:41:00 2026\nwe meet: all\n", false},
           {"nothing behind it", "a\n\nFrom \nX-Mozilla-Status: 0001\n", true},
           {"a dash", "a\n\nFrom -\nSubject: y\nTo: z\n", true},
           {"colons in the address", "a\n\nFrom \"a:b\"@x Sat Nov 14 22:40:05 2026\nSubject: y\n", true},
           {"a zone before the year", "a\n\nFrom b@x Sat Nov  4 22:40:05 CET 2026\nSubject: y\n", true},
           {"a zone behind the year", "a\n\nFrom b@x Sat Nov 14 22:40:05 2026 +0100\nSubject: y\n", true},
           {"no seconds", "a\n\nFrom b@x Sat Nov 14 22:40 2026\nSubject: y\n", true},
           {"the day first", "a\n\nFrom b@x Sat, 14 Nov 2026 22:40:05 +0000\nSubject: y\n", true},
           {"in numbers", "a\n\nFrom b@x 2026-11-14 22:40:05\nSubject: y\n", true},
           {"by UUCP", "a\n\nFrom b Sat Nov 14 22:40:05 2026\n>From b Sat Nov 14 22:40:05 2026 remote from x\nX: y\n",
            true},
           {"an invitation", "a\n\nFrom Sat Nov 14 10:00 2026\nPlace: Town Hall\n", false},
           {"an invitation with an end", "a\n\nFrom Sat 14 Nov 2026 10:00 until 12:00\nPlace: Town Hall\n", false},
           {"an invitation with a word", "a\n\nFrom today Sat Nov 14 10:00 2026\nPlace: Town Hall\n", false},
           {"a name alone", "a\n\nFrom ada Sat Nov 14 22:40:05 2026\nPlace: y\n", true},
           {"none", "a\n", false},
       }) {
    for (const std::string& first : {line, std::string()}) {
      const Loading loading = LoadFile(folder.Write("box", first + "Subject: x\n\n" + c.rest));
      const bool is_told = c.is_told && !first.empty();
      EXPECT_EQ(loading.faults.size(), is_told ? 1U : 0U) << c.name << first;
      EXPECT_EQ(loading.code(), is_told ? LoadCode::kException : LoadCode::kLoaded) << c.name << first;
    }
  }
}

TEST(MailMessage, EndsWhereTheNextOfAMailboxBegins) {
  const test::TemporaryFolder folder;
  const std::string next = "\n\nFrom bob@x.org Sat Nov 14 22:41:00 2026\nSubject: y\n\nother";
  const std::string multipart = "Content-Type: multipart/mixed; boundary=b\n\n--b\n\none";
  for (const auto& [name, first] : {
           std::pair("plain", std::string("Subject: x\n\none")),
           {"closed multipart", multipart + "\n--b--"},
           {"base64", "Content-Transfer-Encoding: base64\n\nb25l"},
       }) {
    const Loading loading =
        LoadFile(folder.Write("box", "From ada@x.org Sat Nov 14 22:40:05 2026\n" + first + next + next + next + "\n"));
    ASSERT_EQ(loading.faults.size(), 1U) << name;
    EXPECT_EQ(loading.faults.front().what.InEnglish(),
              "The file is a mailbox: its first message was read, and 3 more were left out.")
        << name;
    auto text = loading.message->TextBody().ValueOr("");
    EXPECT_EQ(platform::Trim(text), "one") << name;
    EXPECT_EQ(loading.message->parts().front().source.bytes.end,
              (std::string("From ada@x.org Sat Nov 14 22:40:05 2026\n") + first).size() + 1)
        << name;
  }
}

// What looks like the next message and is not.
TEST(MailMessage, KeepsWhatLiesWithinTheFirstOfAMailbox) {
  const test::TemporaryFolder folder;
  const std::string line = "From ada@x.org Sat Nov 14 22:40:05 2026\n";
  const std::string next = "\n" + line + "Subject: y\n\nother\n";
  const std::string multipart = "Content-Type: multipart/mixed; boundary=b\n\n--b\n\none\n--b\n";
  const std::string attached = "Content-Type: message/rfc822\n\n" + line + "Subject: inner\n\ninner\n";
  const std::string mailbox = "Content-Disposition: attachment\n\n" + line + "X: y\n\na\n" + next + next;
  const std::string end = "\n--b\n\ntwo\n--b--\n";
  const auto inner = [&](const std::string& type) {
    return "Content-Disposition: attachment\n\n" + line + type + "\n\na boundary=b line\n" + next;
  };
  const auto again = [&](const std::string& type) {
    return multipart + "\ntwo\n\n" + line + "Content-Type: multipart/mixed;" + type + "\n\n--b\n\none\nother\n--b--\n";
  };
  const std::string quote = "one\n" + next + "two";
  const auto sized = [](std::size_t size) { return "Content-Length: " + std::to_string(size) + "\n\n"; };
  struct Case {
    const char* name;
    std::string first;
    int more;
    bool is_whole;  // "two" is there
  };
  for (const Case& c : std::initializer_list<Case>{
           {"an attached message", multipart + attached + end + next, 1, true},
           {"an attached mailbox", multipart + mailbox + end, 0, true},
           {"a multipart that is not closed", multipart + "\ntwo\n" + next, 1, true},
           {"one that the next one closes", multipart + "\ntwo\n\n" + line + multipart + "\nother\n--b--\n", 1, true},
           {"one that the next one closes, whose first field names it",
            multipart + "\ntwo\n\nFrom \nContent-Type: multipart/mixed;\n boundary=b\nTo: z\n\n--b\n\nother\n--b--\n",
            1, true},
           {"one that the next one closes, folded", again(" boundary=\n b"), 1, true},
           {"one that the next one closes, in another charset", again(" boundary*=''%62"), 1, true},
           {"an attached one of a longer boundary",
            multipart + inner("Content-Type: multipart/mixed; boundary=bb") + end, 0, true},
           {"an attached one that speaks of it", multipart + inner("Subject: boundary=b") + end, 0, true},
           {"a bare \"From \" before words with a colon", "\none\n\nFrom \nName: two\n" + next, 1, true},
           {"a date in a sentence", "\none\n\nFrom my calendar, Sat, 14 Nov 2026 10:30 MET\nPlace: two\n" + next, 1,
            true},
           {"a bare \"From \" before fields", "\none\n\nFrom \nReturn-Path: <a@x.org>\n\ntwo\n" + next, 2, false},
           {"a name as the sender", "\none\n\nFrom Ada King Sat Nov 14 22:40:05 2026\nCc: y\nLines: 1\n\ntwo\n" + next,
            2, false},
           {"a date in a sentence before words with a colon",
            "\none\n\nFrom my notes of Sat Nov 14 22:40:05 2026\nPriority: high, he said.\ntwo\n" + next, 1, true},
           {"an address that is spelt out",
            "\none\n\nFrom ada at x.org  Sat Nov 14 22:40:05 2026\nSubject: y\n\ntwo\n" + next, 2, false},
           {"a length", sized(quote.size()) + quote + "\n" + next, 1, true},
           {"a length to the end", sized(quote.size()) + quote, 0, true},
           {"a length that leads nowhere", sized(quote.size() - 3) + quote + "\n" + next, 2, false},
           {"a length beyond the end", sized(10'000) + quote, 1, false},
       }) {
    for (const char* before : {"", "\n\n"}) {
      const Loading loading = LoadFile(folder.Write("box", before + line + c.first));
      std::string told;
      for (const LoadFault& fault : loading.faults) told += fault.what.InEnglish();
      const std::string count = " " + std::to_string(c.more) + " more";
      EXPECT_EQ(told.find(c.more > 0 ? count : "mailbox") != std::string::npos, c.more > 0) << c.name << told;
      const std::string text = loading.message->TextBody().ValueOr("");
      EXPECT_EQ(text.find("two") != std::string::npos, c.is_whole) << c.name << text;
      EXPECT_FALSE(c.is_whole && text.ends_with("other\r\n")) << c.name << text;
    }
  }
}

TEST(MailMessage, GivesTheMarkOfUtf8ToTheBodyWhereThereIsNoHeader) {
  const test::TemporaryFolder folder;
  for (const char* text : {"\xEF\xBB\xBF", "\xEF\xBB\xBFshopping list\n"}) {
    const Loading loading = LoadFile(folder.Write("list", text));
    const Part& part = loading.message->parts().front();
    EXPECT_EQ(part.header.begin, part.header.end) << text;
    EXPECT_LE(part.header.end, part.source.bytes.begin) << text;
  }
}

TEST(MailMessage, EndsWhenItIsCancelled) {
  platform::CancelToken cancel;
  cancel.Request();
  const auto loading = Load(QUILLCAST_TEST_DATA "/files/plain.eml", {.cancel = &cancel});
  ASSERT_FALSE(loading);
  EXPECT_EQ(loading.error().failure, Failure::kTryAgain);
}

// A file that shrinks under way: what was found before is used, what is gone is told.
TEST(MailMessage, TellsWhenItsFileBecomesShorter) {
  const test::TemporaryFolder folder;
  const auto file = folder.Write("m", "Subject: x\n\n" + std::string(500'000, 'x'));
  const Loading loading = LoadFile(file);
  std::filesystem::resize_file(file, 100);
  const auto text = loading.message->TextOf(loading.message->parts()[0]);
  ASSERT_FALSE(text);
  EXPECT_EQ(text.error().failure, Failure::kIo);
}

// A sanitizer's own memory says nothing of the program's.
#ifdef __SANITIZE_ADDRESS__
constexpr std::uint64_t kMostMemory = 1ULL << 30;
#else
constexpr std::uint64_t kMostMemory = 56ULL << 20;  // with what the program itself takes: 64
#endif

std::string Repeated(const std::string& text, std::size_t count) {
  std::string out;
  for (std::size_t i = 0; i < count; ++i) out += text;
  return out;
}

std::string NestedMultiparts(int count) {
  std::string out;
  for (int i = 0; i < count; ++i) {
    const std::string boundary = "b" + std::to_string(i);
    out += "Content-Type: multipart/mixed; boundary=" + boundary + "\n\n--" + boundary + "\n";
  }
  return out + "\nx\n";
}

std::string Tnef(std::size_t files) {
  const std::string file("\2\2\x90\6\0\0\0\0\0\0\0\2\xF\x80\6\0\1\0\0\0xx\0", 23);
  return "Content-Type: application/ms-tnef\nContent-Transfer-Encoding: binary\n\n" +
         std::string("\x78\x9F\x3E\x22\1\0", 6) + Repeated(file, files);
}

// Whatever is in it, it is read within bounds, and what was cut is told.
TEST(MailMessage, StaysWithinItsLimits) {
  struct Row {
    const char* name;
    std::string text;
    std::size_t parts;
    const char* told;
  };
  const std::string to = "To: " + Repeated("Name <user@example.org>,\n ", 1'000'000) + "\n\nx";
  const Row rows[] = {
      {"fields", Repeated("X-Field: value\n", 1'000'000) + "\nx", 2, "20000 header fields"},
      {"parts", "Content-Type: multipart/mixed; boundary=b\n\n" + Repeated("--b\n\nx\n", 20'000), 10'001,
       "10000 parts"},
      {"nesting", NestedMultiparts(10'000), 101, "nested deeper than 100"},
      {"messages", Repeated("Content-Type: message/rfc822\n\n", 10'000), 101, "nested deeper than 100"},
      {"a field", "Subject: " + std::string(10'000'000, 'x') + "\n\nx", 1, "\"Subject\" is too long"},
      {"recipients", to, 1, "\"To\" is too long"},
      {"stamps", Repeated("Received: by " + std::string(900, 'x') + "\n", 15'000) + "\nx", 1,
       "more recipients or relay"},
      {"uuencode", "Subject: x\n\n" + Repeated("begin 644 a\n!  \nend\n", 20'000), 10'001, "10000 parts"},
      {"winmail.dat", Tnef(20'000), 10'001, "10000 parts"},
  };
  const test::TemporaryFolder folder;
  for (const Row& row : rows) {
    const auto file = folder.Write("m", row.text);
    const std::uint64_t before = (test::ForgetPeakMemory(), test::PeakMemory());
    const Loading loading = LoadFile(file);
    EXPECT_LT(test::PeakMemory() - before, kMostMemory) << row.name;
    ASSERT_TRUE(loading.message) << row.name;
    EXPECT_EQ(loading.message->parts().size(), row.parts) << row.name;
    EXPECT_EQ(loading.code(), LoadCode::kException) << row.name;
    ASSERT_FALSE(loading.faults.empty());
    EXPECT_NE(loading.faults.front().what.InEnglish().find(row.told), std::string::npos)
        << row.name << ": " << loading.faults.front().what.InEnglish();
  }
}

TEST(MailMessage, ListsFieldsUpToALimitAndTellsOfTheOthers) {
  const test::TemporaryFolder folder;
  const auto line = [](std::size_t size) { return "X: " + std::string(size, 'x') + "\n"; };
  const Loading loading = LoadFile(folder.Write("m", line(100'000) + Repeated(line(60'000), 101) + "Y: z\n\nx"));
  std::vector<std::size_t> sizes;
  const auto read =
      loading.message->EachField(loading.message->parts()[0], [&](auto, auto value) { sizes.push_back(value.size()); });
  EXPECT_TRUE(read && sizes.front() == 100'000U && sizes.size() == 69U && sizes.back() == 60'000U) << sizes.size();
  ASSERT_EQ(loading.faults.size(), 1U);
  EXPECT_EQ(loading.faults[0].what.InEnglish(),
            "34 header fields are not listed: with them, the header takes more than 4 MiB.");
}

// Every byte from the first cut field on is in the last part, and nothing twice.
TEST(MailMessage, KeepsWhatIsBeyondALimitAsOnePart) {
  const std::string rest = Repeated("X-B: b\n", 1000) + "\nbody\n";
  const test::TemporaryFolder folder;
  const Loading loading = LoadFile(folder.Write("m", Repeated("X-A: a\n", 20'000) + rest));
  EXPECT_EQ(ContentOf(*loading.message, loading.message->parts().back()), rest);
}

// A part of two gigabytes, in a file with a hole where its content is.
TEST(MailMessage, HoldsNoContent) {
  const test::TemporaryFolder folder;
  const std::string head = "Content-Type: application/octet-stream; name=a\n\n";
  const auto file = folder.Write("m", head);
  constexpr std::uint64_t kSize = 2ULL * 1024 * 1024 * 1024;
  std::filesystem::resize_file(file, kSize);
  const std::uint64_t before = (test::ForgetPeakMemory(), test::PeakMemory());
  const Loading loading = LoadFile(file);
  EXPECT_EQ(loading.code(), LoadCode::kLoaded);
  EXPECT_EQ(loading.message->parts().front().source.bytes.size(), kSize - head.size());
  auto reader = loading.message->Open(loading.message->parts().front());
  EXPECT_EQ(reader->Next()->front(), '\0');
  EXPECT_LT(test::PeakMemory() - before, 8U * 1024 * 1024);
}

#ifndef __SANITIZE_ADDRESS__  // which ends the program itself
// A text that memory has no room for is an error, and the rest of the message is still there.
TEST(MailMessage, TellsOfATextThatMemoryHasNoRoomFor) {
  const test::TemporaryFolder folder;
  const auto file = folder.Write("m", "Subject: x\nContent-Type: text/html\n\n");
  std::filesystem::resize_file(file, 1ULL << 30);
  rlimit before{};
  ::getrlimit(RLIMIT_AS, &before);
  const rlimit small{1ULL << 30, before.rlim_max};
  ::setrlimit(RLIMIT_AS, &small);
  const Loading loading = LoadFile(file);
  const auto text = loading.message->HtmlBody();
  const auto written = WriteBody(*loading.message, BodyFormat::kRtf, {}, [](auto) { return Result<void>(); });
  ::setrlimit(RLIMIT_AS, &before);
  ASSERT_FALSE(text);
  EXPECT_EQ(text.error().failure, Failure::kIo);
  EXPECT_FALSE(written);
  EXPECT_EQ(loading.message->facts().subject, "x");
}
#endif

// Where a stream is cut says nothing about what it decodes to, and a copy goes on as the original does.
TEST(TransferDecoder, DecodesTheSameHoweverItIsCut) {
  struct Row {
    TransferEncoding encoding;
    const char* encoded;
    const char* decoded;
  };
  for (const Row& row : {
           Row{TransferEncoding::kQuotedPrintable, "a=C3=BC=\r\nb =ZZ=3d\r\n", "aüb =ZZ=\r\n"},
           Row{TransferEncoding::kBase64, "SGVs bG8s\r\n*IHdvcmxk\r\nIQ==\r\n", "Hello, world!"},
           Row{TransferEncoding::kBase64, "SGVsbG8sIHdvcmx", "Hello, worl"},
           Row{TransferEncoding::kUuencode, "%2&5L;&\\ \r\n!(0  \r\n`\r\nend\r\n", "Hello!"},
           Row{TransferEncoding::kIdentity, "as it is", "as it is"},
       }) {
    const std::string_view encoded = row.encoded;
    for (std::size_t cut = 0; cut <= encoded.size(); ++cut) {
      TransferDecoder first(row.encoding);
      std::string out;
      first.Decode(encoded.substr(0, cut), out);
      TransferDecoder second(first);
      second.Decode(encoded.substr(cut), out);
      second.Finish(out);
      EXPECT_EQ(out, row.decoded) << "cut at " << cut;
    }
  }
}

}  // namespace
}  // namespace quillcast::mail_file
