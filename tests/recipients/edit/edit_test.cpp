// What the changes of many recipients leave in the store, and that each can be taken back.
#include "recipients/edit/edit.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <functional>
#include <utility>

#include "recipients/edit/capitalise_group.h"
#include "recipients/edit/duplicates.h"
#include "recipients/edit/move_recipients.h"
#include "recipients/edit/undo.h"
#include "recipients/group_checks.h"
#include "recipients/store_fixture.h"
#include "support/full_disk.h"
#include "support/read_only_disk.h"

namespace quillcast::recipients {
namespace {

class EditTest : public StoreTest {
 protected:
  EditTest() {
    for (const char* address : {"a1@x.org", "both@x.org", "a2@x.org"}) keys_.push_back(AddTo(a_, address));
    AddTo(b_, "b1@x.org");
    AddTo(b_, "BOTH@x.org");
  }
  std::int64_t AddTo(std::int64_t group, std::string_view address, std::string_view first_name = "ada") {
    return **store().AddRecipientIfNew(group, Named(address, first_name, "Oslo"));
  }
  // Everything that people put in, keys and order included.
  static std::string Dump(const std::filesystem::path& file) {
    std::string all;
    auto database = OpenStore(file);
    if (!database) return "cannot be opened: " + database.error().what.InEnglish();
    for (const char* sql : {"SELECT * FROM [Groups] ORDER BY [ID]", "SELECT * FROM [Emails] ORDER BY [ID]"}) {
      auto rows = database->Prepare(sql);
      while (*rows->Step()) {
        for (int column = 0; column < rows->ColumnCount(); ++column) all += std::string(rows->Text(column)) + "|";
        all += "\n";
      }
    }
    return all;
  }
  std::string Dump() const { return Dump(store().file()); }
  bool CreateGroupMeanwhile(std::size_t number) const {
    RecipientStore impatient(store().file(), {.lock_wait = {}});
    return impatient.CreateGroupIfFree(fmt::format("During {}", number)).ValueOr(false);
  }
  void Insert(std::int64_t group, const char* entry) {  // as a foreign program might, without looking
    ASSERT_TRUE(
        OpenStore(store().file())
            ->Execute(fmt::format("INSERT INTO [Emails] ([G-ID], [G-Email], [G-LastName]) VALUES ({}, '{}', 'x')",
                                  group, entry)
                          .c_str()));
  }

  std::int64_t a_ = NewGroup("A");
  std::int64_t b_ = NewGroup("B");
  std::vector<std::int64_t> keys_;
};

TEST_F(EditTest, MovesAndCopiesWhatIsNotThereYet) {
  auto moved = MoveRecipients(store(), "a", "b", keys_);
  ASSERT_TRUE(moved);
  EXPECT_EQ(std::pair(moved->done, moved->duplicates), std::pair(std::int64_t{2}, std::int64_t{1}));
  EXPECT_EQ(moved->duplicate_entries, (std::vector<std::string>{"both@x.org"}));
  EXPECT_EQ(Addresses(a_), "both@x.org ");
  EXPECT_EQ(Addresses(b_), "b1@x.org BOTH@x.org a1@x.org a2@x.org ");
  EXPECT_EQ((*store().FindRecipient(b_, "a1@x.org"))->recipient, Named("a1@x.org", "ada", "Oslo"));
  EXPECT_EQ(MoveRecipients(store(), "A", "B", keys_)->done, 0) << "they are gone from there";

  const auto b_keys = *store().ListKeys(b_, "");
  EXPECT_EQ(CopyRecipients(store(), "B", "A", b_keys)->done, 3);
  EXPECT_EQ(Addresses(a_), "both@x.org b1@x.org a1@x.org a2@x.org ");
  EXPECT_EQ(DeleteRecipients(store(), "B", b_keys, DeletedFrom::kSearchResults).ValueOr(-1), 4);
  EXPECT_EQ(DeleteRecipients(store(), "B", *store().ListKeys(a_, "")).ValueOr(-1), 0) << "not of this group";
  EXPECT_EQ(Addresses(b_), "");
}

// As the statements come to the store, in each connection of this test.
std::vector<std::string> g_statements;

int KeepStatement(unsigned, void*, void* statement, void*) {
  const std::string_view text = sqlite3_sql(static_cast<sqlite3_stmt*>(statement));
  if (text.starts_with("DELETE FROM [Emails]")) g_statements.emplace_back("deleted");
  return 0;
}

int TraceConnection(sqlite3* database, char**, const void*) {
  return sqlite3_trace_v2(database, SQLITE_TRACE_STMT, KeepStatement, nullptr);
}

TEST_F(EditTest, TheStatementThatFailsGoesBeforeADeletionFromTheResults) {
  const auto trace = reinterpret_cast<void (*)()>(TraceConnection);
  sqlite3_auto_extension(trace);
  OnPassedOver([](const Error&) { g_statements.emplace_back("failed"); });
  const std::span keys = keys_;
  for (const auto& [place, expected] :
       {std::pair(DeletedFrom::kSearchResults, std::vector<std::string>{"failed", "deleted"}),
        std::pair(DeletedFrom::kGroup, std::vector<std::string>{"deleted"})}) {
    g_statements.clear();
    EXPECT_EQ(*DeleteRecipients(store(), "A", keys.subspan(expected.size() - 1, 1), place), 1);
    EXPECT_EQ(g_statements, expected);
  }
  OnPassedOver({});
  sqlite3_cancel_auto_extension(trace);
}

TEST_F(EditTest, MergesWholeGroups) {
  const auto c = NewGroup("C");
  AddTo(c, "A2@x.org");
  AddTo(c, "c@x.org");
  const auto merged = MergeGroups(store(), std::vector<std::string>{"A", "C", "a"}, "B");
  ASSERT_TRUE(merged);
  EXPECT_EQ(std::pair(merged->done, merged->duplicates), std::pair(std::int64_t{3}, std::int64_t{2}));
  EXPECT_EQ(Addresses(b_), "b1@x.org BOTH@x.org a1@x.org a2@x.org c@x.org ");
  EXPECT_EQ(*store().ListGroupNames(), (std::vector<std::string>{"B"}));
  EXPECT_EQ(FindUndo(store())->value().group, "A, C") << "each once";
}

TEST_F(EditTest, RefusesWhatCannotBe) {
  const std::string before = Dump();
  for (const Result<MoveOutcome>& refused :
       {MoveRecipients(store(), "A", "a ", keys_), CopyRecipients(store(), "A", "Nobody", keys_),
        MoveRecipients(store(), "Nobody", "A", keys_), MergeGroups(store(), std::vector<std::string>{"C", "B"}, "B")}) {
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().failure, Failure::kUsage);
  }
  EXPECT_EQ(SortGroup(store(), "A", "[G-City], 1").error().failure, Failure::kBadData);
  EXPECT_EQ(DeleteWholeGroup(store(), "Nobody").error().failure, Failure::kUsage);
  EXPECT_EQ(Undo(store()).error().failure, Failure::kUsage);
  EXPECT_EQ(Dump(), before);
}

TEST_F(EditTest, ShowsWhatCapitalsWouldChange) {
  ASSERT_TRUE(*store().UpdateRecipientIfNew(a_, keys_[1], Named("both@x.org", "Ada")));
  std::vector<NameChange> changes;
  const auto keep = [&](const NameChange& change) {
    EXPECT_TRUE(CreateGroupMeanwhile(changes.size())) << "the store can be written meanwhile";
    return changes.push_back(change), true;
  };
  ASSERT_TRUE(PreviewCapitals(store(), "A", keep));
  EXPECT_EQ(changes, (std::vector<NameChange>{{keys_[0], "a1@x.org", kFirstName, "ada", "Ada"},
                                              {keys_[2], "a2@x.org", kFirstName, "ada", "Ada"}}));
  EXPECT_EQ(*CapitaliseGroup(store(), "A"), 2);
  EXPECT_EQ((*store().FindRecipient(a_, "a2@x.org"))->recipient, Named("a2@x.org", "Ada", "Oslo"));
  EXPECT_EQ((*store().FindRecipient(b_, "b1@x.org"))->recipient.values[kFirstName], "ada");
  EXPECT_EQ(*CapitaliseGroup(store(), "A"), 0);
  for (const char* sort : {"", "[G-City], [G-Email] DESC", "G-City asc,G-Email desc"}) {
    ASSERT_TRUE(SortGroup(store(), "A", sort));
    EXPECT_EQ(FindUndo(store())->value().kind, *sort == 0 ? EditKind::kCapitalise : EditKind::kSort)
        << "what changed nothing leaves the step before";
  }
  EXPECT_TRUE(Undo(store()));
  EXPECT_EQ(store().RequireGroup("A")->sort_sql, "") << "the second time nothing was set";
}

TEST(Questions, CountAsTheWindowsDo) {
  const EditStep step{.kind = EditKind::kMerge, .group = "A", .other_group = "B", .rows = 1'234};
  for (const Sentence& question :
       {MoveQuestion(1'234, "A", "B"), DeleteSeveralQuestion(1'234, "A"), CapitaliseQuestion(1'234, "A"),
        DeleteDuplicatesQuestion(1'234, "A"), UndoQuestion(step)})
    EXPECT_NE(question.InEnglish().find(" 1,234"), std::string::npos) << question.InEnglish();
}

TEST_F(EditTest, FindsDuplicatesByWhereAMessageGoes) {
  Insert(a_, "Ada <A1@x.org>");
  Insert(a_, "a2@x.org, work");
  Insert(a_, "no address");
  Insert(a_, "NO ADDRESS");
  Insert(a_, "aa1@x.org");
  const auto sets = [&](std::vector<std::string> groups) {
    std::string all;
    const auto done = FindDuplicates(store(), groups, [&](const DuplicateSet& set) {
      all += set.address + ":";
      for (const Holder& holder : set.holders) all += " " + holder.group + "/" + holder.entry;
      all += "\n";
      return true;
    });
    return done ? all : "failed";
  };
  EXPECT_EQ(sets({"A"}),
            "a1@x.org: A/a1@x.org A/Ada <A1@x.org>\n"
            "a2@x.org: A/a2@x.org A/a2@x.org, work\n"
            "no address: A/no address A/NO ADDRESS\n");
  EXPECT_EQ(sets({"B"}), "");
  EXPECT_EQ(sets({"B", "A"}), sets({}));
  EXPECT_NE(sets({}).find("both@x.org: A/both@x.org B/BOTH@x.org\n"), std::string::npos);
  EXPECT_EQ(sets({"Nobody"}), "failed");
  const auto holders = *GroupsOfAddress(store(), "a1@X.org");
  ASSERT_EQ(holders.size(), 2U);
  EXPECT_EQ(holders[1].entry, "Ada <A1@x.org>");
  EXPECT_EQ(GroupsOfAddress(store(), "both@x.org")->size(), 2U);
  EXPECT_EQ(GroupsOfAddress(store(), "1@x.org")->size(), 0U);

  const std::string before = Dump();
  EXPECT_EQ(*DeleteDuplicates(store(), "A"), 3);
  EXPECT_EQ(Addresses(a_), "a1@x.org both@x.org a2@x.org no address aa1@x.org ");
  ASSERT_TRUE(Undo(store()));
  EXPECT_EQ(Dump(), before);
}

TEST_F(EditTest, UndoBringsEverythingBackOnce) {
  Insert(b_, "b1@x.org");  // twice in one group
  Insert(b_, "B1@x.org");
  const auto b_keys = *store().ListKeys(b_, "");
  const std::vector<std::string> only_a = {"A"};
  const std::vector<std::pair<const char*, std::function<bool()>>> changes = {
      {"capitalise", [&] { return *CapitaliseGroup(store(), "B") == 4; }},
      {"sort", [&] { return bool(SortGroup(store(), "A", "[G-City] DESC")); }},
      {"move", [&] { return MoveRecipients(store(), "B", "A", b_keys)->done == 1; }},
      {"copy", [&] { return CopyRecipients(store(), "A", "B", keys_)->done == 2; }},
      {"merge", [&] { return MergeGroups(store(), only_a, "B")->duplicates == 1; }},
      {"delete", [&] { return DeleteRecipients(store(), "B", b_keys).ValueOr(0) == 4; }},
      {"one twin", [&] { return DeleteRecipients(store(), "B", std::span(b_keys).first(1)).ValueOr(0) == 1; }},
      {"group", [&] { return *DeleteWholeGroup(store(), "B") == 4; }}};
  for (const auto& [name, change] : changes) {
    const std::string before = Dump();
    ASSERT_TRUE(change()) << name;
    EXPECT_NE(Dump(), before) << name;
    const auto undone = Undo(store());
    ASSERT_TRUE(undone) << name;
    EXPECT_EQ(undone->left, 0) << name;
    EXPECT_EQ(Dump(), before) << name;
    EXPECT_FALSE(Undo(store())) << name;
  }
}

TEST_F(EditTest, UndoLeavesWhatOthersChangedSince) {
  ASSERT_TRUE(CapitaliseGroup(store(), "A"));
  ASSERT_TRUE(*store().UpdateRecipientIfNew(a_, keys_[0], Named("a1@x.org", "Eve")));
  auto undone = Undo(store());
  EXPECT_EQ(std::pair(undone->restored, undone->left), std::pair(std::int64_t{2}, std::int64_t{1}));
  EXPECT_EQ((*store().FindRecipient(a_, "a1@x.org"))->recipient.values[kFirstName], "Eve");

  ASSERT_TRUE(DeleteRecipients(store(), "A", keys_));
  AddTo(a_, "A2@x.org");  // the address is taken anew
  undone = Undo(store());
  EXPECT_EQ(std::pair(undone->restored, undone->left), std::pair(std::int64_t{2}, std::int64_t{1}));
  EXPECT_EQ(Addresses(a_), "a1@x.org both@x.org A2@x.org ");

  ASSERT_TRUE(DeleteRecipients(store(), "A", keys_));
  ASSERT_TRUE(OpenStore(store().file())->Execute("DELETE FROM [Groups] WHERE [GroupName] = 'A'"));
  EXPECT_EQ(Undo(store())->left, 2) << "their group is gone";

  ASSERT_TRUE(DeleteWholeGroup(store(), "B"));
  NewGroup("b");
  EXPECT_EQ(Undo(store()).error().failure, Failure::kUsage);
  auto open = store();
  ASSERT_FALSE(*GiveGroupName(open, "b", "C"));
  EXPECT_EQ(Undo(store())->restored, 2);
  EXPECT_EQ(*store().ListGroupNames(), (std::vector<std::string>{"B", "C"}));
}

TEST_F(EditTest, ForgettingLeavesNothingOfThoseDeleted) {
  ASSERT_TRUE(ForgetUndo(store()));
  ASSERT_TRUE(DeleteWholeGroup(store(), "A"));
  EXPECT_EQ(FindUndo(store())->value().group, "A");
  ASSERT_TRUE(ForgetUndo(store()));
  EXPECT_FALSE(*FindUndo(store()));
  auto left = OpenStore(store().file())->Prepare("SELECT count(*) FROM [UndoEmails]");
  ASSERT_TRUE(left && *left->Step());
  EXPECT_EQ(left->Int(0), 0);
}

TEST_F(EditTest, ACancelChangesNothing) {
  Fill(a_, 600);
  const std::string before = Dump();
  const auto keys = *store().ListKeys(a_, "");
  struct Case {
    std::int64_t total;
    std::int64_t stop;
    std::function<std::optional<Error>(const RecipientStore&, const OnProgress&)> change;
  };
  const auto move = [&](const RecipientStore& store, const OnProgress& see) {
    const auto moved = MoveRecipients(store, "A", "B", keys, see);
    return moved ? std::optional<Error>() : moved.error();
  };
  const auto erase = [](const RecipientStore& store, const OnProgress& see) {
    const auto gone = DeleteWholeGroup(store, "A", see);
    return gone ? std::optional<Error>() : gone.error();
  };
  for (const Case& stopped : {Case{603, 512, move}, Case{1206, 512, erase}, Case{1206, 1024, erase}}) {
    platform::CancelToken cancel;
    std::int64_t last = 0;
    const auto why =
        stopped.change(RecipientStore(store().file(), {.cancel = &cancel}), [&](std::int64_t done, std::int64_t total) {
          EXPECT_EQ(total, stopped.total);
          last = done;
          if (done == stopped.stop) cancel.Request();
        });
    ASSERT_TRUE(why) << stopped.total << ' ' << stopped.stop;
    EXPECT_EQ(why->failure, Failure::kTryAgain);
    EXPECT_GE(last, stopped.stop);
    EXPECT_EQ(Dump(), before);
  }
}

// A store that nobody may write, or that somebody else writes: nothing is done, and the failure says why.
TEST_F(EditTest, AStoreThatCannotBeWrittenStaysAsItIs) {
  const std::string before = Dump();
  auto other = OpenStore(store().file());
  ASSERT_TRUE(other->Execute("BEGIN IMMEDIATE"));
  const RecipientStore impatient(store().file(), {.lock_wait = {}});
  EXPECT_EQ(MoveRecipients(impatient, "A", "B", keys_).error().failure, Failure::kTryAgain);
  EXPECT_EQ(Undo(impatient).error().failure, Failure::kTryAgain);
  EXPECT_EQ(impatient.ListKeys(a_, "")->size(), 3U) << "reading goes on";
  ASSERT_TRUE(other->Execute("ROLLBACK"));
  EXPECT_EQ(Dump(), before);
  {
    const test::ReadOnlyDisk disk;
    auto open = store();
    EXPECT_EQ(open.ListKeys(a_, "[G-Email]")->size(), 3U);
    EXPECT_EQ(open.RowsOfKeys(keys_)->front().email, "a1@x.org");
    EXPECT_EQ(MoveRecipients(open, "A", "B", keys_).error().failure, Failure::kCannotCreate);
    EXPECT_EQ(AddNewRecipient(open, a_, Named("new@x.org")).error().failure, Failure::kCannotCreate);
    EXPECT_EQ(MakeGroup(open, "C").error().failure, Failure::kCannotCreate);
  }
  EXPECT_EQ(Dump(), before);
  ASSERT_TRUE(other->Execute("DROP TABLE [Emails]"));
  EXPECT_FALSE(MoveRecipients(store(), "A", "B", keys_));
  EXPECT_FALSE(DeleteWholeGroup(store(), "A"));
  EXPECT_EQ(*store().ListGroupNames(), (std::vector<std::string>{"A", "B"})) << "both tables or none";
}

// Every write of every change fails once: afterwards all of it is there or nothing, and another try succeeds.
TEST_F(EditTest, AFullDiskLeavesAllOrNothing) {
  Fill(a_, 60);
  const auto keys = *store().ListKeys(a_, "");
  const std::vector<std::string> only_a = {"A"};
  using Change = std::function<bool(RecipientStore&)>;
  const std::map<const char*, Change> changes = {
      {"capitalise", [](auto& store) { return bool(CapitaliseGroup(store, "A")); }},
      {"sort", [](auto& store) { return bool(SortGroup(store, "A", "[G-City]")); }},
      {"move", [&](auto& store) { return bool(MoveRecipients(store, "A", "B", keys)); }},
      {"copy", [&](auto& store) { return bool(CopyRecipients(store, "A", "B", keys)); }},
      {"merge", [&](auto& store) { return bool(MergeGroups(store, only_a, "B")); }},
      {"delete", [&](auto& store) { return bool(DeleteRecipients(store, "A", keys)); }},
      {"group", [](auto& store) { return bool(DeleteWholeGroup(store, "A")); }},
      {"undo", [](auto& store) { return bool(Undo(store)); }},
      {"add", [&](auto& store) { return bool(store.AddRecipientIfNew(a_, Named("new@x.org"))); }},
      {"modify", [&](auto& store) { return bool(store.UpdateRecipientIfNew(a_, keys[0], Named("new@x.org"))); }}};
  ASSERT_TRUE(DeleteRecipients(store(), "B", *store().ListKeys(b_, "")));
  const auto before = Dump();
  const auto file = folder_ / "Try.mdb";
  RecipientStore tried(file);
  const auto start = [&] {
    std::filesystem::remove(folder_ / "Try.mdb-journal");
    std::filesystem::copy_file(store().file(), file, std::filesystem::copy_options::overwrite_existing);
  };
  for (const auto& [name, change] : changes) {
    start();
    ASSERT_TRUE(change(tried));
    const std::string after = Dump(file);
    ASSERT_NE(after, before);
    for (const auto kind : {test::FullDisk::Kind::kFull, test::FullDisk::Kind::kBroken}) {
      int failures = 0;
      for (int good_writes = 0;; ++good_writes) {
        start();
        bool is_done = false;
        {
          const test::FullDisk disk(kind, good_writes);
          is_done = change(tried);
          if (!disk.has_failed()) break;
        }
        failures += is_done ? 0 : 1;
        ASSERT_EQ(Dump(file), is_done ? after : before) << name << " " << good_writes;
        ASSERT_TRUE(is_done || change(tried)) << name << " " << good_writes;
        ASSERT_EQ(Dump(file), after) << name << " " << good_writes;
      }
      EXPECT_GT(failures, 2) << name;
    }
  }
}

}  // namespace
}  // namespace quillcast::recipients
