// How the file of the recipient store is opened: by its connection string, with the password that the string names.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/sqlite.h"

namespace quillcast::recipients {

// The connection string of the store in a data folder, which ends in a separator.
std::string ConnectionString(const std::filesystem::path& data_folder);

// Opens the file that a connection string names. Errors: those of Database::Open; kUsage for a string of another kind,
// kNotPermitted for a wrong password.
Result<platform::Database> OpenByConnectionString(std::string_view connection_string);

// Opens the store's file with the program's own password.
Result<platform::Database> OpenStore(const std::filesystem::path& file, const platform::LockPatience& patience = {});

// The same for work that writes all over a large group: `cache_mib` of it, and most of the index of addresses with
// that, stay in memory meanwhile, and readers are not shut out.
Result<platform::Database> OpenStoreToFill(const std::filesystem::path& file, const platform::LockPatience& patience,
                                           int cache_mib);

// Makes a store with no groups out of the statements of `schema`. Fails with kCannotCreate when the file exists.
Result<void> CreateStoreFile(const std::filesystem::path& file, const std::string& schema);

}  // namespace quillcast::recipients
