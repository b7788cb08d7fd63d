// The document: its attachments, its body files, its format box.
#include "document/message_document.h"

#include <gtest/gtest.h>

#include "document/body_file.h"
#include "document/body_source.h"
#include "document/document_pictures.h"
#include "platform/file.h"
#include "support/scripted_prompts.h"
#include "support/temporary_folder.h"

namespace quillcast::document {
namespace {

using platform::Answer;
using Paths = std::vector<std::string>;

TEST(Attachments, TakeWhatAFileDialogReturns) {
  struct Case {
    std::string picked;
    Paths paths;
  };
  using namespace std::string_literals;
  for (const Case& c : std::initializer_list<Case>{
           {"", {}},
           {"/home/ada/a.pdf", {"/home/ada/a.pdf"}},
           {"/home/ada\0a.pdf\0b.pdf"s, {"/home/ada/a.pdf", "/home/ada/b.pdf"}},
           {"/\0a.pdf\0A.pdf"s, {"/a.pdf", "/A.pdf"}},
           {"/home/ada\0a.pdf\0a.pdf\0\0"s, {"/home/ada/a.pdf"}},
       }) {
    AttachmentList list;
    list.AddPicked(c.picked);
    EXPECT_EQ(list.paths(), c.paths);
    list.AddPicked(c.picked);
    EXPECT_EQ(list.paths(), c.paths) << "picked twice";
  }
}

TEST(Attachments, AreDeletedAfterTheChecksInTheirOrder) {
  AttachmentList list;
  test::ScriptedPrompts prompts;
  EXPECT_EQ(DeleteAttachment(list, "", prompts), AttachmentDeletion::kNothingToDelete);
  list.Add("/a");
  list.Add("/b");
  EXPECT_EQ(DeleteAttachment(list, "", prompts), AttachmentDeletion::kNothingShown);
  EXPECT_EQ(DeleteAttachment(list, "/a", prompts), AttachmentDeletion::kKept);
  prompts.answers = {Answer::kYes};
  EXPECT_EQ(DeleteAttachment(list, "/a", prompts), AttachmentDeletion::kDeleted);
  EXPECT_EQ(list.paths(), Paths{"/b"});
  EXPECT_EQ(prompts.shown,
            (std::vector<std::string>{"warn: There is no file to delete.", "warn: Please specify a file to delete.",
                                      "ask: Are you sure you want to delete '/a'?",
                                      "ask: Are you sure you want to delete '/a'?"}));
}

TEST(Attachments, AreCountedAndTheirSizesAdded) {
  const test::TemporaryFolder folder;
  AttachmentList list;
  list.Add(folder.Write("a.pdf", "12345").string());
  list.Add(folder.Write("b.pdf", "1234567").string());
  list.Add((folder / "gone.pdf").string());
  list.Add(folder.path().string());
  const AttachmentTotal total = TotalOf(list);
  EXPECT_EQ(total.files, 4);
  EXPECT_EQ(total.bytes, 12U);
  EXPECT_EQ(total.missing, 2);
}

TEST(Body, IsReadInTheEncodingThatItHas) {
  const test::TemporaryFolder folder;
  struct Case {
    const char* name;
    std::string bytes;
    const char* html;
  };
  using namespace std::string_literals;
  for (const Case& c : std::initializer_list<Case>{
           {"utf8.html", "<p>caf\xC3\xA9", "<p>caf\xC3\xA9"},
           {"bom.html", "\xEF\xBB\xBF<p>", "<p>"},
           {"windows.htm", "<p>caf\xE9 \x80", "<p>caf\xC3\xA9 \xE2\x82\xAC"},
           {"utf16le.html", "\xFF\xFE<\0p\0>\0\xE9\0\x3D\xD8\x00\xDE"s, "<p>\xC3\xA9\xF0\x9F\x98\x80"},
           {"utf16be.html", "\xFE\xFF\0<\0p\0>\0\xE9"s, "<p>\xC3\xA9"},
           {"koi8.html", "<meta charset=koi8-r>\xF0\xD2\xC9\xD7\xC5\xD4", "<meta charset=koi8-r>Привет"},
           {"xml.html", "<?xml version=\"1.0\" encoding=\"koi8-r\"?><p>\xF0",
            "<?xml version=\"1.0\" encoding=\"koi8-r\"?><p>П"},
           {"word.htm", "<meta http-equiv=Content-Type content='text/html; charset=windows-1251'>\xCF\xF0",
            "<meta http-equiv=Content-Type content='text/html; charset=windows-1251'>Пр"},
           {"utf8-for-all-that.html", "<meta charset=windows-1251>\xD0\x9F", "<meta charset=windows-1251>П"},
           {"latin.html", "<meta charset=iso-8859-1>\x80", "<meta charset=iso-8859-1>€"},
           {"sjis.html", "<meta charset=x-sjis>\x83\x65\x83\x58\x87\x40", "<meta charset=x-sjis>テス①"},
           {"jis.html", "<meta charset=iso-2022-jp>\x1B$B%F%9\x1B(B", "<meta charset=iso-2022-jp>テス"},
           {"gbk.html", "<meta charset=gb2312>\xD6\xD0\xE9\x46\x80", "<meta charset=gb2312>中镕€"},
           {"hebrew.html", "<meta charset=windows-1255>\xF9\xEC", "<meta charset=windows-1255>של"},
           {"euc-jp.html", "<meta charset=euc-jp>\xC6\xFC\xCB\xDC", "<meta charset=euc-jp>日本"},
           {"korean.html", "<meta charset=ks_c_5601-1987>\xC7\xD1\xB1\xB9\x8C\x63",
            "<meta charset=ks_c_5601-1987>한국똠"},
           {"big5.html", "<meta charset=x-x-big5>\xC1\x63\xC5\xE9", "<meta charset=x-x-big5>繁體"},
           {"turkish.html", "<meta charset=iso-8859-9>\xF0\xFE\xDD", "<meta charset=iso-8859-9>ğşİ"},
           {"visual.html", "<meta charset=iso-8859-8-i>\xF9\xEC\xE5\xED", "<meta charset=iso-8859-8-i>שלום"},
           {"thai.html", "<meta charset=tis-620>\xCA\xC7", "<meta charset=tis-620>สว"},
           // A byte of another program's in what is UTF-8, and a letter that is none of it.
           {"mixed.html", "<meta charset=utf-8>Gr\xC3\xBC\xC3\x9F\x65 \x96", "<meta charset=utf-8>Grüße –"},
           {"none.html", "<meta charset=utf-8>Gr\xFC\xDF\x65", "<meta charset=utf-8>Grüße"},
           // No set of a page.
           {"ebcdic.html", "<meta charset=ibm-037>\xE9", "<meta charset=ibm-037>é"},
           {"utf16-by-name.html", "<meta charset=utf-16>\xE9", "<meta charset=utf-16>é"},
           {"utf7.html", "<meta charset=utf-7>+ADw-\xE9", "<meta charset=utf-7>+ADw-é"},
           {"unknown.html", "<meta charset='../../x'>\xE9", "<meta charset='../../x'>é"},
           {"text.TXT", "a < b & c\r\nd\n", "a &lt; b &amp; c<br>\nd<br>\n"},
       }) {
    MessageDocument document;
    ASSERT_TRUE(LoadBody(document, folder.Write(c.name, c.bytes))) << c.name;
    EXPECT_EQ(document.html, c.html) << c.name;
    EXPECT_EQ(document.format, std::string(c.name) == "text.TXT" ? Format::kText : Format::kHtml) << c.name;
    EXPECT_EQ(document.base_folder, folder.path());
  }
  MessageDocument document;
  for (const auto& bad : {folder / "missing.html", folder.path(), std::filesystem::path("/dev/null")}) {
    const auto loaded = LoadBody(document, bad);
    ASSERT_FALSE(loaded) << bad;
    EXPECT_EQ(loaded.error().failure, Failure::kNoInput) << bad;
    EXPECT_NE(loaded.error().what.InEnglish().find(bad.string()), std::string::npos) << loaded.error().what.InEnglish();
  }
}

TEST(Body, IsNothingThatIsNoText) {
  const test::TemporaryFolder folder;
  struct Case {
    const char* name;
    std::string bytes;
    bool is_text;
  };
  using namespace std::string_literals;
  for (const Case& c : std::initializer_list<Case>{
           {"photo.jpg", "\xFF\xD8\xFF\xE0\0\x10JFIF\0\x01"s, false},
           {"letter.docx", "PK\x03\x04\x14\0\x06\0\x08"s, false},
           {"small.pdf", "%PDF-1.4\n1 0 obj\n<< /Type /Catalog >>\nendobj\n", false},
           {"letter.rtf", "{\\rtf1\\ansi Dear Ada}", false},
           {"noise.html", "\x8E\x05\x1C\xB4 q\x11\xF2\x99 Z\x02\xC8\x17", false},
           {"no-mark-utf16.html", "<\0p\0>\0"s, false},
           {"utf32.html", "\xFF\xFE\0\0<\0\0\0p\0\0\0"s, false},
           {"marked-binary.html",
            "\xEF\xBB\xBF"
            "a\0b"s,
            false},
           {"photo.txt", "\x89PNG\r\n\x1A\n\0\0\0\rIHDR"s, false},
           // Old character sets, and what old programs leave behind.
           {"empty.html", "", true},
           {"koi8.html", "<p>\xF0\xD2\xC9\xD7\xC5\xD4", true},
           {"shift-jis.html", "<p>\x82\xB1\x82\xF1\x81\x5C\x83\x7C", true},
           {"iso-2022-jp.html", "\x1B$B$3$s$K$A$O\x1B(B", true},
           {"iso-2022-kr.html", "\x1B$)C\x0E>H3g\x0F <p>a", true},
           {"greek-utf16.html", "\xFE\xFF\x03\xA9\x01\x01"s, true},
           {"dos.txt",
            "Dear Ada\x0B,\r\n\x0C"
            "bye\r\n\x1A",
            true},
           {"speaks-of-pdf.txt", "A file begins with %PDF-1.4 or {\\rtf1.", true},
       }) {
    const auto file = folder.Write(c.name, c.bytes);
    MessageDocument document;
    const auto loaded = LoadBody(document, file);
    EXPECT_EQ(static_cast<bool>(loaded), c.is_text) << c.name;
    if (loaded) continue;
    EXPECT_EQ(loaded.error().failure, Failure::kBadData) << c.name;
    EXPECT_EQ(loaded.error().what.InEnglish(), file.string() + " is neither HTML nor text.");
    EXPECT_EQ(document, MessageDocument()) << c.name;
  }
}

TEST(FormatBox, SpringsBackWhileTheEncodingIsPlain) {
  const test::TemporaryFolder folder;
  profile::SettingsStore settings(folder / "settings.db");
  test::ScriptedPrompts prompts;
  EXPECT_EQ(*PickFormat("HTML", settings, prompts), "HTML");
  ASSERT_TRUE(settings.Write("Advanced", "Encoding", "Plain"));
  EXPECT_EQ(*PickFormat("Text", settings, prompts), "Text");
  EXPECT_TRUE(prompts.shown.empty());
  EXPECT_EQ(*PickFormat("HTML", settings, prompts), "Text");
  EXPECT_EQ(prompts.shown, (std::vector<std::string>{"warn: You cannot send an HTML message using UUencoding.\r\n"
                                                     "First change the encoding format in the advanced window."}));
}

class FakeDocument final : public EditedDocument {
 public:
  std::filesystem::path name;
  std::vector<std::filesystem::path> saved;
  bool HasUnsavedChanges() const override { return true; }
  std::filesystem::path FileName() const override { return name; }
  Result<void> SaveTo(const std::filesystem::path& file) override {
    saved.push_back(file);
    return {};
  }
  platform::OwnFiles OwnFiles() const override { return {}; }
};

TEST(Document, IsNeverSavedOverThePreview) {
  FakeDocument document;
  test::ScriptedPrompts prompts;
  document.name = "/t/Preview.htm";
  ASSERT_TRUE(SaveDocument(document, "/t/Preview.htm", prompts));
  EXPECT_TRUE(document.saved.empty());
  document.name = "/t/letter.htm";
  ASSERT_TRUE(SaveDocument(document, "/t/Preview.htm", prompts));
  EXPECT_EQ(document.saved.size(), 1U);
  EXPECT_TRUE(prompts.shown.empty());
}

TEST(Document, IsSavedOverALockedFileOnlyWhereThePersonUnlocksIt) {
  const test::TemporaryFolder folder;
  FakeDocument document;
  document.name = folder.Write("letter.html", "x");
  std::filesystem::permissions(document.name, std::filesystem::perms::owner_read);
  test::ScriptedPrompts prompts;
  prompts.answers = {Answer::kNo, Answer::kYes};
  ASSERT_TRUE(SaveDocument(document, "/t/Preview.htm", prompts));
  EXPECT_EQ(prompts.shown,
            std::vector<std::string>{"ask: The output file is locked.\r\nWould you like to unlock it now?"});
  EXPECT_TRUE(document.saved.empty());
  ASSERT_TRUE(SaveDocument(document, "/t/Preview.htm", prompts));
  EXPECT_EQ(document.saved, std::vector{document.name});
  ASSERT_TRUE(SaveDocument(document, "/t/Preview.htm", prompts));
  EXPECT_EQ(prompts.shown.size(), 2U) << "it stays unlocked";
}

TEST(Document, ANewOneAsksForItsName) {
  FakeDocument document;
  test::ScriptedPrompts prompts;
  ASSERT_TRUE(SaveDocument(document, "/t/Preview.htm", prompts));
  EXPECT_EQ(prompts.shown, std::vector<std::string>{"save: Save"});
  EXPECT_TRUE(document.saved.empty()) << "nothing was picked";
  prompts.files = {"/d/new.html"};
  ASSERT_TRUE(SaveDocument(document, "/t/Preview.htm", prompts));
  EXPECT_EQ(document.saved, std::vector<std::filesystem::path>{"/d/new.html"});
}

TEST(BodyFile, GoesBackInTheEncodingItCameIn) {
  const test::TemporaryFolder folder;
  struct Case {
    BodyEncoding encoding;
    std::string bytes;   // as in the file
    std::string edited;  // with a Greek letter and an emoji at its end
    const char* name = "body.html";
  };
  using namespace std::string_literals;
  for (const Case& c : std::initializer_list<Case>{
           {BodyEncoding::kUtf8, "caf\xC3\xA9", "caf\xC3\xA9\xCE\xA9\xF0\x9F\x98\x80"},
           {BodyEncoding::kUtf8WithMark, "\xEF\xBB\xBFx", "\xEF\xBB\xBFx\xCE\xA9\xF0\x9F\x98\x80"},
           {BodyEncoding::kUtf16Little, "\xFF\xFEx\0"s, "\xFF\xFEx\0\xA9\x03\x3D\xD8\x00\xDE"s},
           {BodyEncoding::kUtf16Big, "\xFE\xFF\0x"s, "\xFE\xFF\0x\x03\xA9\xD8\x3D\xDE\x00"s},
           {BodyEncoding::kWindows1252, "caf\xE9", "caf\xE9&#937;&#128512;"},
           {BodyEncoding::kDeclared, "<meta charset=windows-1253>\xE1", "<meta charset=windows-1253>\xE1\xD9&#128512;"},
           {BodyEncoding::kDeclared, "<meta charset=shift_jis>\x83\x65",
            "<meta charset=shift_jis>\x83\x65\x83\xB6&#128512;"},
           {BodyEncoding::kWindows1252, "<meta charset=koi8-r> caf\xE9", "<meta charset=koi8-r> caf\xE9&#937;&#128512;",
            "notes.TXT"},
           {BodyEncoding::kUtf8, "<meta charset=iso-2022-jp> \x1B(B",
            "<meta charset=iso-2022-jp> \x1B(B\xCE\xA9\xF0\x9F\x98\x80", "notes.txt"},
       }) {
    const auto file = ReadBodyFile(folder.Write(c.name, c.bytes));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->encoding, c.encoding);
    EXPECT_EQ(file->bytes, c.bytes);
    EXPECT_EQ(EncodeBody(file->text, file->encoding), c.bytes);
    EXPECT_EQ(EncodeBody(file->text + "\xCE\xA9\xF0\x9F\x98\x80", file->encoding), c.edited);
  }
}

TEST(DocumentPictures, GoAlongWhereTheyWouldBeLost) {
  const test::TemporaryFolder folder;
  const auto import = folder / "ImportBody/";
  folder.Write("ImportBody/a b.png", "one");
  folder.Write("ImportBody/sub/a b.png", "two");
  folder.Write("mine.png", "mine");
  std::filesystem::create_directories(folder / "letters");
  const std::string html = "<img src='file://" + import.string() + "a%20b.png'><img src=\"" + import.string() +
                           "sub/a b.png\"><img src='../ImportBody/a%20b.png'><img src='../mine.png'><img src='" +
                           import.string() + "gone.png'><img src='" + folder.path().string() + "/ImportBodyX.png'>";
  PicturePlaces places;
  places.AllowFolder(import);
  places = places.WithOwnFolder(folder / "letters");
  TakenPictures taken;
  const auto saved =
      TakePicturesAlong(html, folder / "letters", import, places, folder / "letters" / "May 1.html", taken);
  ASSERT_TRUE(saved);
  EXPECT_EQ(*saved,
            "<img src='May%201_files/a%20b.png'><img src=\"May%201_files/a%20b%20%282%29.png\"><img "
            "src='May%201_files/a%20b.png'><img src='../mine.png'><img src='" +
                import.string() + "gone.png'><img src='" + folder.path().string() + "/ImportBodyX.png'>");
  EXPECT_EQ(*platform::ReadFile(folder / "letters/May 1_files/a b (2).png", 100), "two");
  EXPECT_FALSE(std::filesystem::exists(folder / "letters/May 1_files/mine.png"));
  TakenPictures june;
  const std::string moved =
      "<img src='a.png'><img src='../mine.png'><img src='" + folder.path().string() + "/mine.png'><img src='gone.png'>";
  folder.Write("letters/a.png", "a");
  EXPECT_EQ(*TakePicturesAlong(moved, folder / "letters", import, places, folder / "other" / "June.html", june),
            "<img src='June_files/a.png'><img src='file://" + folder.path().string() + "/mine.png'><img src='" +
                folder.path().string() + "/mine.png'><img src='gone.png'>");
  EXPECT_FALSE(std::filesystem::exists(folder / "other/June_files/mine.png")) << "it would go along from there";
  EXPECT_EQ(*platform::ReadFile(folder / "other/June_files/a.png", 100), "a");
  // A picture that is there under the same name stays; a copy outlives its original.
  folder.Write("letters/a.png", "b");
  for (const bool is_there : {true, false}) {
    EXPECT_EQ(*TakePicturesAlong("<img src='a.png'>", folder / "letters", import, places,
                                 folder / "other" / "June.html", june),
              "<img src='June_files/a%20%282%29.png'>");
    EXPECT_EQ(*platform::ReadFile(folder / "other/June_files/a.png", 100), "a");
    EXPECT_EQ(*platform::ReadFile(folder / "other/June_files/a (2).png", 100), "b");
    if (is_there) std::filesystem::remove(folder / "letters/a.png");
  }
  EXPECT_EQ(*TakePicturesAlong(moved, "", import, places, folder / "other" / "June.html", june), moved);
  const auto failed =
      TakePicturesAlong(html, folder / "letters", import, places, folder / "mine.png" / "x.html", taken);
  EXPECT_FALSE(failed) << "no folder can be made there";
}

TEST(PicturePlaces, HoldWhatReallyLiesThere) {
  const test::TemporaryFolder folder;
  namespace fs = std::filesystem;
  for (const char* file : {"page/a.png", "page/sub/b.png", "page2/c.png", "home/d.png", "home/e.png", "app/logo.png",
                           "data/Pictures/p.png", "data/Templates/t.png", "data/ImportBody/i.png", "data/other.png"}) {
    folder.Write(file, "x");
  }
  fs::create_symlink("../home/d.png", folder / "page/link.png");
  fs::create_directory_symlink("../home", folder / "page/home");
  fs::create_symlink("a.png", folder / "page/inner.png");
  fs::create_directory_symlink("page", folder / "alias");
  profile::Folders folders;
  folders.program = folder / "app";
  folders.data = folder / "data" / "";
  PicturePlaces places(folders);
  struct Case {
    const char* file;
    bool held;
  };
  for (const char* own : {"page", "alias"}) {
    const PicturePlaces of_document = places.WithOwnFolder(folder / own);
    for (const Case& c : std::initializer_list<Case>{
             Case{"page/a.png", true}, Case{"page/sub/b.png", true}, Case{"page/inner.png", true},
             Case{"page/sub/../a.png", true}, Case{"alias/a.png", true}, Case{"page2/c.png", false},
             Case{"page/../home/d.png", false}, Case{"page/link.png", false}, Case{"page/home/d.png", false},
             Case{"page/missing.png", false}, Case{"app/logo.png", true}, Case{"data/Pictures/p.png", true},
             Case{"data/Templates/t.png", true}, Case{"data/ImportBody/i.png", true}, Case{"data/other.png", false}}) {
      EXPECT_EQ(of_document.Hold(folder / c.file), c.held) << own << ' ' << c.file;
    }
  }
  EXPECT_FALSE(places.Hold(folder / "page/a.png"));
  EXPECT_FALSE(places.WithOwnFolder("/").Hold(folder / "page/a.png"));
  EXPECT_FALSE(places.WithOwnFolder("").Hold(folder / "page/a.png"));
  places.AllowFile(folder / "page/link.png");
  EXPECT_TRUE(places.Hold(folder / "home/d.png"));
  EXPECT_FALSE(places.Hold(folder / "home/e.png"));
  fs::remove(folder / "page/link.png");
  fs::create_symlink("../home/e.png", folder / "page/link.png");
  EXPECT_FALSE(places.Hold(folder / "page/link.png")) << "it leads elsewhere than when it was allowed";
  places.LeaveOut(folder / "home/e.png");
  EXPECT_TRUE(places.IsLeftOut(folder / "page/link.png"));
}

TEST(BodySource, IsCutAtTheTagsThatAreTags) {
  struct Case {
    const char *html, *head, *tail;
    bool has_body;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"<html><body>x</body></html>", "<html>", "</body></html>", true},
           {"<!-- <body> --><BODY a='>'>x</BODY >\n", "<!-- <body> -->", "</BODY >\n", true},
           {"<script>'<body>'</script><body>x", "<script>'<body>'</script>", "", true},
           {"<body>x</BODY>\n<!-- c --></html> <!-- d -->", "", "</BODY>\n<!-- c --></html> <!-- d -->", true},
           {"<body>a</body>b</body>\n", "", "</body>\n", true},
           {"<body>a</body></html>\n<p>the parser takes this in</p>", "", "", true},
           {"<body>a</body>b", "", "", true},
           {"<body>a</body></div>", "", "", true},
           {"<body>a<body>b</body>", "", "</body>", true},
           {"Dear reader<html><head></head><body>x</body></html>", "", "</body></html>", true},
           {"<html><head><title>T</title></head>\n<div>seen first</div><body>x</body>",
            "<html><head><title>T</title></head>\n", "</body>", true},
           {"<head><template><p>t</p></template><noscript><link></noscript><style>p{}</style> </head> <body>x",
            "<head><template><p>t</p></template><noscript><link></noscript><style>p{}</style> </head> ", "", true},
           {"<head><img><meta></head><body>x", "<head>", "", true},
           {"<head><meta><noscript><img></noscript><style>p{}</style></head><body>x", "<head><meta>", "", true},
           {"<head><template><noscript></template><meta></head><img><body>x",
            "<head><template><noscript></template><meta></head>", "", true},
           {"<!DOCTYPE html><p>x</body>", "<!DOCTYPE html>", "", false},
           {"", "", "", false},
       }) {
    const BodySource source = CutAtBody(c.html);
    EXPECT_EQ(source.head, c.head) << c.html;
    EXPECT_EQ(source.tail, c.tail) << c.html;
    EXPECT_EQ(source.has_body, c.has_body) << c.html;
  }
}

TEST(Document, OpeningOffersToSaveFirst) {
  FakeDocument document;
  document.name = "/d/current.html";
  test::ScriptedPrompts prompts;
  EXPECT_EQ(*PickDocumentToOpen(document, prompts), "") << "nothing picked";
  EXPECT_EQ(prompts.shown, std::vector<std::string>{"open: Open"}) << "asked about saving before a file was picked";
  prompts.files = {"/d/next.html"};
  prompts.answers = {Answer::kCancel, Answer::kNo, Answer::kYes};
  EXPECT_EQ(*PickDocumentToOpen(document, prompts), "");
  EXPECT_EQ(*PickDocumentToOpen(document, prompts), "/d/next.html");
  EXPECT_TRUE(document.saved.empty());
  EXPECT_EQ(*PickDocumentToOpen(document, prompts), "/d/next.html");
  EXPECT_EQ(document.saved, std::vector<std::filesystem::path>{"/d/current.html"});
}

}  // namespace
}  // namespace quillcast::document
