#include "recipients/store_connection.h"

#include <fmt/format.h>

#include "recipients/text_order.h"

namespace quillcast::recipients {
namespace {

constexpr std::string_view kSourceClause = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=";
constexpr std::string_view kPasswordClause = ";Jet OLEDB:Database Password = ";
constexpr std::string_view kFileName = "Group.mdb";
// A check that the file is the program's own; it keeps nobody out.
constexpr std::string_view kPassword = "kvtrmlqzhwn8274";

Result<void> AddTextRules(platform::Database& database) {
  if (auto done = database.AddCollation(kCollation, CompareText); !done) return done;
  return database.ReplaceLike(LikeText);
}

Result<void> CheckPassword(platform::Database& database, std::string_view password) {
  auto statement = database.Prepare("SELECT [Password] FROM [Meta]");
  if (!statement) {
    return Error{Failure::kBadData, Say("{} is no recipient store.", database.path().string()),
                 "Restore it from a backup, or move it away to begin with an empty one."};
  }
  const auto row = statement->Step();
  if (!row) return row.error();
  if (*row && statement->Text(0) == password) return {};
  return Error{Failure::kNotPermitted, Say("{}: not a valid password.", database.path().string())};
}

Result<platform::Database> OpenWithPassword(const std::filesystem::path& file, std::string_view password,
                                            const platform::LockPatience& patience) {
  if (std::filesystem::is_symlink(file, IgnoreErrors()) && !std::filesystem::exists(file, IgnoreErrors())) {
    const auto target = std::filesystem::read_symlink(file, IgnoreErrors());
    return Error{Failure::kNoInput, Say("{} is a link to {}, which is not there.", file.string(), target.string()),
                 "Make available what it leads to, or remove the link to begin with an empty store."};
  }
  auto database = platform::Database::Open(file, platform::OpenMode::kReadWrite, patience);
  if (!database) return database;
  if (const auto added = AddTextRules(*database); !added) return added.error();
  if (const auto checked = CheckPassword(*database, password); !checked) return checked.error();
  return database;
}

}  // namespace

std::string ConnectionString(const std::filesystem::path& data_folder) {
  return fmt::format("{}{}{}{}{}", kSourceClause, data_folder.string(), kFileName, kPasswordClause, kPassword);
}

Result<platform::Database> OpenByConnectionString(std::string_view connection_string) {
  // A folder's name may hold a semicolon, so the password clause is looked for from the end.
  const auto password_at = connection_string.rfind(kPasswordClause);
  if (!connection_string.starts_with(kSourceClause) || password_at == std::string_view::npos) {
    return Error{Failure::kUsage, "The connection string is not one of a recipient store."};
  }
  const std::string_view password = connection_string.substr(password_at + kPasswordClause.size());
  const std::string_view file = connection_string.substr(kSourceClause.size(), password_at - kSourceClause.size());
  return OpenWithPassword(std::filesystem::path(file), password, {});
}

Result<platform::Database> OpenStore(const std::filesystem::path& file, const platform::LockPatience& patience) {
  return OpenWithPassword(file, kPassword, patience);
}

Result<platform::Database> OpenStoreToFill(const std::filesystem::path& file, const platform::LockPatience& patience,
                                           int cache_mib) {
  auto database = OpenStore(file, patience);
  if (!database) return database;
  const std::string pragma = fmt::format("PRAGMA cache_size = -{}", cache_mib * 1024);
  if (const auto set = database->Execute(pragma.c_str()); !set) return set.error();
  return database;
}

Result<void> CreateStoreFile(const std::filesystem::path& file, const std::string& schema) {
  if (std::filesystem::exists(file, IgnoreErrors())) {
    return Error{Failure::kCannotCreate, Say("{} exists already.", file.string())};
  }
  auto database = platform::Database::Open(file, platform::OpenMode::kCreate);
  if (!database) return database.error();
  if (auto added = AddTextRules(*database); !added) return added;
  if (auto made = database->Execute(schema.c_str()); !made) return made;
  auto statement = database->Prepare("INSERT INTO [Meta] ([Password]) VALUES (?)");
  if (!statement) return statement.error();
  if (auto bound = statement->Bind(1, kPassword); !bound) return bound;
  return statement->Run();
}

}  // namespace quillcast::recipients
