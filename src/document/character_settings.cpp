#include "document/character_settings.h"

#include "document/offered_charsets.h"

namespace quillcast::document {

Result<std::string_view> CharacterSettings(const profile::SettingsStore& settings) {
  const auto stored = settings.Read("Account", "CharSet", "Western European (Windows)");
  if (!stored) return stored.error();
  return MimeNameOf(*stored);
}

}  // namespace quillcast::document
