#include "run/journal/journal_file.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>

#include "run/journal/mailing_lock.h"

namespace quillcast::run {
namespace {

constexpr const char* kMoveAway = "Move the file away to begin with an empty one; the reports of the history are kept.";

// Of the layout below. A file of a later one is left alone.
constexpr std::int64_t kVersion = 3;

// Small pages, because each Record writes two of them or so, and a sync takes longer the more there is to write. Pages
// that are no longer used are given back, so that what is forgotten is no longer in the file; what a page in use no
// longer holds is wiped. Keys of the blocks and words are made of the mailing's number and theirs.
constexpr const char* kPages = "PRAGMA page_size = 4096; PRAGMA auto_vacuum = INCREMENTAL; PRAGMA journal_mode = WAL;";
constexpr const char* kTables = R"(
  CREATE TABLE mailings(id INTEGER PRIMARY KEY AUTOINCREMENT, subject TEXT NOT NULL, people TEXT NOT NULL,
                        inputs TEXT NOT NULL, recipients INTEGER NOT NULL, first INTEGER NOT NULL, counts BLOB);
  CREATE TABLE runs(id INTEGER PRIMARY KEY AUTOINCREMENT, mailing INTEGER NOT NULL, number INTEGER NOT NULL,
                    kind INTEGER NOT NULL, history TEXT NOT NULL, boot TEXT NOT NULL, began INTEGER NOT NULL,
                    ended INTEGER, recipients INTEGER NOT NULL, pace TEXT NOT NULL DEFAULT '',
                    round INTEGER NOT NULL DEFAULT 0);
  CREATE INDEX runs_of_mailing ON runs(mailing, number);
  CREATE TABLE rows(id INTEGER PRIMARY KEY, rows BLOB NOT NULL);
  CREATE TABLE states(id INTEGER PRIMARY KEY, records BLOB NOT NULL);
  CREATE TABLE words(id INTEGER PRIMARY KEY, words BLOB NOT NULL);
  CREATE TABLE contents(id INTEGER PRIMARY KEY AUTOINCREMENT, hash TEXT NOT NULL UNIQUE, size INTEGER NOT NULL,
                        kept INTEGER NOT NULL);
  CREATE TABLE pieces(id INTEGER PRIMARY KEY, octets BLOB NOT NULL);
  CREATE TABLE mailing_files(id INTEGER PRIMARY KEY, mailing INTEGER NOT NULL, name TEXT NOT NULL,
                             content INTEGER NOT NULL);
  CREATE INDEX files_of_mailing ON mailing_files(mailing);
  CREATE INDEX mailings_of_content ON mailing_files(content);
  PRAGMA application_id = 1365457483;
  PRAGMA user_version = 3;)";
// Out of a file of an earlier layout. A program that has it open already, and knows no other, goes on unharmed.
constexpr std::array<const char*, kVersion> kTablesFrom = {
    kTables, "ALTER TABLE runs ADD COLUMN pace TEXT NOT NULL DEFAULT ''; PRAGMA user_version = 2;",
    "ALTER TABLE runs ADD COLUMN round INTEGER NOT NULL DEFAULT 0; PRAGMA user_version = 3;"};
constexpr std::int64_t kApplication = 1365457483;

// Commits wait for no disk: the run makes durable what has to be. NORMAL has whoever takes the log into the file sync
// the one before the other, so that a loss of power never leaves half of it.
constexpr const char* kConnection =
    "PRAGMA synchronous = NORMAL; PRAGMA secure_delete = FAST; "
    "PRAGMA journal_size_limit = 67108864;";

Result<std::int64_t> NumberOf(platform::Database& database, std::string_view query) {
  auto statement = database.Prepare(query);
  if (!statement) return statement.error();
  const auto row = statement->Step();
  if (!row) return row.error();
  return statement->Int(0);
}

Result<std::int64_t> VersionOf(platform::Database& database) { return NumberOf(database, "PRAGMA user_version"); }

// An empty file is nobody's yet.
Result<void> CheckIsOurs(platform::Database& database, const JournalPlace& place) {
  const auto tables = NumberOf(database, "SELECT count(*) FROM sqlite_master");
  if (!tables) return tables.error();
  const auto application = NumberOf(database, "PRAGMA application_id");
  if (!application) return application.error();
  if (*tables == 0 || *application == kApplication) return {};
  return Error{Failure::kBadData, Say("{} belongs to another program.", place.file.string()), kMoveAway};
}

Result<void> CheckIsKnown(std::int64_t version, const JournalPlace& place) {
  if (version < 0) return Error{Failure::kBadData, Say("{} is damaged.", place.file.string()), kMoveAway};
  if (version <= kVersion) return {};
  return Error{Failure::kUnavailable, Say("{} was written by a newer version of Quillcast.", place.file.string()),
               "Use that version, or move the file away to begin with an empty one."};
}

// One at a time: two that change the journal mode at once do not wait for each other.
Result<void> MakeTables(platform::Database& database, const JournalPlace& place) {
  const auto lock = MailingLock::Wait(place.Locks(), place.patience.lock_wait);
  if (!lock) return lock.error();
  auto version = VersionOf(database);
  if (!version) return version.error();
  if (*version >= kVersion) return CheckIsKnown(*version, place);
  if (*version == 0) {
    if (auto paged = database.Execute(kPages); !paged) return paged;
  }
  auto transaction = platform::Transaction::Begin(database);
  if (!transaction) return transaction.error();
  while (*version < kVersion) {
    if (auto made = database.Execute(kTablesFrom.at(static_cast<std::size_t>(*version))); !made) return made;
    version = VersionOf(database);
    if (!version) return version.error();
  }
  return transaction->Commit();
}

Error MayNotBeWritten(const JournalPlace& place) {
  return {Failure::kNotPermitted, Say("{} may not be written.", place.file.string()),
          "Give yourself the permission to write the file and its folder."};
}

Result<platform::Database> Open(const JournalPlace& place) {
  // SQLite would make what it needs beside the file with the file's permissions, and they would outlast those.
  if (std::filesystem::exists(place.file, IgnoreErrors()) && ::access(place.file.c_str(), W_OK) != 0) {
    return MayNotBeWritten(place);
  }
  auto database = platform::Database::Open(place.file, platform::OpenMode::kCreate, place.patience);
  if (!database) return database;
  if (auto ours = CheckIsOurs(*database, place); !ours) return ours.error();
  const auto version = VersionOf(*database);
  if (!version) return version.error();
  if (auto known = CheckIsKnown(*version, place); !known) return known.error();
  if (!database->MayWrite()) return MayNotBeWritten(place);
  if (*version < kVersion) {
    if (auto made = MakeTables(*database, place); !made) return made.error();
  }
  if (auto set = database->Execute(kConnection); !set) return set.error();
  return database;
}

}  // namespace

Disk& JournalPlace::TheDisk() const {
  static SystemDisk of_the_system;  // which keeps nothing
  return disk == nullptr ? of_the_system : *disk;
}

std::filesystem::path JournalPlace::Locks() const {
  auto locks = file;
  return locks.replace_extension(".lock");
}

std::filesystem::path JournalPlace::Log() const { return file.string() + "-wal"; }

Result<void> TakeLogIntoFile(const JournalPlace& place, std::chrono::milliseconds patience, bool cut) {
  JournalPlace hurried = place;
  hurried.patience.lock_wait = patience;
  hurried.patience.cancel = nullptr;  // it rounds off what was cancelled, too
  auto database = OpenJournalFile(hurried);
  if (!database) return database.error();
  // First what can be done beside those who write, so that they wait for the rest alone.
  if (auto most = database->Execute("PRAGMA wal_checkpoint(PASSIVE)"); !most) return most;
  auto rest = database->Prepare(cut ? "PRAGMA wal_checkpoint(TRUNCATE)" : "PRAGMA wal_checkpoint(RESTART)");
  if (!rest) return rest.error();
  const auto row = rest->Step();
  if (!row) return row.error();
  if (*row && rest->Int(0) == 0) return {};
  return Error{Failure::kTryAgain, Say("{} is in use.", place.Log().string())};
}

FileAtPlace FileAtPlace::Of(const JournalPlace& place) {
  struct stat status {};
  return ::stat(place.file.c_str(), &status) == 0 ? FileAtPlace{status.st_dev, status.st_ino} : FileAtPlace();
}

Error DamagedMailingIn(const std::filesystem::path& file) {
  return {Failure::kBadData, Say("What {} has of this run is damaged.", file.string()),
          "Forget it, in the window of the runs or with quillcast runs forget, when it is of no more use: all others "
          "stay."};
}

Error OfJournal(Error error) {
  // Neither the file nor what a journal needs beside it can be made.
  if (error.failure == Failure::kCannotCreate) error.failure = Failure::kNotPermitted;
  return error;
}

Result<platform::Database> OpenJournalFile(const JournalPlace& place) {
  auto database = Open(place);
  if (database) return database;
  return OfJournal(database.error());
}

}  // namespace quillcast::run
