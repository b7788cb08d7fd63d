// Messages made of inputs that were frozen and thawed are those made before, to the octet, whatever became of the files
// and the account meanwhile; and the frozen text is taken from nobody who did not write it.
#include "run/frozen/frozen_inputs.h"

#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <random>

#include "account/account_message.h"
#include "account/key_roles.h"
#include "message/message_template.h"
#include "platform/base64.h"
#include "platform/text.h"
#include "run/contents_in_memory.h"
#include "run/journal/sqlite_run_journal.h"
#include "run/what_changed.h"
#include "support/fake_clock.h"
#include "support/fake_rows.h"
#include "support/random_text.h"
#include "support/temporary_folder.h"

namespace quillcast::run {
namespace {

namespace fs = std::filesystem;
using account::AccountKey;
using account::AccountSettings;
using document::Format;
using document::MessageDocument;
using nlohmann::json;

constexpr std::string_view kGif = "GIF89a\x01";

// All that recipients, and whoever sends, come to see of a message.
struct Seen {
  std::string bytes, seven_bit, troubles;
  bool operator==(const Seen&) const = default;
};

class FrozenInputs : public testing::Test {
 protected:
  FrozenInputs() {
    Set(AccountKey::kName, "Ad\xC3\xA9le");
    Set(AccountKey::kEmail, "ada@example.org");
    Set(AccountKey::kServer, "mail.example.org");
    inputs_.body_format = "MIME";
    inputs_.group = "Readers";
    inputs_.recipients = 3;
    inputs_.document.subject = "For $*MergeFirstName*$";
    inputs_.document.base_folder = Path("letters");
    inputs_.document.picture_places.AllowFolder(Path("placed"));
    PutFiles();
    inputs_.document.picture_places.AllowFile(Path("home/allowed.gif"));
    inputs_.document.picture_places.LeaveOut(Path("home/left.gif"));
  }

  fs::path Path(const std::string& name) const { return files_ / name; }
  std::string Put(const std::string& name, std::string_view content) { return files_.Write(name, content).string(); }
  void Set(AccountKey key, const char* value) { inputs_.account.Set(key, value); }
  void Attach(const std::string& path) { EXPECT_TRUE(inputs_.document.attachments.Add(path)); }

  void PutFiles() {
    for (const char* name : {"letters/a.gif", "letters/sub/c d.gif", "placed/p.gif", "home/allowed.gif",
                             "home/foreign.gif", "home/left.gif"}) {
      Put(name, std::string(kGif) + name);
    }
    Put("letters/text.gif", "no picture");
    fs::create_directories(Path("letters/folder"));
    fs::remove(Path("letters/link.gif"));
    fs::create_symlink(Path("letters/a.gif"), Path("letters/link.gif"));
  }
  void ChangeFiles() {
    for (const auto& entry : fs::recursive_directory_iterator(files_.path())) {
      if (entry.is_regular_file()) std::ofstream(entry.path(), std::ios::binary) << "\x89PNG\r\n\x1A\nother";
    }
  }
  void DeleteFiles() {
    for (const auto& entry : fs::directory_iterator(files_.path())) fs::remove_all(entry.path());
  }

  Seen Look(const MessageDocument& document, const AccountSettings& account, std::string_view body_format,
            const message::FileSource& files) {
    test::CountingEntropy entropy;
    const auto options = account::MessageOptionsOf(account, body_format);
    if (!options) return {Describe(options.error()), "", ""};
    const message::MessageTemplate made(document, *options, scratch_.path(), clock_, entropy, files);
    Seen seen;
    if (const auto& trouble = made.trouble()) {
      seen.troubles = std::to_string(static_cast<int>(trouble->code)) + Describe(trouble->error) +
                      std::to_string(ExitCode(trouble->error.failure));
      return seen;
    }
    for (const auto& trouble : made.picture_troubles()) seen.troubles += message::Describe(trouble).InEnglish() + "\n";
    for (const auto& picture : made.foreign_pictures()) seen.troubles += message::Describe(picture).InEnglish() + "\n";
    for (const auto& picture : made.pictures()) seen.troubles += message::Describe(picture).InEnglish() + "\n";
    for (const char* name : {"Bob", "Zo\xC3\xAB \xE2\x82\xAC"}) {
      recipients::Recipient recipient;
      recipient.values[recipients::kFirstName] = name;
      message::RenderedMessage message;
      EXPECT_TRUE(made.Render(recipient, *smtp::Address::From("bob@example.net"), 7, message));
      seen.bytes += std::to_string(static_cast<int>(message.envelope.notify)) +
                    std::to_string(static_cast<int>(message.envelope.dsn_return)) + message.envelope.sender.text();
      for (auto bytes = message.Next(); bytes && !bytes->empty(); bytes = message.Next()) seen.bytes += *bytes;
      if (!message.UseSevenBit()) continue;
      for (auto bytes = message.Next(); bytes && !bytes->empty(); bytes = message.Next()) seen.seven_bit += *bytes;
    }
    return seen;
  }
  Seen LookNow() {
    return Look(inputs_.document, inputs_.account, inputs_.body_format, message::DocumentFiles(inputs_.document));
  }
  // By way of an account that is another one by now in all that it has.
  Seen LookAtThawed(const NewMailing& mailing) { return LookAtThawed(mailing, journal_); }
  Seen LookAtThawed(const NewMailing& mailing, RunJournal& journal) {
    const auto thawed = Thaw(mailing, journal);
    if (!thawed) return {Describe(thawed.error()), "", "failed"};
    AccountSettings now;
    for (const auto& row : account::AccountKeyRows()) now.Set(row.key, "other");
    return Look(thawed->inputs.document, account::WithMessageOf(now, thawed->inputs.account),
                thawed->inputs.body_format, thawed->files);
  }
  void ExpectTheSameEver() {
    const Seen before = LookNow();
    const auto mailing = Freeze(inputs_, journal_);
    ASSERT_TRUE(mailing) << Describe(mailing.error());
    ChangeFiles();
    const Seen changed = LookAtThawed(*mailing);
    EXPECT_EQ(changed.troubles, before.troubles);
    EXPECT_TRUE(changed == before) << "the files have changed";
    DeleteFiles();
    EXPECT_TRUE(LookAtThawed(*mailing) == before) << "the files are gone";
  }

  test::TemporaryFolder files_;
  test::TemporaryFolder scratch_;
  test::FakeClock clock_;
  test::ContentsInMemory journal_;
  MailingInputs inputs_;
};

TEST_F(FrozenInputs, MakeTheSameMessages) {
  struct Case {
    const char* name;
    std::string html;
    std::size_t pictures = 0;  // that go along
    std::function<void()> change = {};
  };
  const std::string latin = "letters \xE9/caf\xE9 \"1\".txt";  // no UTF-8
  const std::vector<Case> cases = {
      {"text", "x", 0,
       [&] {
         inputs_.document.format = Format::kText;
         inputs_.document.text = "Dear $*MergeFirstName*$,\n\n.dots and \xE2\x82\xAC\n";
         inputs_.document.priority = document::Priority::kHigh;
         inputs_.document.read_receipt = true;
       }},
      {"HTML", "<p>Dear <b>$*MergeFirstName*$</b>, caf\xC3\xA9 \xFF</p>", 0,
       [&] { inputs_.document.subject = "caf\xE9"; }},
      {"a text of its own", "<p>x</p>", 0, [&] { inputs_.document.text = std::string("my\0 text\r\n", 10); }},
      {"beside", "<img src=a.gif><img src='sub/c%20d.gif'><img src=a.gif><img src=link.gif>", 3},
      {"absolute", "<img src='ROOT/home/allowed.gif'><p style='background:url(ROOT/letters/a.gif)'>x</p>", 2},
      {"file:", "<img src='file://ROOT/letters/sub/c%20d.gif'><img src='ROOT/home/allowed.gif'>", 2},
      {"data:", "<img src='data:image/gif;base64,R0lGODlhAQ=='><img src='https://x.example/a.gif'>"},
      {"placed", "<img src='ROOT/placed/p.gif'><img src='../placed/p.gif'>", 1},
      {"no folder", "<img src='ROOT/placed/p.gif'>", 1, [&] { inputs_.document.base_folder.clear(); }},
      {"foreign", "<img src='../home/foreign.gif'><img src='ROOT/home/left.gif'><img src='$*MergeCity*$.gif'>"},
      {"none", "<img src=gone.gif><img src=folder><img src=/dev/null><img src=text.gif><img src=a.gif>", 1},
      {"files", "x", 0,
       [&] {
         Attach(Put(latin, "caf\xE9\r\n"));
         Attach(Put("x/same.txt", "one\r\n.two \r\n"));
         Attach(Put("y/same.txt", "a\nb"));
         Attach(Put("empty.pdf", ""));
         Attach(Put("new\nline \xC3\xA4;\".eml", "Subject: x\n\ncaf\xC3\xA9"));
         Attach(Put("a.gif", std::string(kGif) + "letters/a.gif"));
       }},
      {"files beside pictures", "<img src=a.gif>", 1, [&] { Attach(Path("letters/a.gif")); }},
      {"account", "<p>caf\xC3\xA9 and a line that is longer than forty columns \xE2\x82\xAC</p>", 0,
       [&] {
         Set(AccountKey::kToField, "First Name");
         Set(AccountKey::kBoundary, "1");
         Set(AccountKey::kCharSet, "Unicode (UTF-8)");
         Set(AccountKey::kAutoWrap, "1");
         Set(AccountKey::kWrap, "40");
         Set(AccountKey::kDsnNotify, "Notify me if message fails");
         Set(AccountKey::kDsnReturn, "Return the full message");
       }},
  };
  const MailingInputs plain = inputs_;
  for (const Case& c : cases) {
    for (const char* encoding : {"None", "Quoted Printable", "Base 64"}) {
      for (const auto& [format, text_part] : {std::pair{"MIME", "1"}, {"MIME", "0"}, {"Plain", "1"}}) {
        SCOPED_TRACE(std::string(c.name) + ", " + encoding + ", " + format + text_part);
        inputs_ = plain;
        PutFiles();
        for (const AccountKey key :
             {AccountKey::kEncoding, AccountKey::kAttachmentEncoding, AccountKey::kHeaderEncoding})
          Set(key, encoding);
        Set(AccountKey::kTextPart, text_part);
        inputs_.body_format = format;
        inputs_.document.html = platform::ReplaceAll(c.html, "ROOT", files_.path().string());
        if (c.change) c.change();
        const std::string bytes = LookNow().bytes;
        std::size_t pictures = 0;
        for (std::size_t at = 0; (at = bytes.find("Content-ID: ", at)) != std::string::npos; ++at) ++pictures;
        const bool takes = inputs_.document.format == Format::kHtml && inputs_.body_format == "MIME";
        EXPECT_EQ(pictures, takes ? 2 * c.pictures : 0);
        ExpectTheSameEver();
      }
    }
  }
}

TEST_F(FrozenInputs, KeepEachContentOnce) {
  std::mt19937 random(1);
  std::string large(20'000'000, '\0');
  for (char& octet : large) octet = static_cast<char>(random());
  const std::string attachment = Put("large.bin", large);
  inputs_.document.html = "<img src=a.gif><img src='sub/c d.gif'>";
  Put("letters/sub/c d.gif", std::string(kGif) + "letters/a.gif");
  Attach(attachment);
  Attach(Put("again/large.bin", large));
  ExpectTheSameEver();
  EXPECT_EQ(journal_.contents.size(), 2U);
  PutFiles();
  Put("large.bin", large);
  Put("again/large.bin", "changed");
  const auto mailing = Freeze(inputs_, journal_);
  ASSERT_TRUE(mailing);
  EXPECT_EQ(mailing->files.size(), 4U);
  EXPECT_EQ(mailing->subject, inputs_.document.subject);
  EXPECT_EQ(mailing->group, "Readers");
  inputs_.body_format = "Plain";
  EXPECT_EQ(Freeze(inputs_, journal_)->files.size(), 2U) << "pictures do not go along there";
}

TEST_F(FrozenInputs, ComeBackOutOfTheJournalsFile) {
  inputs_.document.html = "<img src=a.gif><img src='sub/c d.gif'><img src=gone.gif><img src='../home/left.gif'>";
  inputs_.document.subject = "caf\xE9 \xE2\x82\xAC";
  Attach(Put("letters \xE9/caf\xE9.bin", std::string(3'000'000, '\xE9')));
  Attach(Put("empty", ""));
  Attach(Path("letters/a.gif"));
  const Seen before = LookNow();
  const JournalPlace place{.file = scratch_ / "runs.db", .clock = &clock_};
  MailingId id = 0;
  {
    const auto journal = SqliteRunJournal::Open(place);
    ASSERT_TRUE(journal);
    const auto mailing = Freeze(inputs_, **journal);
    ASSERT_TRUE(mailing) << Describe(mailing.error());
    test::FakeRows rows({"bob@example.net"});
    const auto run = (*journal)->Begin(*mailing, rows, {}, {"history"});
    ASSERT_TRUE(run) << Describe(run.error());
    id = (*journal)->Find((*run)->id())->id;
  }
  DeleteFiles();
  const auto journal = SqliteRunJournal::Open(place);
  ASSERT_TRUE(journal);
  EXPECT_TRUE(LookAtThawed(*(*journal)->Inputs(id), **journal) == before);
}

// What cannot be read is to its recipients what it was; what the journal cannot do ends the run before it begins.
TEST_F(FrozenInputs, KeepTroubleAsItWas) {
  for (const char* format : {"MIME", "Plain"}) {
    for (const std::string& file : {Path("gone.pdf").string(), Path("letters/folder").string(),
                                    std::string("/dev/null"), std::string("/proc/self/mem")}) {
      SCOPED_TRACE(format + file);
      inputs_.body_format = format;
      inputs_.document.attachments = {};
      Attach(file);
      EXPECT_NE(LookNow().troubles, "");
      const Seen before = LookNow();
      const auto mailing = Freeze(inputs_, journal_);
      ASSERT_TRUE(mailing);
      Put("gone.pdf", "there now");
      EXPECT_EQ(LookAtThawed(*mailing).troubles, before.troubles);
      fs::remove(Path("gone.pdf"));
    }
  }
  inputs_.document.attachments = {};
  Attach(Path("letters/a.gif"));
  journal_.fails = Error{Failure::kIo, "The disk is full.", ""};
  EXPECT_EQ(Freeze(inputs_, journal_).error().what, Sentence("The disk is full."));
  journal_.fails.reset();
  Set(AccountKey::kEmail, "");
  EXPECT_EQ(Freeze(inputs_, journal_).error().failure, Failure::kNotConfigured);
}

TEST_F(FrozenInputs, HoldNoSecret) {
  const std::map<AccountKey, std::string> secrets = {{AccountKey::kPassword, "hunter2-\xE9\xFFsecret"},
                                                     {AccountKey::kPasswordCommand, "pass show mail/ada"},
                                                     {AccountKey::kUsername, "ada-signs-in"}};
  for (const auto& [key, secret] : secrets) inputs_.account.Set(key, secret);
  const auto mailing = Freeze(inputs_, journal_);
  ASSERT_TRUE(mailing);
  const auto thawed = Thaw(*mailing, journal_);
  ASSERT_TRUE(thawed);
  for (const auto& [key, secret] : secrets) {
    EXPECT_EQ(mailing->inputs.find(secret.substr(0, 7)), std::string::npos);
    EXPECT_EQ(mailing->inputs.find(platform::Base64(secret).substr(0, 8)), std::string::npos);
    EXPECT_EQ(mailing->inputs.find(account::RowOf(key).name), std::string::npos);
    EXPECT_EQ(thawed->inputs.account[key], "");
    EXPECT_EQ(account::WithMessageOf(inputs_.account, thawed->inputs.account)[key], secret);
  }
  EXPECT_EQ(thawed->inputs.account[AccountKey::kServer], "mail.example.org") << "so that a change can be told";
}

TEST_F(FrozenInputs, GoOutWithNoContentMissing) {
  inputs_.document.html = "<img src=a.gif>";
  Attach(Put("list.csv", "a;b"));
  const auto mailing = Freeze(inputs_, journal_);
  ASSERT_TRUE(mailing);
  for (const auto& file : mailing->files) {
    SCOPED_TRACE(file.name);
    const auto thawed = Thaw(*mailing, journal_);
    ASSERT_TRUE(thawed);
    const std::string content = journal_.contents.at(file.content);
    journal_.contents.erase(file.content);
    const auto missing = Thaw(*mailing, journal_);
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().failure, Failure::kNoInput);
    const char* name = file.name.ends_with("(picture 1)") ? "a.gif" : "list.csv";
    EXPECT_NE(Describe(missing.error()).find(name), std::string::npos) << Describe(missing.error());
    const Seen seen = Look(thawed->inputs.document, thawed->inputs.account, "MIME", thawed->files);
    EXPECT_EQ(seen.bytes, "") << "gone since: no message goes out without it";
    EXPECT_TRUE(seen.troubles.starts_with("11")) << seen.troubles;
    journal_.contents[file.content] = content;
  }
  NewMailing without = *mailing;
  without.files.pop_back();
  EXPECT_EQ(Thaw(without, journal_).error().failure, Failure::kBadData);
}

TEST_F(FrozenInputs, RefuseTextThatIsNotTheirs) {
  inputs_.document.html = "<img src=a.gif><img src=gone.gif><img src='ROOT/home/left.gif'>";
  inputs_.document.html = platform::ReplaceAll(inputs_.document.html, "ROOT", files_.path().string());
  inputs_.document.text = "text";
  inputs_.range = recipients::PartialRange{2, 3};
  Attach(Put("list.csv", "a;b"));
  Attach(Path("gone.pdf").string());
  const auto mailing = Freeze(inputs_, journal_);
  ASSERT_TRUE(mailing);
  ASSERT_EQ(Thaw(*mailing, journal_)->inputs.range->last, 3);
  NewMailing hostile = *mailing;
  const auto failure = [&](std::string text) {
    hostile.inputs = std::move(text);
    const auto thawed = Thaw(hostile, journal_);
    return thawed ? std::nullopt : std::optional(thawed.error().failure);
  };
  const json whole = json::parse(mailing->inputs);
  struct Case {
    const char* place;
    json value;
  };
  for (const Case& c : std::initializer_list<Case>{{"/version", 0},
                                                   {"/version", "1"},
                                                   {"/version", 18446744073709551615ULL},
                                                   {"/version", 1.5},
                                                   {"/document", json::array()},
                                                   {"/document/html", 5},
                                                   {"/document/subject", {{"base64", "x"}}},
                                                   {"/document/folder", nullptr},
                                                   {"/document/format", "PDF"},
                                                   {"/document/priority", 1},
                                                   {"/document/read_receipt", "no"},
                                                   {"/document/text", nullptr},
                                                   {"/account", "Name"},
                                                   {"/account/Email", true},
                                                   {"/account/CharSet", {{"base64", 5}}},
                                                   {"/body_format", {}},
                                                   {"/group", json::object()},
                                                   {"/recipients", -1},
                                                   {"/recipients", 1e300},
                                                   {"/first", 0},
                                                   {"/last", 1},
                                                   {"/last", -9223372036854775807LL},
                                                   {"/attachments", "list.csv"},
                                                   {"/attachments/0", 5},
                                                   {"/attachments/0/kept", "attachment 9"},
                                                   {"/attachments/0/kept", {}},
                                                   {"/attachments/0/file", 1},
                                                   {"/attachments/0/file", Path("gone.pdf").string()},
                                                   {"/attachments/1/trouble", "gone"},
                                                   {"/attachments/1/trouble/code", 12},
                                                   {"/attachments/1/trouble/exit_code", 1},
                                                   {"/attachments/1/trouble/what", 7},
                                                   {"/pictures", {{"a", "b"}}},
                                                   {"/pictures/0/type", "text/html"},
                                                   {"/pictures/0/type", "image/gif\r\nX-Injected: 1"},
                                                   {"/pictures/0/type", "image/"},
                                                   {"/pictures/1/body_code", 4},
                                                   {"/pictures/1/body_code", "1"},
                                                   {"/pictures/2/foreign", 1},
                                                   {"/pictures/2/left_out", 0}}) {
    json text = whole;
    ASSERT_TRUE(text.contains(json::json_pointer(c.place))) << c.place;
    text[json::json_pointer(c.place)] = c.value;
    EXPECT_EQ(failure(text.dump()), Failure::kBadData) << c.place << " " << c.value;
  }
  for (const auto& [key, value] : whole.items()) {
    json text = whole;
    text.erase(key);
    EXPECT_EQ(failure(text.dump()),
              key == "first" || key == "group_id" || key == "sources" ? std::nullopt : std::optional(Failure::kBadData))
        << key;
  }
  EXPECT_EQ(failure(platform::ReplaceAll(mailing->inputs, "\"version\":1", "\"version\":2")), Failure::kUnavailable);
  for (const std::string& text : {std::string(), std::string("null"), std::string("[]"), std::string(300'000, '['),
                                  std::string(8, '\0'), mailing->inputs + mailing->inputs, "\xFF" + mailing->inputs})
    EXPECT_EQ(failure(text), Failure::kBadData) << text.substr(0, 100);
  for (std::size_t end = 0; end < mailing->inputs.size(); ++end)
    EXPECT_EQ(failure(mailing->inputs.substr(0, end)), Failure::kBadData) << end;
  std::mt19937 random(1);
  const auto bytes = test::EveryByte();
  int readable = 0;
  for (int i = 0; i < 3000; ++i) {
    std::string text = mailing->inputs;
    for (std::size_t n = 1 + random() % 3; n > 0; --n)
      text.replace(random() % text.size(), random() % 3, test::RandomText(random, bytes, 2));
    const auto what = failure(text);
    EXPECT_TRUE(!what || *what == Failure::kBadData || *what == Failure::kUnavailable) << text;
    if (!what) LookAtThawed(hostile);
    readable += what ? 0 : 1;
  }
  EXPECT_GT(readable, 0);
}

TEST_F(FrozenInputs, TellWhatIsOtherNow) {
  inputs_.document.html = "<img src=a.gif><img src='../home/foreign.gif'>";
  Attach(Put("list.csv", "a;b"));
  Attach(Path("gone.pdf").string());
  // What can be read once alone is not looked at again, and each file is told of once.
  fs::create_symlink(Put("letter.html", "<p>Hi"), Path("link.html"));
  inputs_.document.sources = {Path("link.html"), Put("letter.txt", "Hi"), Path("letter.txt"), "/dev/null"};
  const auto mailing = Freeze(inputs_, journal_);
  ASSERT_TRUE(mailing);
  const auto thawed = Thaw(*mailing, journal_);
  ASSERT_TRUE(thawed);
  struct Case {
    const char* name;
    std::function<void(AccountSettings&)> change;
    std::optional<PresentGroup> group;
    std::vector<std::string> told;  // ROOT for the folder
  };
  const auto nothing = [](AccountSettings&) {};
  const PresentGroup same{3, ListChanges(), "readers"};
  const std::vector<Case> cases = {
      {"nothing", nothing, same, {}},
      {"letter",
       [&](auto&) {
         Put("letter.html", "<p>Ho");
         fs::remove(Path("letter.txt"));
       },
       same,
       {"Since then the letter's file ROOT/link.html has changed.",
        "Since then the letter's file ROOT/letter.txt has gone, or may no longer be read."}},
      {"files",
       [&](auto&) {
         Put("list.csv", "a;c");
         Put("gone.pdf", "there now");
         fs::remove(Path("letters/a.gif"));
         fs::remove(Path("home/foreign.gif"));
       },
       same,
       {"Since then the attachment ROOT/list.csv has changed.", "Since then the attachment ROOT/gone.pdf has changed.",
        "Since then the picture ROOT/letters/a.gif has gone, or may no longer be read."}},
      {"longer",
       [&](auto&) { Put("list.csv", "a;bc"); },
       same,
       {"Since then the attachment ROOT/list.csv has changed."}},
      {"other rows",
       nothing,
       PresentGroup{3, ListChanges{1, 2, 3}, "Readers"},
       {"Since then the group Readers has changed: 1 address was taken out or corrected, 2 addresses are new, 3 "
        "recipients have other fields. The run goes on to those who were in it when it began, with their addresses and "
        "fields of then."}},
      {"too many to compare, and more",
       nothing,
       PresentGroup{60000, {}, "Readers"},
       {"Since then the group Readers has changed: 60,000 are in it, not 3. The run goes on to those who were in it "
        "when it began."}},
      {"too many to compare",
       nothing,
       PresentGroup{3, {}, "Readers"},
       {"The group Readers has 3 recipients as before; so many are not compared one by one. The run goes on to those "
        "who were in it when it began, with their addresses and fields of then."}},
      {"no group",
       nothing,
       {},
       {"There is no group Readers any more. The run goes on to those who were in it when it began."}},
      {"another name",
       nothing,
       PresentGroup{3, ListChanges(), "Members"},
       {"The group Readers has the name Members by now."}},
      {"account",
       [](auto& account) {
         account.Set(AccountKey::kEmail, "new@example.org");
         account.Set(AccountKey::kCharSet, "Unicode (UTF-8)");
         account.Set(AccountKey::kWrap, "50");
         account.Set(AccountKey::kPort, "587");
         account.Set(AccountKey::kPassword, "other");
         account.Set(AccountKey::kUsername, "other");
       },
       same,
       {"Since then the account's address has changed to new@example.org. The letter still comes from ada@example.org.",
        "Since then these settings have changed: CharSet, Wrap.",
        "Since then the account's server has changed. The run goes on by way of mail.example.org, port 587."}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    PutFiles();
    Put("list.csv", "a;b");
    Put("letter.html", "<p>Hi");
    Put("letter.txt", "Hi");
    fs::remove(Path("gone.pdf"));
    AccountSettings account = inputs_.account;
    c.change(account);
    std::vector<std::string> told;
    for (const auto& line : WhatChanged(*thawed, {account, "MIME", c.group}))
      told.push_back(platform::ReplaceAll(line.InEnglish(), files_.path().string(), "ROOT"));
    std::vector<std::string> expected = c.told;
    if (!expected.empty()) expected.insert(expected.begin(), "The letter goes out as it was when the run began.");
    EXPECT_EQ(told, expected);
  }
}

TEST_F(FrozenInputs, SayThatALetterOfNoFileStays) {
  const auto mailing = Freeze(inputs_, journal_);
  ASSERT_TRUE(mailing);
  const auto thawed = Thaw(*mailing, journal_);
  ASSERT_TRUE(thawed);
  const auto told = WhatChanged(*thawed, {inputs_.account, "MIME", PresentGroup{3, ListChanges(), "Readers"}});
  ASSERT_EQ(told.size(), 1U);
  EXPECT_EQ(told.front().InEnglish(), "The letter goes out as it was when the run began.");
}

TEST(AMailingsGroup, IsKnownByItsNumberWhereThatWasKept) {
  struct Case {
    const char* name;
    std::int64_t kept_id;
    std::int64_t id;
    const char* group;
    bool is_to;
  };
  for (const Case& c : std::initializer_list<Case>{{"no number, its name", 0, 8, "readers", true},
                                                   {"no number, another name", 0, 7, "Members", false},
                                                   {"renamed", 7, 7, "Members", true},
                                                   {"a later one of its name", 7, 8, "Readers", false}}) {
    MailingInputs inputs;
    inputs.group = "Readers";
    inputs.group_id = c.kept_id;
    EXPECT_EQ(inputs.IsTo({c.id, c.group, ""}), c.is_to) << c.name;
  }
}

TEST(AListComparedWithItsGroup, IsToldByAddressesAndFieldsWhateverTheOrder) {
  struct Case {
    std::vector<std::string> then, now;  // the second letter stands for the other fields
    ListChanges changes;
  };
  for (const Case& c : std::initializer_list<Case>{{{}, {}, {}},
                                                   {{"a", "bx"}, {"bx", "a"}, {}},
                                                   {{"a", "b"}, {"b", "c"}, {1, 1, 0}},
                                                   {{"a", "b", "c"}, {"c"}, {2, 0, 0}},
                                                   {{"a"}, {"c", "b", "a"}, {0, 2, 0}},
                                                   {{"ax", "bx"}, {"ax", "by"}, {0, 0, 1}},
                                                   {{"ax", "ay", "az"}, {"az", "aw"}, {1, 0, 1}},
                                                   {{"a"}, {"A"}, {1, 1, 0}}}) {
    const auto row = [](const std::string& text) {
      recipients::Recipient recipient;
      recipient.values[recipients::kEmail] = text.substr(0, 1);
      recipient.values[recipients::kFirstName] = text.substr(1);
      return recipient;
    };
    ListComparison lists;
    for (const auto& text : c.then) lists.AddThen(row(text));
    for (const auto& text : c.now) lists.AddNow(row(text));
    EXPECT_EQ(lists.Compare(), c.changes) << ::testing::PrintToString(c.then) << ::testing::PrintToString(c.now);
  }
}

}  // namespace
}  // namespace quillcast::run
