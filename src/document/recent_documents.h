// The documents that were open last, kept among the settings.
#pragma once

#include <cstddef>
#include <filesystem>
#include <vector>

#include "platform/result.h"
#include "profile/settings_store.h"

namespace quillcast::document {

inline constexpr std::size_t kMostRecentDocuments = 10;

struct RecentDocument {
  std::filesystem::path file;  // absolute
  bool is_there = false;       // as a file, when the list was read
};

// The last one first, each once. One that is missing keeps its place: the disk that it lies on may come back.
Result<std::vector<RecentDocument>> RecentDocuments(const profile::SettingsStore& settings);

// The document was opened, or saved under this name: it is the first from now on. A relative path starts from the
// current folder; an empty one, of a document that was never saved, is passed over.
Result<void> AddRecentDocument(profile::SettingsStore& settings, const std::filesystem::path& file);

// Takes one off the list, or all of them.
Result<void> ForgetRecentDocument(profile::SettingsStore& settings, const std::filesystem::path& file);
Result<void> ForgetRecentDocuments(profile::SettingsStore& settings);

}  // namespace quillcast::document
