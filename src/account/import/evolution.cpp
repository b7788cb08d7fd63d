#include <algorithm>
#include <array>
#include <map>
#include <system_error>

#include "account/import/key_file.h"
#include "account/import/program_readers.h"
#include "platform/text.h"

namespace quillcast::account {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostFiles = 300'000;

// What is of interest of a source: of an identity the first four, of a way out the others.
struct Source {
  bool is_identity = false;
  bool is_enabled = true;
  std::string display_name;
  FoundAccount account;
  std::string transport;
};

std::string SecurityOfMethod(std::string_view method) {
  if (method == "ssl-on-alternate-port") return "TLS";
  if (method == "starttls-on-standard-port") return "STARTTLS";
  return method == "none" ? "None" : "";
}

struct SourceKey {
  std::string_view section;
  std::string_view key;
  void (*take)(Source& source, std::string_view value);
};

constexpr auto kSourceKeys = std::to_array<SourceKey>({
    {"Data Source", "DisplayName", [](Source& s, std::string_view v) { s.display_name = v; }},
    {"Data Source", "Enabled", [](Source& s, std::string_view v) { s.is_enabled = v != "false"; }},
    {"Mail Identity", "Name", [](Source& s, std::string_view v) { s.account.name = v; }},
    {"Mail Identity", "Address", [](Source& s, std::string_view v) { s.account.email = v; }},
    {"Mail Submission", "TransportUid", [](Source& s, std::string_view v) { s.transport = v; }},
    {"Authentication", "Host", [](Source& s, std::string_view v) { s.account.server = v; }},
    {"Authentication", "Port", [](Source& s, std::string_view v) { s.account.port = PortFrom(v); }},
    {"Authentication", "User", [](Source& s, std::string_view v) { s.account.user_name = v; }},
    {"Security", "Method", [](Source& s, std::string_view v) { s.account.security = SecurityOfMethod(v); }},
});

Source SourceFrom(std::string_view content) {
  Source source;
  ReadKeyFile(content, [&](const KeyLine& line) {
    if (line.section == "Mail Identity") source.is_identity = true;
    for (const auto& row : kSourceKeys) {
      if (row.section == line.section && row.key == line.key)
        row.take(source, KeyFileText(line.value.substr(0, 2 * kLongestText + 2)));
    }
  });
  return source;
}

// Their names alone, so that a folder of many costs little.
std::vector<fs::path> SourcesIn(const fs::path& folder, FoundAccountList& found) {
  std::vector<fs::path> files;
  std::error_code failed;
  for (fs::directory_iterator entry(folder, failed), end; !failed && entry != end; entry.increment(failed)) {
    if (found.is_over()) return {};
    if (entry->path().extension() == ".source") files.push_back(entry->path());
    if (files.size() < kMostFiles) continue;
    found.PassOver(
        Say("Only {} files were looked at: {}.", NumberValue(kMostFiles), platform::Printable(folder.string(), 200)));
    break;
  }
  if (failed && failed != std::errc::no_such_file_or_directory)
    found.PassOver(Say("{} cannot be read: {}.", platform::Printable(folder.string(), 200), failed.message()));
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

void AddEvolutionAccounts(const EachSource& each, const fs::path& folder, FoundAccountList& found) {
  std::map<std::string, Source> ways_out;
  std::vector<Source> identities;
  each([&](const fs::path& file, std::string_view content) {
    Source source = SourceFrom(content);
    source.account.file = file;
    if (!source.is_identity) {
      if (!source.account.server.empty()) ways_out.emplace(file.stem().string(), std::move(source));
    } else if (source.is_enabled) {
      identities.push_back(std::move(source));
    }
  });
  for (Source& identity : identities) {
    FoundAccount account = std::move(identity.account);
    account.account_name = std::move(identity.display_name);
    if (const auto found_way = ways_out.find(identity.transport); found_way != ways_out.end()) {
      const FoundAccount& way = found_way->second.account;
      account.server = way.server;
      account.port = way.port;
      account.security = way.security;
      account.user_name = way.user_name;
    }
    account.program = "Evolution";
    found.Add(std::move(account));
  }
  found.TellLeftOut(folder);
}

void ReadEvolution(const fs::path& folder, FoundAccountList& found) {
  AddEvolutionAccounts(
      [&](const auto& take) {
        for (const auto& file : SourcesIn(folder, found)) {
          if (found.is_over()) return;
          take(file, found.Read(file));
        }
      },
      folder, found);
}

}  // namespace quillcast::account
