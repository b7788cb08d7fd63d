#include "profile/settings_store.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::profile {
namespace {

namespace fs = std::filesystem;
using platform::Database;
using platform::OpenMode;
using platform::Statement;

constexpr const char* kApplication = "Quillcast Classic";

// NOCASE folds ASCII only, which is all that the names of sections and keys are made of.
constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS Settings (Application TEXT NOT NULL COLLATE NOCASE, Section TEXT NOT NULL COLLATE "
    "NOCASE, Key TEXT NOT NULL COLLATE NOCASE, Value TEXT NOT NULL, PRIMARY KEY (Application, Section, Key)) "
    "WITHOUT ROWID";

bool Exists(const fs::path& file) { return fs::exists(file, IgnoreErrors()); }

Result<Database> OpenForWriting(const fs::path& file, const platform::LockPatience& patience) {
  auto folder = platform::EnsureFolder(file.parent_path());
  if (!folder) return folder.error();
  auto database = Database::Open(file, OpenMode::kCreate, patience);
  if (!database) return database;
  const auto made = database->Execute(kSchema);
  if (!made) return made.error();
  return database;
}

// Prepares a statement whose first parameters are the application and the given names.
Result<Statement> Prepare(Database& database, std::string_view sql, std::initializer_list<std::string_view> values) {
  auto statement = database.Prepare(sql);
  if (!statement) return statement;
  int parameter = 1;
  auto bound = statement->Bind(parameter, kApplication);
  for (const auto value : values) {
    if (bound) bound = statement->Bind(++parameter, value);
  }
  if (!bound) return bound.error();
  return statement;
}

fs::path FreeNameForDamaged(const fs::path& file) {
  for (int n = 1;; ++n) {
    fs::path name = file;
    name += fmt::format(".damaged-{}", n);
    if (!Exists(name)) return name;
  }
}

Result<std::string> ReadValue(Database& database, std::string_view section, std::string_view key,
                              std::string_view fallback) {
  auto statement = Prepare(database, "SELECT Value FROM Settings WHERE Application = ?1 AND Section = ?2 AND Key = ?3",
                           {section, key});
  // A file without the table is one whose first write has not ended yet.
  if (!statement) return std::string(fallback);
  const auto row = statement->Step();
  if (!row) return row.error();
  return std::string(*row ? statement->Text(0) : fallback);
}

Result<void> WriteValue(Database& database, std::string_view section, std::string_view key, std::string_view value) {
  auto statement =
      Prepare(database, "INSERT OR REPLACE INTO Settings (Application, Section, Key, Value) VALUES (?1, ?2, ?3, ?4)",
              {section, key, value});
  if (!statement) return statement.error();
  return statement->Run();
}

}  // namespace

Result<std::string> SettingsStore::Read(std::string_view section, std::string_view key,
                                        std::string_view fallback) const {
  if (!Exists(file_)) return std::string(fallback);
  auto database = Database::Open(file_, OpenMode::kReadOnly, patience_);
  if (!database) return database.error();
  return ReadValue(*database, section, key, fallback);
}

Result<std::vector<std::string>> SettingsStore::ReadAll(std::span<const SettingName> names) const {
  std::vector<std::string> values;
  for (const SettingName& name : names) values.emplace_back(name.fallback);
  if (!Exists(file_)) return values;
  auto database = Database::Open(file_, OpenMode::kReadOnly, patience_);
  if (!database) return database.error();
  auto rows = Prepare(*database, "SELECT Section, Key, Value FROM Settings WHERE Application = ?1", {});
  if (!rows) return values;  // as in ReadValue
  for (;;) {
    const auto row = rows->Step();
    if (!row) return row.error();
    if (!*row) return values;
    const auto wanted = std::find_if(names.begin(), names.end(), [&](const SettingName& name) {
      return platform::EqualsIgnoringAsciiCase(name.key, rows->Text(1)) &&
             platform::EqualsIgnoringAsciiCase(name.section, rows->Text(0));
    });
    if (wanted != names.end()) values[static_cast<std::size_t>(wanted - names.begin())] = rows->Text(2);
  }
}

Result<void> SettingsStore::Write(std::string_view section, std::string_view key, std::string_view value) {
  const SettingValue one{key, value};
  return WriteAll(section, {&one, 1});
}

Result<void> SettingsStore::WriteAll(std::string_view section, std::span<const SettingValue> values) {
  std::vector<SectionValue> all;
  for (const auto& [key, value] : values) all.push_back({section, key, value});
  return WriteAll(all);
}

Result<void> SettingsStore::WriteAll(std::span<const SectionValue> values) {
  auto database = OpenForWriting(file_, patience_);
  if (!database) return database.error();
  auto transaction = platform::Transaction::Begin(*database);
  if (!transaction) return transaction.error();
  for (const auto& [section, key, value] : values) {
    if (auto written = WriteValue(*database, section, key, value); !written) return written;
  }
  return transaction->Commit();
}

Result<void> SettingsStore::Change(std::string_view section, std::string_view key,
                                   const std::function<Result<std::string>(const std::string&)>& change) {
  auto database = OpenForWriting(file_, patience_);
  if (!database) return database.error();
  auto transaction = platform::Transaction::Begin(*database);
  if (!transaction) return transaction.error();
  const auto stored = ReadValue(*database, section, key, "");
  if (!stored) return stored.error();
  const auto changed = change(*stored);
  if (!changed) return changed.error();
  if (auto written = WriteValue(*database, section, key, *changed); !written) return written;
  return transaction->Commit();
}

Result<void> SettingsStore::DeleteSection(std::string_view section) {
  if (!Exists(file_)) return {};
  auto database = OpenForWriting(file_, patience_);
  if (!database) return database.error();
  auto statement = Prepare(*database, "DELETE FROM Settings WHERE Application = ?1 AND Section = ?2", {section});
  if (!statement) return statement.error();
  return statement->Run();
}

Result<void> SettingsStore::CheckFile() {
  if (!Exists(file_)) return {};
  auto usable = [&]() -> Result<void> {
    auto database = Database::Open(file_, OpenMode::kReadOnly, patience_);
    if (!database) return database.error();
    auto check = database->Prepare("PRAGMA quick_check(1)");
    if (!check) return check.error();
    const auto row = check->Step();
    if (!row) return row.error();
    if (check->Text(0) != "ok") return Error{Failure::kBadData, std::string(check->Text(0))};
    // Settings of our own have their table, or none at all yet.
    auto strangers =
        database->Prepare("SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name <> 'Settings'");
    if (!strangers) return strangers.error();
    const auto counted = strangers->Step();
    if (!counted) return counted.error();
    if (strangers->Int(0) > 0) return Error{Failure::kBadData, "it holds tables of another program"};
    return {};
  }();
  if (usable || usable.error().failure != Failure::kBadData) return usable;
  const fs::path aside = FreeNameForDamaged(file_);
  std::error_code failed;
  fs::rename(file_, aside, failed);
  if (failed) return platform::SystemError("rename", file_, failed.value());
  return Error{
      Failure::kBadData,
      Say("The settings in {} could not be read ({}); the file was kept as {}.", file_.string(), usable.error().what,
          aside.filename().string()),
      "Settings start from their defaults now. Fill in the account again, or put a good copy of the file back."};
}

}  // namespace quillcast::profile
