// What the group manager does with a large group, against plain SQLite.
//   bench_people SCHEMA FOLDER ROWS
#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <vector>

#include "platform/file.h"
#include "recipients/edit/capitalise_group.h"
#include "recipients/edit/duplicates.h"
#include "recipients/edit/move_recipients.h"
#include "recipients/edit/undo.h"
#include "recipients/group_checks.h"
#include "recipients/recipient_search.h"
#include "recipients/store_connection.h"

namespace quillcast {
namespace {

using namespace recipients;

double Now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

double Seconds(const std::function<void()>& work) {
  const double begin = Now();
  work();
  return Now() - begin;
}

double Median(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

long PeakMiB() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    long kib = 0;
    if (word == "VmHWM:" && status >> kib) return kib / 1024;
  }
  return -1;
}

void Require(bool is_right, const char* what) {
  if (is_right) return;
  fmt::print(stderr, "{} failed\n", what);
  std::exit(1);
}

// Names and towns as lists of customers have them; the last address alone holds "needle".
std::string FillSql(int rows) {
  return fmt::format(
      "WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM n WHERE x < {0}) INSERT INTO Emails ([G-ID], "
      "[G-Email], [G-FirstName], [G-LastName], [G-City]) SELECT 1, 'user' || (x * 2654435761 % 4294967296) || '.' || x "
      "|| CASE WHEN x = {0} THEN '@needle.org' ELSE '@example' || (x % 50) || '.org' END, 'First' || (x % 997), 'Last' "
      "|| (x % 7919), 'Town' || (x % 7) FROM n",
      rows);
}

// The peer: one connection, prepared statements, its own rules for text.
class Plain {
 public:
  explicit Plain(const std::string& file) {
    Require(sqlite3_open(file.c_str(), &database_) == SQLITE_OK, "opening the peer's file");
  }
  ~Plain() { sqlite3_close(database_); }
  Plain(const Plain&) = delete;
  Plain& operator=(const Plain&) = delete;

  // The rows of a statement; every column of each is read.
  std::int64_t Run(const std::string& sql, std::vector<std::int64_t>* keys = nullptr) {
    sqlite3_stmt* statement = nullptr;
    Require(sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK, sql.c_str());
    std::int64_t rows = 0;
    while (sqlite3_step(statement) == SQLITE_ROW) {
      for (int column = 0; column < sqlite3_column_count(statement); ++column) sqlite3_column_bytes(statement, column);
      if (keys != nullptr) keys->push_back(sqlite3_column_int64(statement, 0));
      ++rows;
    }
    Require(sqlite3_finalize(statement) == SQLITE_OK, sql.c_str());
    return rows;
  }

 private:
  sqlite3* database_ = nullptr;
};

void Tell(const char* what, double ours, double peer, const char* unit, double scale) {
  fmt::print("{:<34} quillcast {:8.2f} {}, sqlite {:8.2f} {}, ratio {:.2f}\n", what, ours * scale, unit, peer * scale,
             unit, ours / peer);
}

// Runs both in turn and tells the medians.
void Compare(const char* what, int rounds, const std::function<void(int)>& ours, const std::function<void(int)>& peer) {
  std::vector<double> our_times;
  std::vector<double> peer_times;
  for (int round = 0; round < rounds; ++round) {
    our_times.push_back(Seconds([&] { ours(round); }));
    peer_times.push_back(Seconds([&] { peer(round); }));
  }
  Tell(what, Median(our_times), Median(peer_times), "ms", 1e3);
}

void MeasureReading(const RecipientStore& store, Plain& plain, int rows) {
  std::vector<std::int64_t> keys;
  std::vector<std::int64_t> peer_keys;
  Compare(
      "open: the keys of the group", 5, [&](int) { keys = *store.ListKeys(store.RequireGroup("A")->id, ""); },
      [&](int) {
        peer_keys.clear();
        plain.Run("SELECT ID FROM Emails WHERE [G-ID] = 1 ORDER BY ID", &peer_keys);
      });
  Require(keys.size() == static_cast<std::size_t>(rows) && keys == peer_keys, "reading the keys");
  fmt::print("peak memory after that: {} MiB\n", PeakMiB());
  std::vector<std::int64_t> sorted;
  Compare(
      "open: the same, sorted by Last Name", 3, [&](int) { sorted = *store.ListKeys(1, "[G-LastName]"); },
      [&](int) {
        peer_keys.clear();
        plain.Run("SELECT ID FROM Emails WHERE [G-ID] = 1 ORDER BY [G-LastName], ID", &peer_keys);
      });
  Require(sorted == peer_keys, "sorting the keys");
  fmt::print("peak memory after that: {} MiB\n", PeakMiB());
  const auto place = [rows](int round) { return (round * 7919LL * 131) % (rows - 60); };
  Compare(
      "page: 50 rows at any place", 100,
      [&](int round) {
        Require(store.RowsOfKeys(std::span(keys).subspan(place(round), 50))->size() == 50, "reading a page");
      },
      [&](int round) {
        plain.Run(
            fmt::format("SELECT [G-FirstName], [G-LastName], [G-Email] FROM Emails WHERE [G-ID] = 1 ORDER BY ID "
                        "LIMIT 50 OFFSET {}",
                        place(round)));
      });
}

void MeasureSearch(const RecipientStore& store, Plain& plain) {
  struct Case {
    const char* what;
    std::size_t field;
    const char* term;
    const char* where;
  };
  for (const Case& c : std::initializer_list<Case>{
           {"find: Email contains, one found", kEmail, "needle", "[G-Email] LIKE '%needle%'"},
           {"find: Email contains, all found", kEmail, "user", "[G-Email] LIKE '%user%'"},
           {"find: all fields contain, one found", kAllFields, "needle",
            "([G-Email] LIKE '%needle%' OR [G-Title] LIKE '%needle%' OR [G-FirstName] LIKE '%needle%' OR [G-LastName] "
            "LIKE '%needle%' OR [G-Country] LIKE '%needle%' OR [G-State] LIKE '%needle%' OR [G-City] LIKE '%needle%' "
            "OR "
            "[G-Address1] LIKE '%needle%' OR [G-Address2] LIKE '%needle%' OR [G-ZIPCode] LIKE '%needle%' OR [G-Phone] "
            "LIKE '%needle%' OR [G-Fax] LIKE '%needle%' OR [G-Company] LIKE '%needle%' OR [G-JobTitle] LIKE '%needle%' "
            "OR [G-WebSite] LIKE '%needle%' OR [G-Add1] LIKE '%needle%' OR [G-Add2] LIKE '%needle%' OR [G-Add3] LIKE "
            "'%needle%')"}}) {
    double first = 0;
    std::int64_t found = 0;
    std::int64_t peer_found = 0;
    Compare(
        c.what, 3,
        [&](int) {
          const double begin = Now();
          found = 0;
          Require(bool(Search(store, {1, c.field, Comparison::kContains, c.term},
                              [&](std::int64_t key) {
                                if (++found == 50) first = Now() - begin;
                                return key != 0;
                              })),
                  c.what);
        },
        [&](int) { peer_found = plain.Run(fmt::format("SELECT ID FROM Emails WHERE [G-ID] = 1 AND {}", c.where)); });
    Require(found == peer_found, c.what);
    if (first > 0) fmt::print("  the first 50 rows after {:.2f} ms\n", first * 1e3);
  }
}

void MeasureOneRow(RecipientStore& store, Plain& plain) {
  std::vector<std::int64_t> added;
  Recipient recipient;
  const auto address = [](int round) { return fmt::format("new{}@example.org", round); };
  const auto is_there = [&](int round) {
    return fmt::format("SELECT ID FROM Emails WHERE [G-ID] = 1 AND [G-Email] = '{}'", address(round));
  };
  const auto written = [&](int round, const std::string& sql) {
    plain.Run("BEGIN IMMEDIATE");
    plain.Run(is_there(round));
    plain.Run(sql);
    plain.Run("COMMIT");
  };
  Compare(
      "add one", 100,
      [&](int round) {
        recipient.values[kEmail] = address(round);
        added.push_back(AddNewRecipient(store, 1, recipient)->row.id);
      },
      [&](int round) {
        written(round, fmt::format("INSERT INTO Emails ([G-ID], [G-Email]) VALUES (1, '{}')", address(round)));
      });
  Compare(
      "modify one", 100,
      [&](int round) {
        recipient.values[kEmail] = address(round);
        recipient.values[kFirstName] = "Ada";
        Require(!ChangeRecipient(store, 1, added[round], recipient)->complaint, "modifying");
      },
      [&](int round) {
        written(round, fmt::format("UPDATE Emails SET [G-FirstName] = 'Ada' WHERE ID = {}", added[round]));
      });
  Compare(
      "delete one, to be taken back", 100,
      [&](int round) { Require(*DeleteRecipients(store, "A", std::vector{added[round]}) == 1, "deleting"); },
      [&](int round) { written(round, fmt::format("DELETE FROM Emails WHERE ID = {}", added[round])); });
}

void MeasureWholeGroups(const RecipientStore& store) {
  const auto tell = [](const char* what, const std::function<void()>& work) {
    fmt::print("{:<34} quillcast {:8.2f} s\n", what, Seconds(work));
  };
  tell("duplicates", [&] { Require(bool(FindDuplicates(store, {}, [](const auto&) { return true; })), "duplicates"); });
  tell("capitals: what would change",
       [&] { Require(bool(PreviewCapitals(store, "A", [](const auto&) { return true; })), "capitals"); });
  tell("merge into another group",
       [&] { Require(bool(MergeGroups(store, std::vector<std::string>{"A"}, "B")), "merging"); });
  tell("take that back", [&] { Require(Undo(store)->left == 0, "undo"); });
  fmt::print("peak memory: {} MiB\n", PeakMiB());
}

int Measure(const char* schema_file, const std::filesystem::path& folder, int rows) {
  const auto schema = platform::ReadFile(schema_file, 1 << 20);
  Require(bool(schema), "reading the schema");
  Require(bool(CreateStoreFile(folder / "Group.mdb", *schema)), "making the store");
  RecipientStore store(folder / "Group.mdb");
  Require(*store.CreateGroupIfFree("A") && *store.CreateGroupIfFree("B"), "making the groups");
  Require(bool(OpenStore(store.file())->Execute(FillSql(rows).c_str())), "filling the store");
  std::string plain_schema = *schema;
  for (std::size_t at = 0; (at = plain_schema.find("QUILLCAST", at)) != std::string::npos;) {
    plain_schema.replace(at, 9, "NOCASE");
  }
  Plain plain((folder / "plain.db").string());
  for (std::size_t at = 0; at < plain_schema.size();) {
    const auto end = plain_schema.find(";\n", at);
    if (end == std::string::npos) break;
    plain.Run(plain_schema.substr(at, end - at + 1));
    at = end + 2;
  }
  plain.Run(FillSql(rows));
  fmt::print("{} recipients\n", rows);
  MeasureReading(store, plain, rows);
  MeasureSearch(store, plain);
  MeasureOneRow(store, plain);
  MeasureWholeGroups(store);
  return 0;
}

}  // namespace
}  // namespace quillcast

int main(int argc, char** argv) {
  if (argc != 4) return 64;
  return quillcast::Measure(argv[1], argv[2], std::atoi(argv[3]));
}
