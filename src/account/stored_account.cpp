#include "account/stored_account.h"

#include <filesystem>
#include <vector>

namespace quillcast::account {

Result<StoredAccount> LoadStored(const profile::SettingsStore& settings) {
  std::vector<profile::SettingName> names = {{kKeyringSection, kKeptForKey, ""}, {kKeyringSection, kLeftoverKey, ""}};
  for (const auto& row : AccountKeyRows()) names.push_back({kAccountSection, row.name, row.fallback});
  auto values = settings.ReadAll(names);
  if (!values) return values.error();
  StoredAccount stored;
  stored.note = {.kept_for = std::move((*values)[0]), .has_leftover = (*values)[1] == "1"};
  auto value = values->begin() + 2;
  for (const auto& row : AccountKeyRows()) stored.account.Set(row.key, std::move(*value++));
  return stored;
}

Result<void> SaveStored(const StoredAccount& stored, profile::SettingsStore& settings) {
  std::vector<profile::SectionValue> values;
  // Settings that had to do with no keyring have no word of one.
  if (const auto before = KeyringNoteOf(settings); !IsEmpty(stored.note) || !IsEmpty(before)) {
    values.push_back({kKeyringSection, kKeptForKey, stored.note.kept_for});
    values.push_back({kKeyringSection, kLeftoverKey, stored.note.has_leftover ? "1" : ""});
  }
  for (const auto& row : AccountKeyRows()) values.push_back({kAccountSection, row.name, stored.account[row.key]});
  return settings.WriteAll(values);
}

// The folder that the file itself is in, like the keyring's owner: settings may be reached by several names.
Result<platform::FolderLock> LockAccount(const profile::SettingsStore& settings, std::chrono::milliseconds patience,
                                         const platform::CancelToken& cancel) {
  std::error_code failed;
  const auto named = std::filesystem::absolute(settings.file(), failed);
  const auto file = std::filesystem::weakly_canonical(named, failed);
  if (auto lock = platform::FolderLock::Take((failed ? named : file).parent_path(), patience, cancel))
    return *std::move(lock);
  if (cancel.Requested() != platform::Stop::kNone)
    return Error{Failure::kTryAgain, "Waiting for another window or program that saves the account was cancelled."};
  return Error{Failure::kTryAgain, "Another window or program is saving the account.",
               "Try again when it has done so."};
}

}  // namespace quillcast::account
