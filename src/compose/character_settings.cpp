#include "compose/character_settings.h"

#include "compose/charset_table.h"

namespace quillcast::compose {

Result<std::string_view> CharacterSettings(const app::SettingsStore& settings) {
  const auto stored = settings.Read("Account", "CharSet", "Western European (Windows)");
  if (!stored) return stored.error();
  return MimeNameOf(*stored);
}

}  // namespace quillcast::compose
