#include "account/import/find_accounts.h"

#include <algorithm>
#include <array>
#include <set>

#include "account/import/found_account_list.h"
#include "account/import/program_readers.h"
#include "platform/result.h"

namespace quillcast::account {
namespace {

namespace fs = std::filesystem;
using enum MailProgram;

constexpr std::size_t kMostPackages = 2000;  // of one kind

// Below a home, and below its folder of settings.
constexpr const char* kThunderbirdFolder = ".thunderbird";
constexpr const char* kOldThunderbirdFolder = ".mozilla-thunderbird";
constexpr const char* kClawsFolder = ".claws-mail";
constexpr const char* kClawsConfig = "claws-mail";
constexpr const char* kEvolutionConfig = "evolution/sources";

void AddHome(const fs::path& home, const fs::path& config, std::vector<AccountRoot>& roots) {
  roots.push_back({kThunderbird, home / kThunderbirdFolder});
  roots.push_back({kThunderbird, home / kOldThunderbirdFolder});
  roots.push_back({kEvolution, config / kEvolutionConfig});
  roots.push_back({kClawsMail, home / kClawsFolder});
  roots.push_back({kClawsMail, config / kClawsConfig});
}

// In the order of their names.
std::vector<fs::path> FoldersIn(const fs::path& folder) {
  std::vector<fs::path> folders;
  std::error_code failed;
  for (fs::directory_iterator entry(folder, failed), end; !failed && entry != end; entry.increment(failed)) {
    folders.push_back(entry->path());
    if (folders.size() == kMostPackages) break;
  }
  std::sort(folders.begin(), folders.end());
  return folders;
}

constexpr std::array<void (*)(const fs::path&, FoundAccountList&), 3> kReaders = {ReadThunderbird, ReadEvolution,
                                                                                  ReadClawsMail};

}  // namespace

std::vector<AccountRoot> AccountRoots(const fs::path& home, const std::optional<fs::path>& config) {
  std::vector<AccountRoot> roots;
  AddHome(home, config.value_or(home / ".config"), roots);
  for (const fs::path& package : FoldersIn(home / ".var/app")) AddHome(package, package / "config", roots);
  for (const fs::path& package : FoldersIn(home / "snap")) {
    for (const char* data : {"common", "current"}) AddHome(package / data, package / data / ".config", roots);
  }
  return roots;
}

std::vector<AccountRoot> AccountRoots(const platform::Environment& environment) {
  const auto home = environment.Get("HOME");
  if (!home) return {};
  const auto config = environment.Get("XDG_CONFIG_HOME");
  const bool is_given = config && fs::path(*config).is_absolute();
  return AccountRoots(fs::path(*home), is_given ? std::optional<fs::path>(*config) : std::nullopt);
}

FoundAccounts FindAccounts(std::span<const AccountRoot> roots, const platform::CancelToken& cancel) {
  FoundAccountList found(cancel);
  std::set<fs::path> known;
  for (const AccountRoot& root : roots) {
    if (found.is_over()) break;
    std::error_code missing;
    const fs::path place = fs::canonical(root.folder, missing);
    if (missing == std::errc::no_such_file_or_directory || missing == std::errc::not_a_directory) continue;
    if (missing || known.insert(place).second) kReaders.at(static_cast<std::size_t>(root.program))(root.folder, found);
  }
  return found.Take();
}

}  // namespace quillcast::account
