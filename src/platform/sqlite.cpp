#include "platform/sqlite.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <thread>
#include <utility>

#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::platform {
namespace {

constexpr auto kLockPause = std::chrono::milliseconds(5);
constexpr int kStepsBetweenLooks = 10'000;  // of SQLite's machine, some tenths of a millisecond

bool IsCancelled(const LockPatience& patience) {
  return patience.cancel != nullptr && patience.cancel->Requested() != Stop::kNone;
}

// For SQLite, which asks before each further try: 1 to try again.
int WaitForLock(void* context, int tries) {
  const auto& patience = *static_cast<const LockPatience*>(context);
  if (IsCancelled(patience) || tries * kLockPause >= patience.lock_wait) return 0;
  std::this_thread::sleep_for(kLockPause);
  return 1;
}

int EndsStatement(void* context) { return IsCancelled(*static_cast<const LockPatience*>(context)) ? 1 : 0; }

Error SqliteError(sqlite3* database, const std::filesystem::path& path) {
  const int code = sqlite3_errcode(database) & 0xFF;
  const Sentence what = Say("{}: {}.", path.string(), sqlite3_errmsg(database));
  switch (code) {
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
      return {Failure::kBadData, what,
              "The file is damaged or belongs to another program; restore it from a backup or move it away."};
    case SQLITE_FULL:
      return {Failure::kIo, what, "Free some space on that disk and try again; nothing that was stored is lost."};
    case SQLITE_READONLY:
    case SQLITE_PERM:
      return {Failure::kCannotCreate, what, "Give yourself the permission to write the file and its folder."};
    case SQLITE_CANTOPEN:
      return {Failure::kCannotCreate, what, "Check that the folder exists and that you may write there."};
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return {Failure::kTryAgain, what, "Another program is using it; try again when that is done."};
    case SQLITE_INTERRUPT:
      return {Failure::kTryAgain, Say("The work on {} was cancelled.", path.string())};
    case SQLITE_IOERR:
      return {Failure::kIo, what, "Check the disk and the space that is left on it."};
    default:
      return {Failure::kInternal, what};
  }
}

Error ErrorOf(sqlite3_stmt* statement) {
  sqlite3* database = sqlite3_db_handle(statement);
  const char* path = sqlite3_db_filename(database, "main");
  return SqliteError(database, path == nullptr ? "" : path);
}

Result<void> BindText(sqlite3_stmt* statement, int parameter, std::string_view text, sqlite3_destructor_type lifetime) {
  // A null pointer would bind NULL, not the empty text.
  const int code = sqlite3_bind_text64(statement, parameter, text.data() == nullptr ? "" : text.data(), text.size(),
                                       lifetime, SQLITE_UTF8);
  return code == SQLITE_OK ? Result<void>() : Result<void>(ErrorOf(statement));
}

// Counting every allocation takes a lock each, and nobody asks for the count. Only the first call has an effect.
void SwitchOffAllocationCounts() {
  [[maybe_unused]] static const int code = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
}

std::string_view TextOf(sqlite3_value* value) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return text == nullptr ? std::string_view() : std::string_view(text, sqlite3_value_bytes(value));
}

// The files of databases are never opened beside SQLite: closing any descriptor of a file, even one of another thread,
// takes away every lock that the process holds on it.

// Fails for what cannot be read, and for folders, devices and pipes.
Result<struct stat> LookAtFile(const std::filesystem::path& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0 || ::access(path.c_str(), R_OK) != 0) return SystemError("read", path, errno);
  if (!S_ISREG(status.st_mode)) return NotAnOrdinaryFile(path, status.st_mode);
  return status;
}

// Private from the first moment; SQLite would use the process's mask. mknod needs no descriptor.
Result<void> MakeFile(const std::filesystem::path& path) {
  if (::mknod(path.c_str(), S_IFREG | S_IRUSR | S_IWUSR, 0) == 0 || errno == EEXIST) return {};
  return SystemError("create", path, errno);
}

// A file that an older copy, or another program, made with wider permissions; its journal is made with the same.
Result<void> ShutOutOthers(const std::filesystem::path& path, mode_t mode) {
  constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
  if ((mode & kOthers) == 0 || ::chmod(path.c_str(), mode & S_IRWXU) == 0) return {};
  return Error{Failure::kNotPermitted,
               Say("{} can be read by others, and that could not be changed: {}.", path.string(), std::strerror(errno)),
               "Take their permissions away (chmod 600), or move the file away."};
}

}  // namespace

void CloseDatabase::operator()(sqlite3* database) const { sqlite3_close_v2(database); }
void FinalizeStatement::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

Result<void> Statement::Bind(int parameter, std::string_view text) {
  return BindText(statement_.get(), parameter, text, SQLITE_TRANSIENT);
}

Result<void> Statement::BindView(int parameter, std::string_view text) {
  return BindText(statement_.get(), parameter, text, SQLITE_STATIC);
}

Result<void> Statement::Bind(int parameter, std::int64_t number) {
  const int code = sqlite3_bind_int64(statement_.get(), parameter, number);
  return code == SQLITE_OK ? Result<void>() : Result<void>(ErrorOf(statement_.get()));
}

Result<void> Statement::BindBytes(int parameter, std::string_view bytes) {
  const int code = sqlite3_bind_blob64(statement_.get(), parameter, bytes.data() == nullptr ? "" : bytes.data(),
                                       bytes.size(), SQLITE_STATIC);
  return code == SQLITE_OK ? Result<void>() : Result<void>(ErrorOf(statement_.get()));
}

Result<bool> Statement::Step() {
  const int code = sqlite3_step(statement_.get());
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  return ErrorOf(statement_.get());
}

Result<void> Statement::Run() {
  for (;;) {
    const auto row = Step();
    if (!row) return row.error();
    if (!*row) return {};
  }
}

void Statement::Reset() { sqlite3_reset(statement_.get()); }
int Statement::ColumnCount() const { return sqlite3_column_count(statement_.get()); }
std::string_view Statement::ColumnName(int column) const { return sqlite3_column_name(statement_.get(), column); }

std::string_view Statement::Text(int column) const {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
  if (text == nullptr) return {};
  return {text, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

std::string_view Statement::Bytes(int column) const {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
  if (bytes == nullptr) return {};
  return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

bool Statement::IsEmpty(int column) const { return sqlite3_column_bytes(statement_.get(), column) == 0; }

std::int64_t Statement::Int(int column) const { return sqlite3_column_int64(statement_.get(), column); }

bool Statement::IsNull(int column) const { return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL; }

// A schema in a file is run by whoever opens it.
void Database::SwitchOffForeignCode() {
  constexpr std::array<std::pair<int, int>, 4> kSwitches = {{{SQLITE_DBCONFIG_DEFENSIVE, 1},
                                                             {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
                                                             {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
                                                             {SQLITE_DBCONFIG_ENABLE_VIEW, 0}}};
  for (const auto& [option, on] : kSwitches) sqlite3_db_config(database_.get(), option, on, nullptr);
}

void Database::KeepPatience() {
  sqlite3_busy_handler(database_.get(), WaitForLock, patience_.get());
  if (patience_->cancel == nullptr || !patience_->cancel_ends_statements) return;
  sqlite3_progress_handler(database_.get(), kStepsBetweenLooks, EndsStatement, patience_.get());
}

void Database::ForgetCancel() {
  patience_->cancel = nullptr;
  sqlite3_progress_handler(database_.get(), 0, nullptr, nullptr);
}

// The first statement on a connection: it also tells whether the file is a database at all.
Result<void> Database::CheckSchema() {
  // What has no page of its own is a trigger, a view, or a table whose rows a module makes. Each runs code.
  auto foreign = Prepare(
      "SELECT CASE WHEN instr(upper(sql), 'VIRTUAL') THEN 'virtual table' ELSE type END, name FROM sqlite_master "
      "WHERE type IN ('trigger', 'view') OR rootpage = 0 OR instr(upper(sql), 'VIRTUAL') LIMIT 1");
  if (!foreign) return foreign.error();
  const auto row = foreign->Step();
  if (!row) return row.error();
  if (!*row) return {};
  return Error{Failure::kBadData,
               Say("{} holds the {} \"{}\", which no file of this program has, so it was not used.", path_.string(),
                   foreign->Text(0), Printable(foreign->Text(1), 100)),
               "Put a copy of your own back, or move the file away to begin with an empty one."};
}

Result<Database> Database::Open(const std::filesystem::path& path, OpenMode mode, const LockPatience& patience) {
  if (mode == OpenMode::kCreate) {
    if (const auto made = MakeFile(path); !made) return made.error();
  }
  const auto status = LookAtFile(path);
  if (!status) return status.error();
  if (mode == OpenMode::kCreate) {
    if (const auto shut = ShutOutOthers(path, status->st_mode); !shut) return shut.error();
  }
  SwitchOffAllocationCounts();
  sqlite3* raw = nullptr;
  const int flags = mode == OpenMode::kReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
  const int code = sqlite3_open_v2(path.c_str(), &raw, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  Database database(raw, path, patience);
  if (code != SQLITE_OK) return SqliteError(raw, path);
  database.SwitchOffForeignCode();
  database.KeepPatience();
  const auto is_database = database.CheckSchema();
  if (!is_database && sqlite3_extended_errcode(raw) == SQLITE_READONLY_ROLLBACK) {
    // A writer that was killed left its journal behind. Only one who may write can take the half-written change back.
    const auto restored = Open(path, OpenMode::kReadWrite, patience);
    return restored ? Open(path, mode, patience) : restored.error();
  }
  if (!is_database) return is_database.error();
  return database;
}

Result<Statement> Database::Prepare(std::string_view sql) {
  sqlite3_stmt* raw = nullptr;
  const int code = sqlite3_prepare_v2(database_.get(), sql.data(), static_cast<int>(sql.size()), &raw, nullptr);
  Statement statement(raw);
  if (code != SQLITE_OK) return SqliteError(database_.get(), path_);
  return statement;
}

Result<void> Database::Execute(const char* sql) {
  const int code = sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr);
  return code == SQLITE_OK ? Result<void>() : Result<void>(SqliteError(database_.get(), path_));
}

std::int64_t Database::LastInsertId() const { return sqlite3_last_insert_rowid(database_.get()); }
std::int64_t Database::ChangedRows() const { return sqlite3_changes64(database_.get()); }

bool Database::MayWrite() const { return sqlite3_db_readonly(database_.get(), "main") == 0; }

void Database::OnCommit(std::function<void(int pages)> committed) {
  committed_ = std::make_unique<std::function<void(int)>>(std::move(committed));
  const auto call = [](void* context, sqlite3*, const char*, int pages) {
    (*static_cast<std::function<void(int)>*>(context))(pages);
    return SQLITE_OK;
  };
  sqlite3_wal_hook(database_.get(), call, committed_.get());
}

void Database::OnWrittenRow(std::function<void()> written) {
  written_ = std::make_unique<std::function<void()>>(std::move(written));
  const auto call = [](void* context, int, const char*, const char*, sqlite3_int64) {
    (*static_cast<std::function<void()>*>(context))();
  };
  sqlite3_update_hook(database_.get(), call, written_.get());
}

Result<void> Database::AddCollation(const char* name, Compare compare) {
  const auto call = [](void* context, int a_size, const void* a, int b_size, const void* b) {
    return reinterpret_cast<Compare>(context)({static_cast<const char*>(a), static_cast<std::size_t>(a_size)},
                                              {static_cast<const char*>(b), static_cast<std::size_t>(b_size)});
  };
  const int code = sqlite3_create_collation(database_.get(), name, SQLITE_UTF8, reinterpret_cast<void*>(compare), call);
  return code == SQLITE_OK ? Result<void>() : Result<void>(SqliteError(database_.get(), path_));
}

Result<void> Database::ReplaceLike(Like like) {
  const auto call = [](sqlite3_context* context, int, sqlite3_value** values) {
    const auto compare = reinterpret_cast<Like>(sqlite3_user_data(context));
    sqlite3_result_int(context, compare(TextOf(values[0]), TextOf(values[1])) ? 1 : 0);
  };
  const int code = sqlite3_create_function(database_.get(), "like", 2, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                           reinterpret_cast<void*>(like), call, nullptr, nullptr);
  return code == SQLITE_OK ? Result<void>() : Result<void>(SqliteError(database_.get(), path_));
}

bool FunctionValues::IsEmpty(int value) const { return sqlite3_value_bytes(values_[value]) == 0; }
std::string_view FunctionValues::Text(int value) const { return TextOf(values_[value]); }
std::int64_t FunctionValues::Int(int value) const { return sqlite3_value_int64(values_[value]); }

Result<void> Database::AddFunction(const char* name, Function function) {
  const auto call = [](sqlite3_context* context, int count, sqlite3_value** values) {
    sqlite3_result_int64(context, (*static_cast<const Function*>(sqlite3_user_data(context)))({count, values}));
  };
  functions_.push_back(std::make_unique<Function>(std::move(function)));
  const int code = sqlite3_create_function(database_.get(), name, -1, SQLITE_UTF8 | SQLITE_DIRECTONLY,
                                           functions_.back().get(), call, nullptr, nullptr);
  return code == SQLITE_OK ? Result<void>() : Result<void>(SqliteError(database_.get(), path_));
}

Result<Transaction> Transaction::Begin(Database& database) {
  const auto begun = database.Execute("BEGIN IMMEDIATE");
  if (!begun) return begun.error();
  return Transaction(database);
}

Transaction::~Transaction() {
  if (database_ != nullptr) IgnoreErrors(database_->Execute("ROLLBACK"));
}

Result<void> Transaction::Commit() {
  auto done = database_->Execute("COMMIT");
  if (done) database_ = nullptr;
  return done;
}

}  // namespace quillcast::platform
