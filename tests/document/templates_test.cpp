// Designs and what is filled into them, the person's own templates, the signature.
#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "document/designs.h"
#include "document/document_pictures.h"
#include "document/own_templates.h"
#include "document/signature.h"
#include "html/local_pictures.h"
#include "platform/file.h"
#include "profile/main_window_contents.h"
#include "support/scripted_prompts.h"
#include "support/temporary_folder.h"

namespace quillcast::document {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

constexpr std::string_view kPicture = "GIF89a\x01";
const DesignChoice kChoice = {"Travel", "Blue Bay", "www.bay.example", "leave@bay.example", "Leave"};

TEST(Designs, CheckWhatIsMissingInTheirOrder) {
  DesignChoice choice;
  for (const auto& [field, message, box, value] :
       std::initializer_list<std::tuple<std::string DesignChoice::*, const char*, DesignBox, const char*>>{
           {&DesignChoice::design, "Please select a template.", DesignBox::kList, "Legal"},
           {&DesignChoice::company, "Please enter your company name.", DesignBox::kCompany, "C"},
           {&DesignChoice::web_site, "Please enter your web site.", DesignBox::kWebSite, "w"},
           {&DesignChoice::unsubscribe_address, "Please enter unsubscribe email.", DesignBox::kAddress, "a"},
           {&DesignChoice::unsubscribe_subject, "Please enter unsubscribe subject.", DesignBox::kSubject, "s"},
       }) {
    EXPECT_EQ(CheckDesign(choice), (Complaint<DesignBox>{message, box}));
    choice.*field = value;
  }
  EXPECT_FALSE(CheckDesign(choice));
}

TEST(Designs, AreFilledOneReplacementAfterTheOther) {
  const std::string all =
      "Template5.jpg Template4.jpg TARNWICKCo tarnwickco www.tarnwickco.example unsubscribe@tarnwickco.example "
      "UnsubscribeNow";
  struct Case {
    const char* name;
    DesignChoice choice;
    const char* filled;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"each its own", kChoice,
            "/p/Template5.jpg Template4.jpg Blue Bay tarnwickco www.bay.example leave@bay.example Leave"},
           {"what comes later is replaced in what came before",
            {"Travel", "Of www.tarnwickco.example, UnsubscribeNow", "w", "UnsubscribeNow@x", "S"},
            "/p/Template5.jpg Template4.jpg Of w, S tarnwickco w S@x S"},
           {"and not the other way round",
            {"Travel", "Template5.jpg", "TARNWICKCo", "www.tarnwickco.example", "unsubscribe@tarnwickco.example"},
            "/p/Template5.jpg Template4.jpg Template5.jpg tarnwickco TARNWICKCo www.tarnwickco.example "
            "unsubscribe@tarnwickco.example"},
           {"as it stands",
            {"Travel", "<b>&\"$*MergeCity*$", "w", "a", "s"},
            "/p/Template5.jpg Template4.jpg <b>&\"$*MergeCity*$ tarnwickco w a s"},
       }) {
    EXPECT_EQ(FilledDesign(all, *FindDesign(c.choice.design), "/p", c.choice), c.filled) << c.name;
  }
  EXPECT_FALSE(FindDesign("travel"));
  const test::TemporaryFolder folder;
  const auto missing = LetterFrom(kChoice, folder.path());
  EXPECT_EQ(missing.error().failure, Failure::kNoInput);
  EXPECT_NE(Describe(missing.error()).find((folder.path() / "templates" / "Travel.html").string()), std::string::npos);
}

TEST(Designs, TellWhatReadsOtherwise) {
  struct Case {
    std::string DesignChoice::*field;
    const char* value;
    const char* told;  // null for nothing
  };
  for (const Case& c : std::initializer_list<Case>{
           {&DesignChoice::company, "Smith & Sons", nullptr},
           {&DesignChoice::company, "AT&T \"Q\" $*MergeCity*$", nullptr},
           {&DesignChoice::company, "<b>Big</b> &copy", "reads as \"Big ©\""},
           {&DesignChoice::company, "Smith & Daughters, Makers of Fine Clocks and Watches for Land and Sea since 1793",
            nullptr},
           {&DesignChoice::company,
            "<b>Smith and Daughters, Makers of Fine Clocks and Watches for Land and Sea since 1793</b>",
            "reads as \"Smith and Daughters, Makers of Fine Clocks and Watches for Land and Sea since 1793\""},
           {&DesignChoice::web_site, "HTTPS://bay.example/x", "Enter \"bay.example/x\""},
           {&DesignChoice::web_site, "bay.example x", "holds a blank"},
           {&DesignChoice::web_site, "ftp://bay.example", "no complete address"},
           {&DesignChoice::web_site, "//bay.example", "no complete address"},
           {&DesignChoice::web_site, "bay", "no complete address"},
           {&DesignChoice::unsubscribe_address, "mailto:leave@bay.example", "not one bare mail address"},
           {&DesignChoice::unsubscribe_address, "Ada <leave@bay.example>", "not one bare mail address"},
           {&DesignChoice::unsubscribe_address, "nowhere", "not one bare mail address"},
           {&DesignChoice::unsubscribe_subject, "No more, please", "Enter \"No%20more%2C%20please\""},
           {&DesignChoice::unsubscribe_subject, "100%", "Enter \"100%25\""},
           {&DesignChoice::unsubscribe_subject, "a&b#c\"d", "Enter \"a%26b%23c%22d\""},
           {&DesignChoice::unsubscribe_subject, "No%20more:$*MergeEmail*$", nullptr},
       }) {
    DesignChoice choice = kChoice;
    choice.*c.field = c.value;
    const auto notes = DesignNotes(choice, "/opt/quill cast");
    ASSERT_EQ(notes.size(), c.told == nullptr ? 0U : 1U) << c.value;
    if (c.told != nullptr) {
      EXPECT_NE(notes[0].InEnglish().find(c.told), std::string::npos) << notes[0].InEnglish();
    }
  }
  EXPECT_EQ(DesignNotes(kChoice, "/opt/#1").size(), 1U) << "a picture that no address reaches";
}

const std::string kCharset = "<meta charset=\"utf-8\">";  // where a letter named none

class Own : public testing::Test {
 protected:
  Own() { places_.AllowFolder(folder_.path()); }

  Result<void> Keep(const char* name, const std::string& html, IfThere if_there = IfThere::kFail) {
    return own_.Keep(name, {html, folder_.path(), places_}, if_there);
  }

  test::TemporaryFolder folder_;
  OwnTemplates own_{folder_.path() / "data" / "Templates"};
  PicturePlaces places_;
};

TEST_F(Own, AreKeptListedRenamedAndRemoved) {
  EXPECT_EQ(*own_.List(), Names{}) << "no folder yet";
  ASSERT_TRUE(Keep("Monthly", "one"));
  ASSERT_TRUE(Keep("Été 2027", "two"));
  EXPECT_EQ(Keep("Monthly", "three").error().failure, Failure::kNotPermitted);
  EXPECT_EQ(*own_.Read("Monthly"), kCharset + "one") << "never over another unless asked to";
  ASSERT_TRUE(Keep("Monthly", "three", IfThere::kReplace));
  EXPECT_EQ(own_.Rename("Monthly", "Été 2027", IfThere::kFail).error().failure, Failure::kNotPermitted);
  ASSERT_TRUE(own_.Rename("Monthly", "Weekly", IfThere::kFail));
  EXPECT_EQ(*own_.List(), (Names{"Weekly", "Été 2027"}));
  ASSERT_TRUE(own_.Rename("Weekly", "Été 2027", IfThere::kReplace));
  EXPECT_EQ(*own_.Read("Été 2027"), kCharset + "three");
  for (const auto& done : {own_.Remove("Weekly"), own_.Rename("Weekly", "x", IfThere::kFail)})
    EXPECT_EQ(done.error().failure, Failure::kNoInput);
  const auto mode = [](const fs::path& path) { return static_cast<unsigned>(fs::status(path).permissions()); };
  EXPECT_TRUE(platform::ReplaceFile(own_.folder() / "Broken.htm", std::string_view("a\0b", 3)));
  EXPECT_EQ(own_.Read("Broken").error().failure, Failure::kBadData) << "it became no text";
  ASSERT_TRUE(own_.Remove("Broken"));
  EXPECT_EQ(mode(own_.folder()), 0700U);
  EXPECT_EQ(mode(own_.folder() / "Été 2027.htm"), 0600U);
  ASSERT_TRUE(own_.Remove("Été 2027"));
  EXPECT_EQ(*own_.List(), Names{});
}

TEST_F(Own, NamesLeadNowhereElse) {
  ASSERT_TRUE(Keep("a", "x"));
  folder_.Write("secret.htm", "secret");
  fs::create_symlink(folder_.path() / "secret.htm", own_.folder() / "link.htm");
  EXPECT_EQ(*own_.List(), Names{"a"});
  EXPECT_EQ(own_.Read("link").error().failure, Failure::kNoInput);
  fs::create_directory(own_.folder() / "folder.htm");
  for (const auto& [name, told] : {std::pair{"link", "link.htm is a link"}, std::pair{"folder", "is a folder"}}) {
    for (const auto& failed : {Keep(name, "y"), Keep(name, "y", IfThere::kReplace), own_.Remove(name),
                               own_.Rename("a", name, IfThere::kFail), own_.Rename("a", name, IfThere::kReplace)}) {
      ASSERT_FALSE(failed) << name << ": is not written through";
      EXPECT_NE(Describe(failed.error()).find(told), std::string::npos) << Describe(failed.error());
    }
  }
  for (const auto& [name, told] :
       std::initializer_list<std::pair<const char*, const char*>>{{"", "enter a name"},
                                                                  {" ", "enter a name"},
                                                                  {"\u3000", "enter a name"},
                                                                  {"../../secret", "slashes"},
                                                                  {"/etc/x", "slashes"},
                                                                  {"a\\b", "slashes"},
                                                                  {".hidden", "no dot"},
                                                                  {" a", "no blank"},
                                                                  {"a ", "no blank"},
                                                                  {"a\u00A0", "no blank"},
                                                                  {"a\u200D", "no blank"},
                                                                  {"a\nb", "control"},
                                                                  {"a\x7F", "control"},
                                                                  {"\xFF", "UTF-8"},
                                                                  {"a\u202Eb", "not seen"},
                                                                  {"a\u2028b", "not seen"},
                                                                  {"a\u200Bb", "not seen"},
                                                                  {"travel", "design"},
                                                                  {"Legal", "design"}}) {
    const auto kept = Keep(name, "y");
    ASSERT_FALSE(kept) << name;
    EXPECT_EQ(kept.error().failure, Failure::kUsage) << name;
    EXPECT_NE(Describe(kept.error()).find(told), std::string::npos) << Describe(kept.error());
    EXPECT_EQ(own_.Read(name).error().failure, Failure::kUsage) << name;
    EXPECT_FALSE(own_.Rename("a", name, IfThere::kReplace)) << name;
  }
  for (const char* name : {"Été\u00A02027", "می\u200Cخواهم", "❤\uFE0F", "a  b"})
    EXPECT_FALSE(CheckTemplateName(name)) << name;
  EXPECT_TRUE(CheckTemplateName(std::string(101, 'a')));
  EXPECT_FALSE(CheckTemplateName(std::string(100, 'a')));
  EXPECT_EQ(*platform::ReadFile(folder_.path() / "secret.htm", 100), "secret");
}

TEST_F(Own, TakeTheirPicturesAlong) {
  const test::TemporaryFolder elsewhere;
  folder_.Write("my logo.png", kPicture);
  folder_.Write(".ssh/id_rsa", "a secret");
  const fs::path foreign = elsewhere.Write("foreign.png", kPicture);
  const std::string to_foreign = "file://" + foreign.string();
  const std::string web = R"(<img src="https://x.example/a.png">)";
  ASSERT_TRUE(Keep("Logo", "<img src='my%20logo.png'><img src='" + to_foreign + "'><img src=gone.png>" + web +
                               "<img src=.ssh/id_rsa>"));
  const std::string gone = FileAddress(folder_.path() / "gone.png");
  const std::string secret = "<img src=" + FileAddress(folder_.path() / ".ssh/id_rsa") + ">";
  const fs::path kept = own_.folder() / "Pictures" / "my logo.png";
  EXPECT_EQ(*own_.Read("Logo"), kCharset + "<img src='" + FileAddress(kept) + "'><img src='" + to_foreign +
                                    "'><img src=" + gone + ">" + web + secret);
  EXPECT_EQ(*platform::ReadFile(kept, 100), kPicture);
  EXPECT_FALSE(fs::exists(own_.folder() / "Pictures" / "id_rsa")) << "what is no picture";
  const fs::path file = elsewhere.path() / "out.html";
  profile::Folders folders;
  folders.data = folder_.path() / "data" / "";
  ASSERT_TRUE(own_.Export("Logo", folders, file));
  EXPECT_EQ(*platform::ReadFile(file, 10000), kCharset + "<img src='out_files/my%20logo.png'><img src='" + to_foreign +
                                                  "'><img src=" + gone + ">" + web + secret);
  EXPECT_EQ(*platform::ReadFile(elsewhere.path() / "out_files" / "my logo.png", 100), kPicture);
  ASSERT_TRUE(Keep("Plain", "x"));
  for (const char* name : {"Logo", "Plain"}) {
    const auto done = own_.Export(name, folders, elsewhere.path() / "none" / "out.html");
    ASSERT_FALSE(done) << name;
    EXPECT_EQ(done.error().failure, Failure::kCannotCreate);
    EXPECT_NE(Describe(done.error()).find((elsewhere.path() / "none:").string()), std::string::npos);
  }
  platform::CancelToken cancel;
  cancel.Request();
  EXPECT_EQ(own_.Keep("Stopped", {"<img src='my logo.png'>", folder_.path(), places_}, IfThere::kFail, &cancel)
                .error()
                .failure,
            Failure::kTryAgain);
  EXPECT_FALSE(own_.Has("Stopped"));
  ASSERT_TRUE(own_.Remove("Logo"));
  EXPECT_TRUE(fs::exists(kept)) << "letters that were begun from it name it";
}

TEST_F(Own, KeepAddressesThatLeadToNoFolderOfTheLetter) {
  folder_.Write("{{logo}}.gif", kPicture);
  const std::string kept =
      "<img src=\"{{image}}\"><img src=\"%%image%%\"><img src=\"%recipient.url%\"><img src=\"<%url%>\"><td "
      "background='mailbox:///C|/Users/ada/x?number=1&amp;part=2'><img src='smb://srv/share/x.png'><p "
      "style='x:url(imap://ada@srv:993/fetch%3EUID)'><img src='C:\\pics\\a.png'>";
  ASSERT_TRUE(Keep("T", kept + "<img src='gone.gif'><img src='{{logo}}.gif'>"));
  EXPECT_EQ(*own_.Read("T"), kCharset + kept + "<img src='file://" + folder_.path().string() +
                                 "/gone.gif'><img src='file://" + folder_.path().string() +
                                 "/data/Templates/Pictures/%7B%7Blogo%7D%7D.gif'>");
}

// Each with a picture of its own under one name.
TEST_F(Own, OfManyAtOnceEachKeepsItsPicture) {
  constexpr int kMany = 12;
  const auto picture = [](int number) { return std::string(kPicture) + std::to_string(number); };
  for (int i = 0; i < kMany; ++i) folder_.Write(std::to_string(i) + "/logo.png", picture(i));
  std::atomic<int> waiting = kMany;
  std::vector<std::thread> threads;
  threads.reserve(kMany);
  for (int i = 0; i < kMany; ++i) {
    threads.emplace_back([&, i] {
      for (--waiting; waiting > 0;) std::this_thread::yield();
      EXPECT_TRUE(own_.Keep("T" + std::to_string(i), {"<img src=logo.png>", folder_ / std::to_string(i), places_},
                            IfThere::kFail));
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int i = 0; i < kMany; ++i) {
    const auto shown = html::FindLocalPictures(*own_.Read("T" + std::to_string(i)));
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(platform::ReadFile(shown[0].path, 100).ValueOr(""), picture(i)) << shown[0].path;
  }
}

TEST(Signature, IsKeptAndNeverFilledInUnasked) {
  const test::TemporaryFolder folder;
  profile::SettingsStore settings(folder.path() / "settings.db");
  const auto in_new_document = [&] { return profile::SignatureOfNewDocument(settings).ValueOr("failed"); };
  EXPECT_EQ(LoadSignature(settings)->html,
            "<html><head><title></title><style>a:hover { color: red }</style></head><body link=\"#0000FF\" "
            "vlink=\"#0000FF\" alink=\"#0000FF\"><p>&nbsp;</p><hr><p><font face=\"Verdana\" size=\"2\">Information "
            "contained in this email is confidential information. If you received this message by mistake then please "
            "notify the sender immediately and delete all copies of the email and its associated files from your "
            "system.</font></p></body></html>");
  EXPECT_FALSE(LoadSignature(settings)->is_on);
  EXPECT_EQ(in_new_document(), std::nullopt);
  ASSERT_TRUE(settings.Write("Signature", "Status", "1"));
  EXPECT_EQ(in_new_document(), "") << "on, and none was saved: the built-in one is the dialog's alone";
  EXPECT_TRUE(LoadSignature(settings)->is_on);
  const std::string large = "<p>" + std::string(std::size_t{5} * 1024 * 1024, 'x');
  ASSERT_TRUE(SaveSignature({true, large}, settings));
  EXPECT_EQ(in_new_document(), large);
  ASSERT_TRUE(SaveSignature({false, "<p>Ada"}, settings));
  EXPECT_EQ(*settings.Read("Signature", "Status", ""), "0");
  EXPECT_EQ(in_new_document(), std::nullopt);
  test::ScriptedPrompts prompts;
  prompts.answers = {platform::Answer::kNo, platform::Answer::kYes};
  EXPECT_FALSE(*ResetSignature(settings, prompts));
  EXPECT_EQ(LoadSignature(settings)->html, "<p>Ada");
  EXPECT_TRUE(*ResetSignature(settings, prompts));
  EXPECT_EQ(LoadSignature(settings)->html, kBuiltInSignature);
  EXPECT_EQ(*settings.Read("Signature", "Status", "gone"), "gone");
  EXPECT_EQ(prompts.shown, Names(2,
                                 "ask: You are just about to wipe out your signature settings.\r\nAre you sure you "
                                 "want to proceed?"));
}

TEST(Signature, NotesTellWhatReadersMakeOfIt) {
  for (const auto& [html, told] : std::initializer_list<std::pair<std::string, const char*>>{
           {std::string(kBuiltInSignature), nullptr},
           {"", nullptr},
           {"Ada\nLove", "holds no HTML"},
           {"<p onclick=x>", "holds a script"},
           {"<a href=' JavaScript:x'>", "holds a script"},
           {"<SCRIPT>x</SCRIPT>", "holds a script"},
           {"<p>" + std::string(200'000, 'x'), "195.3 KiB of each message"},
       }) {
    const auto notes = SignatureNotes(html);
    ASSERT_EQ(notes.size(), told == nullptr ? 0U : 1U) << html.substr(0, 40);
    if (told != nullptr) {
      EXPECT_NE(notes[0].InEnglish().find(told), std::string::npos) << notes[0].InEnglish();
    }
  }
}

}  // namespace
}  // namespace quillcast::document
