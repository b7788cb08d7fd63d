// What a prepared run answers, out of a real store and settings file, and that nothing changes under it. No server.
#include "run/prepared_run.h"

#include "account/shown_route.h"
#include "message/related_pictures.h"
#include "recipients/store_fixture.h"
#include "run/fake_sending.h"
#include "support/fake_clock.h"
#include "support/fake_keyring.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

class PreparedRunTest : public recipients::StoreTest {
 protected:
  PreparedRunTest() {
    folders_.data = folder_;
    folders_.temporary = folder_;
    folders_.settings = folder_ / "settings.db";
    Set("Name", "Ada");
    Set("Email", "ada@example.org");
    const auto group = NewGroup("Readers");
    EXPECT_TRUE(*store().AddRecipientIfNew(group, recipients::Named("Bob <bob@example.net>", "Bob")));
    EXPECT_TRUE(*store().AddRecipientIfNew(group, recipients::Named("cy@example.net", "")));
    Add(group, "nobody");
    letter_.subject = "For $*MergeFirstName*$";
    letter_.html = "<p>Dear $*MergeFirstName*$ $*MergeNick*$</p>";
  }

  void Set(const char* key, const char* value, const char* section = "Account") {
    EXPECT_TRUE(profile::SettingsStore(folders_.settings).Write(section, key, value));
  }
  RunPlace Place() { return {folders_, clock_, entropy_, cancel_, keyring_}; }
  PreparedRun Prepared() { return *Prepare(letter_, "readers", Place()); }
  // The message of the first recipient, who stands in it with his address.
  static std::string MessageOf(PreparedRun& prepared) {
    message::RenderedMessage rendered;
    std::string bytes;
    const auto recipient = prepared.RecipientWith("");
    if (!recipient || !prepared.Render(*recipient, "", rendered)) return "failed";
    for (auto piece = rendered.Next(); piece && !piece->empty(); piece = rendered.Next()) bytes += *piece;
    return bytes;
  }

  profile::Folders folders_;
  test::FakeClock clock_;
  test::CountingEntropy entropy_;
  platform::CancelToken cancel_;
  test::FakeKeyring keyring_;
  document::MessageDocument letter_;
};

TEST_F(PreparedRunTest, KnowsItsGroupWhateverIsThere) {
  EXPECT_EQ(Prepared().group().group.name, "Readers");
  EXPECT_EQ(Prepared().group().recipients, 3);
  auto nobody = *Prepare(letter_, "Nobody", Place());
  const auto facts = nobody.Facts();
  ASSERT_TRUE(facts);
  EXPECT_EQ(facts->group, "Nobody");
  EXPECT_FALSE(facts->group_is_there);
  EXPECT_FALSE(facts->account_filled_in) << "the server and the port were never saved";
  EXPECT_EQ(facts->groups, std::vector<std::string>{"Readers"});
  EXPECT_FALSE(Prepare(letter_, "Read'ers", Place())->Facts()->group_is_there);
}

TEST_F(PreparedRunTest, KeepsTheAccountThatItsFirstQuestionFound) {
  auto prepared = Prepared();
  Set("Email", "early@example.org");
  EXPECT_NE(MessageOf(prepared).find("From: Ada <early@example.org>"), std::string::npos);
  Set("Email", "late@example.org");
  EXPECT_NE(MessageOf(prepared).find("From: Ada <early@example.org>"), std::string::npos);
  EXPECT_EQ((**prepared.Account())[account::AccountKey::kEmail], "early@example.org");
  auto anew = Prepare(letter_, prepared.group(), Place());
  EXPECT_NE(MessageOf(anew).find("From: Ada <late@example.org>"), std::string::npos);
}

// Another program may change the account behind the last look of the window, or while none is possible.
TEST_F(PreparedRunTest, GoesNoOtherWayThanThePersonWasShown) {
  using account::ShownRoute;
  const profile::SettingsStore settings(folders_.settings);
  Set("Server", "mail.example.org");
  Told told;
  struct Case {
    const char *key, *value, *told;
    bool is_practice;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"Server", "mail.example.net", "another server by now, mail.example.net, port 25.", false},
           {"Security", "None", "another security by now, None.", true},
           {"Email", "other@example.org", "another sender by now, Ada <other@example.org>.", true}}) {
    ShownRoute shown(settings, ShownRoute::Server::kPractice, ShownRoute::Sender::kOfTheAccount);
    ShownRoute of_a_request(settings, ShownRoute::Server::kReal, ShownRoute::Sender::kItsOwn);
    Set(c.key, c.value);
    auto late = Prepared();
    late.GoOnlyOver(shown.route());
    const auto ended = late.Run({}, told);
    ASSERT_FALSE(ended) << c.key;
    EXPECT_EQ(ended.error().failure, Failure::kNotPermitted);
    EXPECT_NE(InOneLine(ended.error()).find(c.told), std::string::npos) << InOneLine(ended.error());
    EXPECT_TRUE(shown.TakeChange()) << c.key;
    EXPECT_FALSE(shown.TakeChange()) << "it is shown now";
    EXPECT_EQ(shown.is_practice(), c.is_practice) << c.key;
    EXPECT_EQ(of_a_request.TakeChange().has_value(), std::string_view(c.key) != "Email") << c.key;
  }
  ShownRoute shown(settings, ShownRoute::Server::kReal, ShownRoute::Sender::kOfTheAccount);
  Set("Server", "mail.example.org:no-port");
  auto broken = Prepared();
  broken.GoOnlyOver(shown.route());
  EXPECT_EQ(broken.Run({}, told).error().failure, Failure::kNotConfigured);
}

TEST_F(PreparedRunTest, AnswersForOneRecipient) {
  auto prepared = Prepared();
  EXPECT_EQ(prepared.View(1)->subject, "For Bob");
  EXPECT_EQ(prepared.View(2)->address, "cy@example.net");
  EXPECT_EQ(prepared.View(4).error().what, Say("The group has no recipient #{}.", 4));
  EXPECT_EQ(prepared.RecipientWith("BOB@example.net")->values[recipients::kFirstName], "Bob");
  EXPECT_EQ(prepared.RecipientWith("dan@example.net").error().failure, Failure::kUsage);
  EXPECT_EQ(prepared.EndsOf({1, 2}), "Bob <Bob <bob@example.net>> \xE2\x80\xA6 cy@example.net");
  EXPECT_EQ(prepared.EndsOf({2, 2}), "cy@example.net");
  cancel_.Request();
  EXPECT_EQ(prepared.View(1).error().failure, Failure::kTryAgain);
}

// What every look at a message shows is what its bytes hold.
TEST_F(PreparedRunTest, ShowsThePartsThatGoOut) {
  using document::Format;
  using message::Parts;
  struct Case {
    Format format;
    const char* encoding;  // of the message
    const char* text_part;
    Parts parts;
  };
  for (const Case& c :
       {Case{Format::kHtml, "MIME", "1", Parts::kBoth}, Case{Format::kHtml, "MIME", "0", Parts::kHtml},
        Case{Format::kHtml, "Plain", "1", Parts::kText}, Case{Format::kHtml, "Plain", "0", Parts::kText},
        Case{Format::kText, "MIME", "0", Parts::kText}, Case{Format::kText, "Plain", "1", Parts::kText}}) {
    SCOPED_TRACE(std::string(c.format == Format::kHtml ? "HTML " : "text ") + c.encoding + " " + c.text_part);
    letter_.format = c.format;
    Set("Encoding", c.encoding, "Advanced");
    Set("TextPart", c.text_part);
    auto prepared = Prepared();
    const bool has_html = c.parts != Parts::kText;
    const bool has_text = c.parts != Parts::kHtml;
    for (const auto& view : {prepared.View(1), prepared.ViewOfTags()}) {
      ASSERT_TRUE(view);
      EXPECT_EQ(view->parts, c.parts);
      EXPECT_EQ(!view->html.empty(), has_html);
      EXPECT_EQ(!view->text.empty(), has_text);
    }
    const std::string message = MessageOf(prepared);
    EXPECT_EQ(message.find("<p>Dear") != std::string::npos, has_html) << message;
    EXPECT_EQ(message.find("\r\nDear") != std::string::npos, has_text) << message;
    std::filesystem::remove(folders_.PreviewBody());
    ASSERT_TRUE(prepared.WritePreview());
    EXPECT_EQ(std::filesystem::exists(folders_.PreviewBody()), has_html);
  }
}

TEST_F(PreparedRunTest, FindsWhatThePersonMayNotHaveMeant) {
  letter_.html += "<a href='file:///home/$*MergeFirstName*$.pdf'>your list</a><a href='https://example.org/'>shop</a>";
  letter_.html += "[your street, postcode and town]";
  auto prepared = Prepared();
  const auto look = prepared.LookOver(PreparedRun::Server::kIsLeftAlone);
  ASSERT_TRUE(look);
  EXPECT_EQ(look->findings,
            (std::vector<Sentence>{
                Say("The link “{}” leads to “{}”, a file of this computer, which nobody else can open. Put it on a web "
                    "server, or attach it.",
                    "your list", "file:///home/$*MergeFirstName*$.pdf"),
                Say("“{}” stands in the letter still. Write your postal address there; many countries ask for it.",
                    "[your street, postcode and town]"),
                Say("Unknown tag {}: it goes out as it stands.", "$*MergeNick*$"),
                SayOf(2, "{} recipient has no value for {} (the first is {}).",
                      "{} recipients have no value for {} (the first is {}).", "$*MergeFirstName*$", "cy@example.net"),
                SayOf(1, "{} entry has no address that a message can be sent to.",
                      "{} entries have no address that a message can be sent to.")}));
  EXPECT_FALSE(look->size.empty());
  const auto composed = prepared.Compose({});
  ASSERT_TRUE(composed);
  EXPECT_EQ(composed->messages, 2);
  EXPECT_EQ(composed->unaddressed, 1);
  EXPECT_EQ(prepared.Compose(PartialRange{2, 2})->messages, 1);
}

TEST_F(PreparedRunTest, TakesAPictureFromElsewhereOnlyAfterTheAnswer) {
  std::filesystem::create_directory(folder_ / "page");
  const auto picture = NewFile("private.gif", "GIF89a\x01");
  letter_.html = "<img src='../private.gif'>";
  letter_.base_folder = folder_ / "page";
  for (const bool take : {true, false}) {
    auto prepared = Prepared();
    EXPECT_EQ(MessageOf(prepared).find("image/gif"), std::string::npos) << "nobody was asked";
    const auto asked = message::PicturesToAskFor(prepared.LookForPictures()->foreign);
    ASSERT_EQ(asked.size(), 1U);
    prepared.AnswerAboutPictures(asked, take);
    EXPECT_EQ(MessageOf(prepared).find("image/gif") != std::string::npos, take);
    EXPECT_TRUE(message::PicturesToAskFor(prepared.LookForPictures()->foreign).empty());
  }
}

// To nobody, and complete or not at all.
TEST_F(PreparedRunTest, ExportsTheMessageWithItsTags) {
  const test::TemporaryFolder outside;
  const auto file = outside / "letter.eml";
  const auto locked = outside.Write("locked.eml", "old");
  std::filesystem::permissions(locked, std::filesystem::perms::owner_read);
  for (const bool is_draft : {false, true}) {
    ASSERT_TRUE(Prepared().Export({file, is_draft}));
    const std::string message = test::ReadAll(file);
    for (const auto& [text, is_there] : {std::pair("\r\nTo:", false),
                                         {"From: Ada <ada@example.org>\r\n", true},
                                         {"Subject: For $*MergeFirstName*$\r\n", true},
                                         {"<p>Dear $*MergeFirstName*$ $*MergeNick*$</p>", true},
                                         {"X-Mailer: Tarnwick Quillcast Classic 1.0\r\n", true},
                                         {"X-Unsent: 1\r\n", is_draft}})
      EXPECT_EQ(message.find(text) != std::string::npos, is_there) << text;
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0600));
  }
  outside.Write("letter.eml", "old");
  const auto fails = [&](const std::filesystem::path& target, Failure failure) {
    const auto exported = Prepared().Export({target, false});
    EXPECT_TRUE(!exported && exported.error().failure == failure) << target;
  };
  fails(locked, Failure::kNotPermitted);
  fails(outside / "gone" / "letter.eml", Failure::kCannotCreate);
  fails(folders_.settings, Failure::kNotPermitted);
  const auto price = outside.Write("price.pdf", "12");
  const auto body = outside.Write("body.htm", "<p>old");
  letter_.attachments.Add(price.string());
  letter_.sources = {body};
  fails(outside / "." / "price.pdf", Failure::kNotPermitted);
  fails(outside / "." / "body.htm", Failure::kNotPermitted);
  outside.Write("p 1.gif", "GIF89a\x01");
  letter_.base_folder = outside.path();
  letter_.html += "<img src='./p%201.gif'>";
  for (const auto format : {document::Format::kHtml, document::Format::kText}) {
    letter_.format = format;
    fails(outside / "p 1.gif", Failure::kNotPermitted);
  }
  letter_.format = document::Format::kHtml;
  EXPECT_EQ(test::ReadAll(price) + test::ReadAll(body) + test::ReadAll(outside / "p 1.gif"), "12<p>oldGIF89a\x01");
  letter_.attachments.Add("/nowhere/price.pdf");
  fails(file, Failure::kNoInput);
  letter_.attachments = {};
  cancel_.Request();
  fails(file, Failure::kTryAgain);
  EXPECT_EQ(test::ReadAll(file), "old");
  EXPECT_EQ(test::ReadAll(locked), "old");
  EXPECT_EQ(CheckMessageExport({})->message, "Please specify a file.");
}

TEST_F(PreparedRunTest, SaysThatTheAccountDescribesNoMessage) {
  Set("Email", "nobody");
  auto prepared = Prepared();
  EXPECT_EQ(prepared.LookOver(PreparedRun::Server::kIsLeftAlone).error().failure, Failure::kNotConfigured);
  EXPECT_EQ(prepared.WritePreview().error().failure, Failure::kNotConfigured);
  EXPECT_TRUE(prepared.LookForPictures()) << "whoever sends is told";
  EXPECT_TRUE(prepared.View(1));
}

}  // namespace
}  // namespace quillcast::run
