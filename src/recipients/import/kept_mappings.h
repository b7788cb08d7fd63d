// How a list is read that comes again and again, kept under a name.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "profile/settings_store.h"
#include "recipients/import/import_mapping.h"

namespace quillcast::recipients {

// More lines at the beginning than any list has; a mapping that leaves out more is a damaged one.
inline constexpr std::int64_t kMostSkipped = 1'000'000'000;

struct KeptMapping {
  std::string name;
  ImportMapping mapping;
  char delimiter = ',';
  bool quotes = false;
  bool rfc4180 = false;
  std::int64_t skip = 0;                  // lines at the beginning
  std::string sheet = {};                 // of a spreadsheet; empty: none was chosen
  std::string encoding = {};              // empty: found out of each file
  std::vector<std::size_t> columns = {};  // that are taken, and whose places the mapping names; none: all

  bool operator==(const KeptMapping&) const = default;
};

// Whoever asks by name is told this; a terminal adds its command.
inline constexpr const char* kNoSuchMappingRemedy = "Take one of those that are kept.";

// The same where the whole setting is damaged.
inline constexpr const char* kDamagedMappingsRemedy = "“Remove” forgets all of them; keep them anew then.";

// Where the whole setting is damaged each of these fails with kBadData and leaves it as it is, but
// ForgetMappings and ForgetDamagedMappings.
// Of all that are kept, in their order, also of one that FindMapping refuses: so that it can be removed. Names differ
// in more than the case of their letters.
Result<std::vector<std::string>> ListMappingNames(const profile::SettingsStore& settings);
// Errors: kUsage where there is none of that name; kBadData for one that somebody changed into what none can be: taken
// as anything else it would fill the wrong fields.
Result<KeptMapping> FindMapping(const profile::SettingsStore& settings, std::string_view name);
// Whether a mapping can have this name. Errors: kUsage for one that is empty, has a line end or another sign that is
// obeyed in it, or is over a hundred characters long.
Result<void> CheckMappingName(std::string_view name);
// Whether one is kept under the name, readable or not; false where the settings cannot be read.
bool HasMapping(const profile::SettingsStore& settings, std::string_view name);
// In the place of one of the same name; blanks around it do not count. Errors: as CheckMappingName.
Result<void> KeepMapping(profile::SettingsStore& settings, const KeptMapping& mapping);
// Errors: kUsage where there is none of that name.
Result<void> DeleteMapping(profile::SettingsStore& settings, std::string_view name);
// All of them, readable or not.
Result<void> ForgetMappings(profile::SettingsStore& settings);
// All of them where the whole setting is damaged still, at once: another program may have mended it. False where it is
// not, and they are left.
Result<bool> ForgetDamagedMappings(profile::SettingsStore& settings);

}  // namespace quillcast::recipients
