// The user's preferences: text values by section and key, in one small database file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"
#include "platform/sqlite.h"

namespace quillcast::profile {

// For WriteAll, which copies both before it comes back.
struct SettingValue {
  std::string_view key;
  std::string_view value;
};

// For ReadAll.
struct SettingName {
  std::string_view section;
  std::string_view key;
  std::string_view fallback;  // when there is no such value
};

// For WriteAll where they are of several sections.
struct SectionValue {
  std::string_view section;
  std::string_view key;
  std::string_view value;
};

// There is no cache: every read goes to the file, so that a value written anywhere, by this process or another, is
// seen by the next read. Section and key names are case-insensitive (ASCII). The file and its folder are made by the
// first write.
class SettingsStore {
 public:
  explicit SettingsStore(std::filesystem::path file, const platform::LockPatience& patience = {})
      : file_(std::move(file)), patience_(patience) {}

  // The stored text, or `fallback` when there is no such value. Fails only when the file is there and cannot be read.
  Result<std::string> Read(std::string_view section, std::string_view key, std::string_view fallback) const;
  // The same for several, in their order: all as they stood at one moment.
  Result<std::vector<std::string>> ReadAll(std::span<const SettingName> names) const;
  Result<void> Write(std::string_view section, std::string_view key, std::string_view value);
  // All of the values or none of them.
  Result<void> WriteAll(std::string_view section, std::span<const SettingValue> values);
  Result<void> WriteAll(std::span<const SectionValue> values);
  // What `change` makes of the stored text, empty where there is none: no other program writes in between. Where it
  // fails the text stays.
  Result<void> Change(std::string_view section, std::string_view key,
                      const std::function<Result<std::string>(const std::string&)>& change);
  Result<void> DeleteSection(std::string_view section);

  // Looks whether the file can be used. One that is damaged or belongs to another program is renamed to
  // "settings.db.damaged-N", never emptied; the Error then says where it is now. Called once at the start.
  Result<void> CheckFile();

  // Need not exist yet.
  const std::filesystem::path& file() const { return file_; }

 private:
  std::filesystem::path file_;
  platform::LockPatience patience_;
};

}  // namespace quillcast::profile
