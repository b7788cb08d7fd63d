// One reader for each mail program whose accounts can be taken over. Each takes the folder in which its program keeps
// its settings, which need not exist, and never looks at a password.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "account/import/found_account_list.h"

namespace quillcast::account {

// Thunderbird and its relatives: "profiles.ini", and in each profile's folder "prefs.js" with "user.js" over it.
void ReadThunderbird(const std::filesystem::path& folder, FoundAccountList& found);

// Evolution's "sources": a file for each account, each identity and each way out.
void ReadEvolution(const std::filesystem::path& folder, FoundAccountList& found);

// Claws Mail's "accountrc".
void ReadClawsMail(const std::filesystem::path& folder, FoundAccountList& found);

// What the readers make of the content of their files, so that it can be tried without any.

// The folders that a "profiles.ini" in `folder` names: those that the program opens by itself first, each once.
std::vector<std::filesystem::path> ThunderbirdProfiles(std::string_view profiles_ini,
                                                       const std::filesystem::path& folder);
// `file` is told where something is passed over.
void AddThunderbirdAccounts(std::string_view prefs, std::string_view user_prefs, const std::filesystem::path& file,
                            FoundAccountList& found);
void AddClawsAccounts(std::string_view accountrc, const std::filesystem::path& file, FoundAccountList& found);
// Gives each "NAME.source" of a folder, in the order of their names, its content.
using EachSource = std::function<void(const std::function<void(const std::filesystem::path& file, std::string_view)>&)>;
void AddEvolutionAccounts(const EachSource& each, const std::filesystem::path& folder, FoundAccountList& found);

}  // namespace quillcast::account
