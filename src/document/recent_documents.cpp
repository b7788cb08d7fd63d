#include "document/recent_documents.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace quillcast::document {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSection = "RecentDocuments";

// A key for each place of the list, so that a name may hold any character.
std::string KeyOf(std::size_t place) { return "Document" + std::to_string(place + 1); }

// One name for a file, as far as that is to be known without asking the disk.
fs::path PlainName(const fs::path& file) {
  const fs::path absolute = fs::absolute(file, IgnoreErrors());  // the current folder is gone: as it was given
  return (absolute.empty() ? file : absolute).lexically_normal();
}

Result<std::vector<fs::path>> ReadList(const profile::SettingsStore& settings) {
  std::vector<fs::path> files;
  for (std::size_t place = 0; place < kMostRecentDocuments; ++place) {
    auto file = settings.Read(kSection, KeyOf(place), "");
    if (!file) return file.error();
    if (!file->empty() && std::find(files.begin(), files.end(), *file) == files.end()) files.emplace_back(*file);
  }
  return files;
}

// The places that are left over become empty.
Result<void> WriteList(profile::SettingsStore& settings, const std::vector<fs::path>& files) {
  std::array<std::pair<std::string, std::string>, kMostRecentDocuments> rows;
  std::vector<profile::SettingValue> values;
  for (std::size_t place = 0; place < rows.size(); ++place) {
    rows[place] = {KeyOf(place), place < files.size() ? files[place].string() : std::string()};
    values.push_back({rows[place].first, rows[place].second});
  }
  return settings.WriteAll(kSection, values);
}

}  // namespace

Result<std::vector<RecentDocument>> RecentDocuments(const profile::SettingsStore& settings) {
  auto files = ReadList(settings);
  if (!files) return files.error();
  std::vector<RecentDocument> documents;
  for (auto& file : *files) {
    const bool is_there = fs::is_regular_file(file, IgnoreErrors());
    documents.push_back({std::move(file), is_there});
  }
  return documents;
}

Result<void> AddRecentDocument(profile::SettingsStore& settings, const fs::path& file) {
  if (file.empty()) return {};  // never saved
  auto files = ReadList(settings);
  if (!files) return files.error();
  std::erase(*files, PlainName(file));
  files->insert(files->begin(), PlainName(file));
  return WriteList(settings, *files);
}

Result<void> ForgetRecentDocument(profile::SettingsStore& settings, const fs::path& file) {
  auto files = ReadList(settings);
  if (!files) return files.error();
  if (std::erase(*files, PlainName(file)) == 0) return {};
  return WriteList(settings, *files);
}

Result<void> ForgetRecentDocuments(profile::SettingsStore& settings) { return settings.DeleteSection(kSection); }

}  // namespace quillcast::document
