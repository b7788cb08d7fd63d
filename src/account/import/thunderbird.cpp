#include <algorithm>
#include <array>
#include <set>

#include "account/import/key_file.h"
#include "account/import/preferences.h"
#include "account/import/program_readers.h"
#include "platform/text.h"

namespace quillcast::account {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kProgram = "Thunderbird";
constexpr std::string_view kNoSignIn = "1";  // of "authMethod"

std::string_view ValueOf(const Preferences& preferences, const std::string& name) {
  const auto found = preferences.find(name);
  return found == preferences.end() ? std::string_view() : std::string_view(found->second);
}

// The names between the commas, each once; a million of one name are no million accounts.
std::vector<std::string> NamesIn(std::string_view list) {
  std::vector<std::string> names;
  std::set<std::string_view> known;
  for (const std::string_view piece : platform::Split(list, ',')) {
    const std::string_view name = platform::Trim(piece);
    if (!name.empty() && known.insert(name).second) names.emplace_back(name);
  }
  return names;
}

std::string SecurityOfTrySsl(std::string_view try_ssl) {
  constexpr std::array<std::string_view, 4> kMeanings = {"None", "Automatic", "STARTTLS", "TLS"};
  const auto number = platform::WholeNumberBetween(try_ssl, 0, static_cast<std::int64_t>(kMeanings.size()) - 1);
  return number ? std::string(kMeanings.at(static_cast<std::size_t>(*number))) : std::string();
}

// The server that an identity names, else the one for all that name none, else the first.
std::string ServerOf(const Preferences& preferences, const std::string& identity) {
  for (const auto& name : {"mail.identity." + identity + ".smtpServer", std::string("mail.smtp.defaultserver")}) {
    std::string server(ValueOf(preferences, name));
    if (!ValueOf(preferences, "mail.smtpserver." + server + ".hostname").empty()) return server;
  }
  const auto all = NamesIn(ValueOf(preferences, "mail.smtpservers").substr(0, kLongestText));
  return all.empty() ? std::string() : all.front();
}

FoundAccount AccountFrom(const Preferences& preferences, const std::string& account, const std::string& identity) {
  const auto of_identity = [&](const char* key) {
    return std::string(ValueOf(preferences, "mail.identity." + identity + "." + key));
  };
  const std::string smtp = "mail.smtpserver." + ServerOf(preferences, identity) + ".";
  const auto of_server = [&](const char* key) { return ValueOf(preferences, smtp + key); };
  const std::string incoming(ValueOf(preferences, "mail.account." + account + ".server"));
  FoundAccount found;
  found.account_name = ValueOf(preferences, "mail.server." + incoming + ".name");
  found.name = of_identity("fullName");
  found.email = of_identity("useremail");
  found.server = of_server("hostname");
  found.port = PortFrom(of_server("port"));
  found.security = SecurityOfTrySsl(of_server("try_ssl"));
  if (of_server("authMethod") != kNoSignIn) found.user_name = of_server("username");
  found.program = kProgram;
  return found;
}

}  // namespace

std::vector<fs::path> ThunderbirdProfiles(std::string_view profiles_ini, const fs::path& folder) {
  // What the program opens by itself comes first: newer ones note it for each place that they are installed in.
  enum class Rank { kInstalled, kDefault, kOther };
  struct Profile {
    std::string_view section;
    fs::path path;
    Rank rank;
  };
  std::vector<Profile> profiles;
  ReadKeyFile(profiles_ini, [&](const KeyLine& line) {
    const bool is_install = line.section.starts_with("Install");
    if (!is_install && !line.section.starts_with("Profile")) return;
    if (profiles.empty() || profiles.back().section.data() != line.section.data())
      profiles.push_back({line.section, {}, is_install ? Rank::kInstalled : Rank::kOther});
    // An absolute path stands for itself, whatever "IsRelative" says.
    if (line.key == (is_install ? "Default" : "Path") && !line.value.empty())
      profiles.back().path = folder / fs::path(line.value);
    if (!is_install && line.key == "Default" && line.value == "1") profiles.back().rank = Rank::kDefault;
  });
  std::stable_sort(profiles.begin(), profiles.end(),
                   [](const Profile& one, const Profile& other) { return one.rank < other.rank; });
  std::vector<fs::path> paths;
  std::set<fs::path> known;
  for (const Profile& profile : profiles) {
    const fs::path path = profile.path.lexically_normal();
    if (!path.empty() && known.insert(path).second) paths.push_back(path);
  }
  return paths;
}

void AddThunderbirdAccounts(std::string_view prefs, std::string_view user_prefs, const fs::path& file,
                            FoundAccountList& found) {
  Preferences preferences;
  const bool is_whole = ReadPreferences(prefs, "mail.", preferences);
  if (!ReadPreferences(user_prefs, "mail.", preferences) || !is_whole)
    found.PassOver(Say("Damaged lines were passed over: {}.", platform::Printable(file.string(), 200)));
  for (const auto& account : NamesIn(ValueOf(preferences, "mail.accountmanager.accounts"))) {
    for (const auto& identity : NamesIn(ValueOf(preferences, "mail.account." + account + ".identities"))) {
      if (found.is_over()) return;
      FoundAccount candidate = AccountFrom(preferences, account, identity);
      candidate.file = file;
      found.Add(std::move(candidate));
    }
  }
  found.TellLeftOut(file);
}

void ReadThunderbird(const fs::path& folder, FoundAccountList& found) {
  const std::string profiles = found.Read(folder / "profiles.ini");
  for (const auto& profile : ThunderbirdProfiles(profiles, folder)) {
    if (found.is_over()) return;
    if (!fs::exists(profile, IgnoreErrors())) {
      found.PassOver(Say("A profile is not where it should be: {}.", platform::Printable(profile.string(), 200)));
      continue;
    }
    const fs::path file = profile / "prefs.js";
    const std::string prefs = found.Read(file);
    AddThunderbirdAccounts(prefs, found.Read(profile / "user.js"), file, found);
  }
}

}  // namespace quillcast::account
