// What a group holds after each operation of the store.
#include "recipients/recipient_store.h"

#include <random>

#include "recipients/grid_rows.h"
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
  EXPECT_FALSE(*store().FindGroup("Read'ers"));
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
  EXPECT_EQ(AddNewRecipient(open, group, Named("ada@example.o"))->complaint, bad);
  EXPECT_EQ(AddNewRecipient(open, group, Named("ADA@example.org"))->complaint, twice);
  EXPECT_EQ(AddNewRecipient(open, group, Named("eve@example.org", "Eve"))->row,
            (GridRow{.id = id + 2, .first_name = "Eve", .last_name = "", .email = "eve@example.org"}));
  EXPECT_EQ(ChangeRecipient(open, group, id, Named("Ada@example.org"))->row.email, "Ada@example.org");
  EXPECT_EQ(ChangeRecipient(open, group, id, Named("Bob@example.org"))->complaint, twice);
  EXPECT_EQ(ChangeRecipient(open, group, id, Named(""))->complaint, bad);
  EXPECT_EQ(Addresses(group), "Ada@example.org bob@example.org eve@example.org ");
  // Another program may have deleted the group, or the recipient, while a dialog was open.
  EXPECT_EQ(AddNewRecipient(open, group + 1, Named("a@x.org")).error().failure, Failure::kUsage);
  EXPECT_EQ(ChangeRecipient(open, group, id + 9, Named("a@x.org")).error().failure, Failure::kUsage);
  EXPECT_EQ(ChangeRecipient(open, NewGroup("Other"), id, Named("a@x.org")).error().failure, Failure::kUsage);
  EXPECT_EQ(GiveGroupName(open, "B", "C").error().failure, Failure::kUsage);
}

TEST_F(StoreTest, SaysWhenItsNumbersAreUsedUp) {
  const auto group = NewGroup("A");
  for (const char* done :
       {"INSERT INTO [Emails] ([ID], [G-ID]) VALUES (9223372036854775807, 0)", "DELETE FROM [Emails]"}) {
    EXPECT_TRUE(OpenStore(store().file())->Execute(done));
    const auto added = store().AddRecipientIfNew(group, Named("a@x.org"));
    EXPECT_EQ(added.error().failure, Failure::kBadData);
    EXPECT_EQ(added.error().what.InEnglish(),
              "No recipient can be added: the store has used the highest number that there is.");
  }
}

TEST_F(StoreTest, AGridReadsByKey) {
  const auto group = NewGroup("A");
  std::vector<std::int64_t> keys;
  for (const char* address : {"z@x.org", "a@x.org", "M@x.org"})
    keys.push_back(**store().AddRecipientIfNew(group, Named(address, address + 2)));
  EXPECT_EQ(*store().ListKeys(group, ""), keys);
  EXPECT_EQ(*store().ListKeys(group, "[G-Email]"), (std::vector{keys[1], keys[2], keys[0]}));
  EXPECT_EQ(store().ListKeys(group, "1").error().failure, Failure::kBadData);
  const auto rows = store().RowsOfKeys(std::vector{keys[2], keys[0], std::int64_t{77}});
  ASSERT_TRUE(rows);
  EXPECT_EQ(rows->at(0), (GridRow{keys[2], "x.org", "", "M@x.org"}));
  EXPECT_EQ(rows->at(1).email, "z@x.org");
  EXPECT_EQ(rows->at(2), GridRow{}) << "gone since the keys were read";
  EXPECT_EQ(store().RowsOfKeys(keys, group + 1)->front(), GridRow{}) << "of another group";
  EXPECT_EQ(*NextBeginningWith(store(), keys, 0, "a", group + 1), std::nullopt);
  EXPECT_EQ(*store().KeysOfAddresses(group, std::vector<std::string>{"m@X.org", "b@x.org"}),
            (std::vector<std::int64_t>{keys[2], 0}));
  // Read again, somebody is where they were, or at the nearest that is left.
  const std::vector<std::int64_t> before = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  struct Again {
    ListPlace place;
    std::vector<std::int64_t> now;
    ListPlace expected;
  };
  for (const Again& again : std::vector<Again>{{{4, 2, 3}, before, {4, 2, 3}},
                                               {{4, 2, 3}, {2, 3, 4, 5, 6, 7, 8}, {3, 1, 3}},
                                               {{4, 2, 3}, {1, 2, 3, 7, 8, 9}, {3, 1, 3}},
                                               {{4, 2, 3}, {3, 1, 2}, {0, 0, 3}},
                                               {{4, 2, 3}, {9, 5, 8, 7}, {1, 0, 3}},
                                               {{0, 5, 3}, {1, 2, 3, 4, 5, 7, 8, 9}, {0, 5, 3}},
                                               {{4, 2, 3}, {11, 12}, {0, 0, 3}},
                                               {{4, 2, 3}, {}, {0, 0, 3}}}) {
    EXPECT_EQ(PlaceAfterwards(before, again.place, again.now), again.expected) << again.now.size();
  }
  // Somebody types the beginning of a name or an address.
  EXPECT_EQ(*NextBeginningWith(store(), keys, 1, "Z@"), 0U);
  EXPECT_EQ(*NextBeginningWith(store(), keys, 1, "X.or"), 1U);
  EXPECT_EQ(*NextBeginningWith(store(), keys, 9, "m"), 2U);
  EXPECT_EQ(*NextBeginningWith(store(), keys, 0, "b"), std::nullopt);
  EXPECT_EQ(AsText(std::vector<GridRow>{{1, "A\tB", "C\nD", "e@x.org"}, {}}), "A B\tC D\te@x.org\n\t\t\n");
  // More keys than one statement takes.
  std::vector<std::int64_t> many(250, keys[0]);
  many[249] = keys[1];
  EXPECT_EQ(store().RowsOfKeys(many)->at(249).email, "a@x.org");
}

// A grid sorts by itself, the run and the export let the store do it: places in the list are the same.
TEST_F(StoreTest, AGridIsInTheOrderOfTheList) {
  const auto group = NewGroup("A");
  std::mt19937 random(17);
  const std::string letters("aAbB \xC3\x84\xA4\x01\xFF'", 11);
  auto database = OpenStore(store().file());
  ASSERT_TRUE(database);
  ASSERT_TRUE(database->Execute("BEGIN"));
  for (int row = 0; row < 400; ++row) {
    auto insert =
        database->Prepare("INSERT INTO [Emails] ([G-ID], [G-Email], [G-LastName], [G-City]) VALUES (?,?,?,?)");
    const std::string address = "n" + std::to_string(row) + "@x.org";
    std::string city(random() % 2 * 15 + random() % 4, 'x');
    for (char& c : city) c = city.size() > 4 ? 'k' : letters[random() % letters.size()];
    if (city.size() > 4) city.back() = letters[random() % letters.size()];
    const std::string last(random() % 3, letters[random() % letters.size()]);
    ASSERT_TRUE(insert->Bind(1, group) && insert->Bind(2, address));
    if (random() % 8 != 0) {  // else NULL, as an import of addresses leaves it
      ASSERT_TRUE(insert->Bind(3, last));
    }
    ASSERT_TRUE(insert->Bind(4, city) && insert->Run());
  }
  ASSERT_TRUE(database->Execute("COMMIT"));
  for (const char* sort : {"", "[G-City]", "[G-City] DESC, [G-LastName]", "[G-LastName], [G-City] DESC", "[ID] DESC",
                           "[G-LastName] DESC, [ID]"}) {
    std::string addresses;
    const auto keys = store().ListKeys(group, sort);
    ASSERT_TRUE(keys) << sort;
    const auto rows = store().RowsOfKeys(*keys);
    ASSERT_TRUE(rows);
    for (const GridRow& row : *rows) addresses += row.email + " ";
    EXPECT_EQ(addresses, Addresses(group, sort)) << sort;
  }
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
  Fill(group, 20000);
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

TEST_F(StoreTest, ChecksGroupNamesInTheGivenOrder) {
  NewGroup("Readers");
  NewGroup("Authors");
  struct Case {
    const char* name;
    const char* message;  // nullptr: accepted
    bool is_rename;       // of "Readers"
  };
  const std::string longest(255, 'x');
  const std::string too_long = longest + "_";
  constexpr const char* kTooLong = "A group name has at most 255 characters.";
  constexpr const char* kTaken = "A Group with the name you specified already exists. Specify a different name.";
  constexpr const char* kKeys = "A group name holds only letters A to Z, digits, blanks and \"-\".";
  for (const Case& c : std::initializer_list<Case>{
           Case{"", "Please enter a name.", false}, Case{" ", "Group name cannot begin with space.", false},
           Case{" a ", "Group name cannot begin with space.", false},
           Case{"a ", "Group name cannot end with space.", false}, Case{"readers", kTaken, false},
           Case{"Reader", nullptr, false}, Case{longest.c_str(), nullptr, false},
           Case{too_long.c_str(), kTooLong, false}, Case{too_long.c_str(), kTooLong, true}, Case{"a_b", kKeys, false},
           Case{"\xC3\xA4", kKeys, true}, Case{"", "Please enter a name.", true},
           Case{"Readers", "You didn't modify the group name.", true}, Case{"READERS", kTaken, true},
           Case{" Readers", "Group name cannot begin with space.", true}, Case{"authors", kTaken, true},
           Case{"Readers-2", nullptr, true}}) {
    const auto file = folder_ / "Case.mdb";
    std::filesystem::copy_file(store().file(), file, std::filesystem::copy_options::overwrite_existing);
    RecipientStore of_case(file);
    const auto complaint = c.is_rename ? GiveGroupName(of_case, "Readers", c.name) : MakeGroup(of_case, c.name);
    ASSERT_TRUE(complaint);
    const bool is_own = c.message == kTooLong || c.message == kKeys;  // which no box shows
    const std::string told = !*complaint ? "accepted"
                             : is_own    ? (*complaint)->reason.InEnglish()
                                         : (*complaint)->message;
    EXPECT_EQ(told, c.message == nullptr ? "accepted" : c.message) << c.name;
    const auto names = *of_case.ListGroupNames();
    const bool is_written = std::find(names.begin(), names.end(), c.name) != names.end();
    EXPECT_EQ(is_written, c.message == nullptr || std::string_view(c.name) == "Readers") << c.name;
  }
  EXPECT_TRUE(IsGroupName("Az09 -"));
  for (const char* name : {"a'b", "a_b", "\xC3\xA4", "a\tb", "a.b"}) EXPECT_FALSE(IsGroupName(name)) << name;
  EXPECT_EQ(OnlyGroupNameKeys("O'Neill\n\xC3\xA4 -2_"), "ONeill -2");
}

}  // namespace
}  // namespace quillcast::recipients
