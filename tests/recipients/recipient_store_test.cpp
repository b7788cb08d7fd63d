// What a group holds after each operation of the store.
#include "recipients/recipient_store.h"

#include "recipients/group_checks.h"
#include "recipients/group_count.h"
#include "recipients/store_fixture.h"

namespace quillcast::recipients {
namespace {

TEST_F(StoreTest, OpensByItsConnectionStringAlone) {
  const std::string text = ConnectionString(folder_);
  EXPECT_EQ(text, "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + folder_.string() +
                      "Group.mdb;Jet OLEDB:Database Password = kvtrmlqzhwn8274");
  EXPECT_TRUE(OpenByConnectionString(text));
  EXPECT_EQ(OpenByConnectionString(text + "x").error().failure, Failure::kNotPermitted);
  EXPECT_EQ(OpenByConnectionString("Data Source=Group.mdb").error().failure, Failure::kUsage);
  const auto odd = folder_ / "a;Jet OLEDB:b" / "";
  std::filesystem::create_directory(odd);
  std::filesystem::copy(folder_ / "Group.mdb", odd / "Group.mdb");
  EXPECT_TRUE(OpenByConnectionString(ConnectionString(odd)));
  EXPECT_EQ(RecipientStore(folder_ / "Other.mdb").ListGroupNames().error().failure, Failure::kNoInput);
  EXPECT_EQ(RecipientStore(NewFile("text.mdb", "not a database, but long enough to look at"))
                .ListGroupNames()
                .error()
                .failure,
            Failure::kBadData);
}

TEST_F(StoreTest, GroupsAreFoundWhateverTheirCase) {
  const auto readers = NewGroup("Readers 1");
  NewGroup("Authors");
  EXPECT_EQ(*store().ListGroupNames(), (std::vector<std::string>{"Readers 1", "Authors"}));
  EXPECT_EQ((*store().FindGroup("READERS 1  "))->id, readers);
  EXPECT_FALSE(*store().FindGroup("Readers"));
  EXPECT_EQ(store().FindGroup("Read'ers").error().failure, Failure::kUsage);
  EXPECT_FALSE(store().CreateGroupIfFree("a') --'"));
  EXPECT_TRUE(*store().RenameGroupIfFree("readers 1", "Readers 2"));
  EXPECT_EQ((*store().FindGroup("Readers 2"))->id, readers);
}

TEST_F(StoreTest, AddressesAreEqualAsPeopleSeeThem) {
  const auto group = NewGroup("A");
  const auto other = NewGroup("B");
  ASSERT_TRUE(*store().AddRecipientIfNew(group, Named("O'Neill \xC3\x84 <o@x.org>", "Shan", "100%_'")));
  EXPECT_FALSE(*store().AddRecipientIfNew(group, Named("o'neill \xC3\xA4 <O@X.ORG>  ")));
  EXPECT_TRUE(*store().AddRecipientIfNew(group, Named("o'neill a <o@x.org>")));
  EXPECT_TRUE(*store().AddRecipientIfNew(other, Named("O'Neill \xC3\x84 <o@x.org>")));
  const auto stored = store().FindRecipient(group, "O'NEILL \xC3\x84 <o@x.org>");
  ASSERT_TRUE(stored && *stored);
  EXPECT_EQ((*stored)->recipient, Named("O'Neill \xC3\x84 <o@x.org>", "Shan", "100%_'"));
}

TEST_F(StoreTest, WritesOnlyWhatPassesTheChecks) {
  const auto group = NewGroup("A");
  Add(group, "ada@example.org");
  Add(group, "bob@example.org");
  const auto id = (*store().FindRecipient(group, "ada@example.org"))->id;
  const GroupComplaint bad{"Invalid email address.", GroupControl::kAddress};
  const GroupComplaint twice{"A recipient with the email you specified already exists.", GroupControl::kAddress};
  auto open = store();
  EXPECT_EQ(*AddNewRecipient(open, group, Named("ada@example.o")), bad);
  EXPECT_EQ(*AddNewRecipient(open, group, Named("ADA@example.org")), twice);
  EXPECT_EQ(*AddNewRecipient(open, group, Named("eve@example.org")), std::nullopt);
  EXPECT_EQ(*ChangeRecipient(open, group, id, Named("Ada@example.org")), std::nullopt);
  EXPECT_EQ(*ChangeRecipient(open, group, id, Named("Bob@example.org")), twice);
  EXPECT_EQ(*ChangeRecipient(open, group, id, Named("")), bad);
  EXPECT_EQ(Addresses(group), "Ada@example.org bob@example.org eve@example.org ");
}

TEST_F(StoreTest, UpdatesAndDeletesOneRow) {
  const auto group = NewGroup("A");
  for (const char* address : {"a@x.org", "b@x.org", "c@x.org"}) Add(group, address);
  const auto b = (*store().FindRecipient(group, "b@x.org"))->id;
  ASSERT_TRUE(*store().UpdateRecipientIfNew(group, b, Named("b2@x.org", "B", "Oslo")));
  EXPECT_EQ((*store().FindRecipient(group, "b2@x.org"))->recipient, Named("b2@x.org", "B", "Oslo"));
  EXPECT_EQ(Addresses(group), "a@x.org b2@x.org c@x.org ");
  ASSERT_TRUE(store().DeleteRecipient((*store().FindRecipient(group, "a@x.org"))->id));
  ASSERT_TRUE(store().DeleteFoundRecipient(b));  // although the statement before the delete fails
  EXPECT_EQ(Addresses(group), "c@x.org ");
}

TEST_F(StoreTest, DeletingAGroupTakesItsRecipientsAlong) {
  const auto group = NewGroup("A");
  const auto other = NewGroup("B");
  Add(group, "a@x.org");
  Add(other, "a@x.org");
  EXPECT_EQ(*store().CountRecipients("a "), 1);
  ASSERT_TRUE(store().DeleteGroup("a"));
  EXPECT_EQ(Addresses(group), "");
  EXPECT_EQ(GroupCount(store(), "A"), 0);
  EXPECT_EQ(GroupCount(RecipientStore(folder_ / "none.mdb"), "A"), 0);
  EXPECT_EQ(*store().CountRecipients("B"), 1);
  EXPECT_EQ(store().DeleteGroup("A").error().failure, Failure::kUsage);
  EXPECT_NE(NewGroup("A"), group);  // a key is never used again
}

TEST_F(StoreTest, AGroupThatCannotBeDeletedWholeStays) {
  NewGroup("A");
  ASSERT_TRUE(OpenStore(store().file())->Execute("DROP TABLE [Emails]"));  // its second statement fails
  EXPECT_FALSE(store().DeleteGroup("A"));
  EXPECT_EQ(*store().ListGroupNames(), (std::vector<std::string>{"A"}));
}

TEST_F(StoreTest, ListsInTheOrderOfAddingUnlessSorted) {
  const auto group = NewGroup("A");
  for (const char* address : {"z@x.org", "a@x.org", "M@x.org"}) Add(group, address);
  for (const Reading reading : {Reading::kLive, Reading::kCopy}) {
    EXPECT_EQ(Addresses(group, "", reading), "z@x.org a@x.org M@x.org ");
    EXPECT_EQ(Addresses(group, "[G-Email]", reading), "a@x.org M@x.org z@x.org ");
    EXPECT_EQ(Addresses(group, "[G-City], G-Email DESC", reading), "z@x.org M@x.org a@x.org ");
    EXPECT_EQ(Addresses(group, "1; DELETE FROM [Emails]", reading), "failed");
  }
  const auto found = store().Find(group, kEmail, Comparison::kContains, "x.org");
  EXPECT_EQ(found->at(0).recipient.email(), "z@x.org");
  ASSERT_TRUE(store().SetSort(group, "[G-Email]"));
  EXPECT_EQ(store().RequireGroup("A")->sort_sql, "[G-Email]");
}

TEST_F(StoreTest, ACopiedListHoldsNobodyUp) {
  const auto group = NewGroup("A");
  Add(group, "a@x.org");
  auto cursor = store().ListRecipients(group, "", Reading::kCopy);
  ASSERT_TRUE(cursor);
  Recipient recipient;
  ASSERT_TRUE(*cursor->Next(recipient));
  Add(group, "b@x.org");
  EXPECT_EQ(cursor->size(), 1);
  EXPECT_FALSE(*cursor->Next(recipient));
  EXPECT_EQ(store().ListRecipients(NewGroup("Empty"), "", Reading::kCopy)->size(), 0);
  EXPECT_EQ(store().ListRecipients(group, "")->size(), std::nullopt) << "it may change";
  EXPECT_EQ(*store().CountRecipients("A"), 2);
}

TEST_F(StoreTest, AFileFromElsewhereRunsNothing) {
  NewGroup("A");
  for (const char* foreign : {"CREATE TRIGGER [t] AFTER INSERT ON [Emails] BEGIN DELETE FROM [Groups]; END",
                              "CREATE VIEW [v] AS SELECT * FROM [Emails]",
                              "DROP TABLE [Emails]; CREATE VIRTUAL TABLE [Emails] USING fts5([G-ID], [G-Email])"}) {
    const auto file = folder_ / "Foreign.mdb";
    std::filesystem::copy_file(store().file(), file, std::filesystem::copy_options::overwrite_existing);
    ASSERT_TRUE(OpenStore(file)->Execute(foreign));
    const auto refused = RecipientStore(file).ListGroupNames();
    ASSERT_FALSE(refused) << foreign;
    EXPECT_EQ(refused.error().failure, Failure::kBadData);
    EXPECT_NE(refused.error().remedy.InEnglish().find("move the file away"), std::string::npos);
  }
  // Put in behind the look at the schema, they are switched off all the same.
  auto open = OpenStore(store().file());
  ASSERT_TRUE(OpenStore(store().file())
                  ->Execute("CREATE TRIGGER [t] AFTER INSERT ON [Emails] BEGIN DELETE FROM [Groups]; END"));
  ASSERT_TRUE(open->Execute("INSERT INTO [Emails] ([G-ID], [G-Email]) VALUES (1, 'a@x.org')"));
  auto groups = open->Prepare("SELECT count(*) FROM [Groups]");
  ASSERT_TRUE(groups && groups->Step());
  EXPECT_EQ(groups->Int(0), 1);
  EXPECT_FALSE(open->Execute("PRAGMA writable_schema = ON; DELETE FROM sqlite_master"));
  // Nor may a table call what has effects beyond the file; any function that is not marked as harmless counts as such.
  const std::string call = "rtreedepth(x'0000')";
  ASSERT_TRUE(open->Execute(("SELECT " + call + "; CREATE TABLE [c] ([x] DEFAULT (" + call + "))").c_str()));
  EXPECT_FALSE(open->Execute("INSERT INTO [c] DEFAULT VALUES"));
}

TEST_F(StoreTest, WaitsNoLongerThanAsked) {
  const auto group = NewGroup("A");
  ASSERT_TRUE(OpenStore(store().file())
                  ->Execute("WITH RECURSIVE [n](x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM [n] WHERE x < 20000) "
                            "INSERT INTO [Emails] ([G-ID], [G-Email]) SELECT (SELECT [ID] FROM [Groups]), 'a@x.org' "
                            "FROM [n]"));
  platform::CancelToken cancel;
  const RecipientStore cancelled(store().file(), {.cancel = &cancel});
  auto copy = cancelled.ListRecipients(group, "", Reading::kCopy);
  ASSERT_TRUE(copy);
  cancel.Request();
  EXPECT_EQ(cancelled.CountRecipients("A").error().failure, Failure::kTryAgain);
  EXPECT_EQ(cancelled.ListRecipients(group, "", Reading::kCopy).error().failure, Failure::kTryAgain);
  Recipient recipient;
  EXPECT_TRUE(*copy->Next(recipient)) << "what was copied stays readable";

  auto other = OpenStore(store().file());
  ASSERT_TRUE(other->Execute("BEGIN EXCLUSIVE"));
  const auto begin = std::chrono::steady_clock::now();
  for (const platform::LockPatience& patience :
       {platform::LockPatience{.lock_wait = {}}, platform::LockPatience{.cancel = &cancel}}) {
    EXPECT_EQ(RecipientStore(store().file(), patience).ListGroupNames().error().failure, Failure::kTryAgain);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST_F(StoreTest, SearchesByOneField) {
  const auto group = NewGroup("A");
  ASSERT_TRUE(*store().AddRecipientIfNew(group, Named("ada@example.org", "Ada", "L'Aquila")));
  ASSERT_TRUE(*store().AddRecipientIfNew(group, Named("bob@EXAMPLE.net", "Bob", "100%")));
  struct Case {
    const char* label;
    Comparison comparison;
    const char* term;
    int found;  // -1: the statement fails
  };
  for (const Case& c : std::initializer_list<Case>{{"Email Address", Comparison::kContains, "example", 2},
                                                   {"Email Address", Comparison::kEquals, "ADA@example.org ", 1},
                                                   {"Email Address", Comparison::kEquals, "%", 0},
                                                   {"Email Address", Comparison::kStartsWith, "Bob", 1},
                                                   {"Email Address", Comparison::kEndsWith, ".ORG", 1},
                                                   {"Email Address", Comparison::kContains, "a_a@", 1},
                                                   {"City", Comparison::kContains, "'", 1},
                                                   {"City", Comparison::kContains, "%", 2},
                                                   {"City", Comparison::kEquals, "x' OR '1'='1", 0},
                                                   {"Address 1", Comparison::kContains, "%", -1},
                                                   {"Address 2", Comparison::kEquals, "", -1}}) {
    const auto found = store().Find(group, FieldOfLabel(c.label), c.comparison, c.term);
    EXPECT_EQ(found ? static_cast<int>(found->size()) : -1, c.found) << c.label << " " << c.term;
  }
}

TEST_F(StoreTest, ChecksGroupNamesInTheGivenOrder) {
  NewGroup("Readers");
  NewGroup("Authors");
  struct Case {
    const char* name;
    const char* message;  // nullptr: accepted
    bool is_rename;       // of "Readers"
  };
  constexpr const char* kTaken = "A Group with the name you specified already exists. Specify a different name.";
  constexpr const char* kKeys = "A group name holds only letters A to Z, digits, blanks and \"-\".";
  for (const Case& c : std::initializer_list<Case>{{"", "Please enter a name.", false},
                                                   {" ", "Group name cannot begin with space.", false},
                                                   {" a ", "Group name cannot begin with space.", false},
                                                   {"a ", "Group name cannot end with space.", false},
                                                   {"readers", kTaken, false},
                                                   {"Reader", nullptr, false},
                                                   {"a_b", kKeys, false},
                                                   {"\xC3\xA4", kKeys, true},
                                                   {"", "Please enter a name.", true},
                                                   {"Readers", "You didn't modify the group name.", true},
                                                   {"READERS", kTaken, true},
                                                   {" Readers", "Group name cannot begin with space.", true},
                                                   {"authors", kTaken, true},
                                                   {"Readers-2", nullptr, true}}) {
    const auto file = folder_ / "Case.mdb";
    std::filesystem::copy_file(store().file(), file, std::filesystem::copy_options::overwrite_existing);
    RecipientStore of_case(file);
    const auto complaint = c.is_rename ? GiveGroupName(of_case, "Readers", c.name) : MakeGroup(of_case, c.name);
    ASSERT_TRUE(complaint);
    EXPECT_EQ(*complaint ? (*complaint)->message : "accepted", c.message == nullptr ? "accepted" : c.message) << c.name;
    const auto names = *of_case.ListGroupNames();
    const bool is_written = std::find(names.begin(), names.end(), c.name) != names.end();
    EXPECT_EQ(is_written, c.message == nullptr || std::string_view(c.name) == "Readers") << c.name;
  }
  EXPECT_TRUE(IsGroupName("Az09 -"));
  for (const char* name : {"a'b", "a_b", "\xC3\xA4", "a\tb", "a.b"}) EXPECT_FALSE(IsGroupName(name)) << name;
}

}  // namespace
}  // namespace quillcast::recipients
