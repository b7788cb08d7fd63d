// A thin typed layer over SQLite: a connection, a prepared statement, a transaction that rolls back unless committed.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/cancel.h"
#include "platform/result.h"

struct sqlite3;
struct sqlite3_stmt;
struct sqlite3_value;

namespace quillcast::platform {

// What unique_ptr calls. A connection that still has statements closes with the last of them.
struct CloseDatabase {
  void operator()(sqlite3* database) const;
};
struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const;
};

// One prepared statement. Parameters and columns are counted from 1 and from 0, as SQLite does.
class Statement {
 public:
  explicit Statement(sqlite3_stmt* statement) : statement_(statement) {}

  // What is bound stays so over Reset. Fails for a parameter that the statement has not.
  Result<void> Bind(int parameter, std::string_view text);      // the text is copied
  Result<void> BindView(int parameter, std::string_view text);  // not copied: it must outlive the next Step
  Result<void> Bind(int parameter, std::int64_t number);
  Result<void> BindBytes(int parameter, std::string_view bytes);  // as a blob; not copied either

  // True when a row is there to be read, false at the end.
  Result<bool> Step();
  // Steps to the end; for statements that give no rows.
  Result<void> Run();
  void Reset();

  // Known before the first Step. A name is what the query calls the column.
  int ColumnCount() const;
  std::string_view ColumnName(int column) const;
  std::string_view Text(int column) const;   // valid until the next Step or Reset; NULL reads as empty
  std::string_view Bytes(int column) const;  // of a blob, as it stands there; valid as long as a text
  // What Text would give no octet of; asked for less than that costs.
  bool IsEmpty(int column) const;
  // 0 for NULL and for text that is no number.
  std::int64_t Int(int column) const;
  bool IsNull(int column) const;

 private:
  std::unique_ptr<sqlite3_stmt, FinalizeStatement> statement_;
};

// kReadWrite makes no file; kCreate makes one (0600), and takes others' permissions from one that is there.
enum class OpenMode { kReadOnly, kReadWrite, kCreate };

// How long a statement may take.
struct LockPatience {
  std::chrono::milliseconds lock_wait = std::chrono::seconds(10);  // for another process or connection
  const CancelToken* cancel = nullptr;  // its first request ends every wait and statement; outlives the connection
  bool cancel_ends_statements = true;   // false: the waits for locks alone, for work that is to be rounded off
};

// What a statement gives a function of ours, read without a copy; counted from 0.
class FunctionValues {
 public:
  FunctionValues(int count, sqlite3_value** values) : count_(count), values_(values) {}
  int Count() const { return count_; }
  bool IsEmpty(int value) const;           // as Text would be
  std::string_view Text(int value) const;  // valid until the next one is read; NULL reads as empty
  std::int64_t Int(int value) const;

 private:
  int count_;
  sqlite3_value** values_;
};

// A connection to one database file. A file that kCreate makes, or finds, is for its owner alone. What a file from
// elsewhere could have in it to be run at our statements is refused and switched off: triggers, views, functions in the
// schema.
class Database {
 public:
  // Fails with kNoInput when the file is missing, kBadData when it is damaged or of another program, kTryAgain when it
  // is locked or the work was cancelled, kCannotCreate or kIo otherwise.
  static Result<Database> Open(const std::filesystem::path& path, OpenMode mode, const LockPatience& patience = {});
  // From here on no request ends a statement.
  void ForgetCancel();

  // One statement: what stands behind its ";" is not run.
  Result<Statement> Prepare(std::string_view sql);
  Result<void> Execute(const char* sql);  // one or several statements without parameters
  // Of the last INSERT of this connection, and of the last statement of it that changed rows; 0 before the first.
  std::int64_t LastInsertId() const;
  std::int64_t ChangedRows() const;

  // False where the file, or a file that it needs beside it, may only be read.
  bool MayWrite() const;

  // Called after each commit with the pages that its write-ahead log then holds. Nothing of it goes into the file by
  // itself from then on.
  void OnCommit(std::function<void(int pages)> committed);

  // Called at each row that a statement inserts, changes or deletes, in the midst of it; only to count or look at the
  // clock.
  void OnWrittenRow(std::function<void()> written);

  // `compare(a, b)` orders two UTF-8 texts as strcmp does. It must outlive the connection and give the same order for
  // ever: indexes are built with it.
  using Compare = int (*)(std::string_view a, std::string_view b);
  Result<void> AddCollation(const char* name, Compare compare);
  // Replaces the LIKE operator: `like(pattern, text)`.
  using Like = bool (*)(std::string_view pattern, std::string_view text);
  Result<void> ReplaceLike(Like like);

  // Makes `function(values)` known to statements under a name, with any number of values; once for each name.
  using Function = std::function<std::int64_t(const FunctionValues& values)>;
  Result<void> AddFunction(const char* name, Function function);

  // As it was given to Open.
  const std::filesystem::path& path() const { return path_; }

 private:
  Database(sqlite3* database, std::filesystem::path path, const LockPatience& patience)
      : patience_(std::make_unique<LockPatience>(patience)), database_(database), path_(std::move(path)) {}
  void SwitchOffForeignCode();
  void KeepPatience();
  Result<void> CheckSchema();

  std::unique_ptr<LockPatience> patience_;            // before the connection, which reads it
  std::vector<std::unique_ptr<Function>> functions_;  // as well
  std::unique_ptr<std::function<void()>> written_;
  std::unique_ptr<std::function<void(int)>> committed_;
  std::unique_ptr<sqlite3, CloseDatabase> database_;
  std::filesystem::path path_;
};

// BEGIN IMMEDIATE at once; ROLLBACK at the end of its life unless committed.
class Transaction {
 public:
  // Fails with kTryAgain when another writer's lock outlasts the connection's patience. `database` must outlive it.
  static Result<Transaction> Begin(Database& database);
  Transaction(Transaction&& other) noexcept : database_(std::exchange(other.database_, nullptr)) {}
  Transaction& operator=(Transaction&&) = delete;
  ~Transaction();

  // After a failure the transaction is open still, and goes back at the end of its life.
  Result<void> Commit();

 private:
  explicit Transaction(Database& database) : database_(&database) {}
  Database* database_;
};

}  // namespace quillcast::platform
