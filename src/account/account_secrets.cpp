#include "account/account_secrets.h"

#include <fmt/format.h>

#include <array>
#include <cstring>

#include "account/account_choices.h"
#include "account/account_connection.h"
#include "account/password_place.h"
#include "platform/program_run.h"
#include "platform/text.h"

namespace quillcast::account {
namespace {

using enum AccountKey;
using platform::ProgramEnd;
using platform::Secret;

constexpr std::size_t kLongestComplaint = 300;  // octets of what the command said that are told
constexpr int kNoSuchCommand = 127;             // sh(1)
constexpr const char* kTryItByHand = "Try it in a terminal; it has to print the password on its first line.";

std::string EntryOf(const std::filesystem::path& settings) {
  std::error_code failed;
  const auto whole = std::filesystem::weakly_canonical(std::filesystem::absolute(settings, failed), failed);
  return "mail account of " + (failed ? settings : whole).string();
}

// As the keyring's own window shows it.
std::string LabelOf(const AccountSettings& account) {
  return fmt::format("Quillcast Classic: {} at {}", platform::Printable(account[kUsername], 100),
                     platform::Printable(account[kServer], 100));
}

// Beside the account, whose Reset and whose import leave it: the keyring may have a password by us.
constexpr const char* kKeyringSection = "Keyring";
constexpr const char* kMayHaveEntry = "Entry";

bool MayHaveEntry(const profile::SettingsStore& settings) {
  return IgnoreErrors(settings.Read(kKeyringSection, kMayHaveEntry, "0"), std::string("0")) == "1";
}

bool TakesFromKeyring(const AccountSettings& account) { return PlaceOfPassword(account) == PasswordPlace::kKeyring; }

// What the command said about its failure, to end the sentence with. A password that it printed already is not
// repeated.
std::string ComplaintOf(const platform::ProgramRun& run) {
  std::string said = platform::ReplaceAll(platform::Trim(run.complaint), "\n", " ");
  const auto printed = platform::Trim(run.output.view());
  if (!printed.empty()) said = platform::ReplaceAll(said, printed.substr(0, printed.find_first_of("\r\n")), "****");
  return said.empty() ? "." : fmt::format(", and said: \"{}\".", platform::Printable(said, kLongestComplaint));
}

Error EndedOtherwise(const platform::ProgramRun& run, std::chrono::milliseconds patience) {
  switch (run.end) {
    case ProgramEnd::kExited:
      break;
    case ProgramEnd::kNotStarted:
      return {Failure::kUnavailable, Say("The password command could not be started: {}", std::strerror(run.status)),
              kTryItByHand};
    case ProgramEnd::kTimedOut:
      return {Failure::kTimedOut,
              Say("The password command did not end within {} seconds{}",
                  std::chrono::ceil<std::chrono::seconds>(patience).count(), ComplaintOf(run)),
              "It has no terminal to ask on: unlock what it reads from first, or let it ask in a window of its own."};
    case ProgramEnd::kPrintedTooMuch:
      return {Failure::kBadData, "The password command printed more than 64 KiB.", kTryItByHand};
    case ProgramEnd::kCancelled:
      return {Failure::kTryAgain, "The password command was cancelled."};
  }
  const std::string complaint = ComplaintOf(run);
  if (run.status == kNoSuchCommand)
    return {Failure::kNotConfigured, Say("The password command was not found{}", complaint), kTryItByHand};
  if (run.status < 0)
    return {Failure::kUnavailable, Say("The password command was ended by a signal{}", complaint), kTryItByHand};
  return {Failure::kUnavailable, Say("The password command failed with exit code {}{}", run.status, complaint),
          kTryItByHand};
}

}  // namespace

AccountSecrets::AccountSecrets(platform::SecretStore& keyring, const std::filesystem::path& settings,
                               std::chrono::milliseconds patience)
    : keyring_(keyring), entry_(EntryOf(settings)), patience_(patience) {}

Result<Secret> AccountSecrets::PasswordOf(const AccountSettings& account, const platform::CancelToken& cancel) const {
  if (!account.IsOn(kAuth)) return Secret();
  const auto place = ChosenAs<PasswordPlace>(account, kPasswordFrom);
  if (!place) return place.error();
  if (*place == PasswordPlace::kCommand) return FromCommand(account[kPasswordCommand], cancel);
  // One that is on its way into the keyring is the newer one.
  if (*place == PasswordPlace::kSettings || !account[kPassword].empty()) return Secret(account[kPassword]);
  return FromKeyring(cancel);
}

Result<smtp::ClientOptions> AccountSecrets::SignInOptionsOf(const AccountSettings& account,
                                                            const platform::CancelToken& cancel) const {
  auto options = ConnectionOptionsOf(account);
  if (!options) return options;
  auto password = PasswordOf(account, cancel);
  if (!password) return password.error();
  options->password = *std::move(password);
  return options;
}

Result<Secret> AccountSecrets::FromKeyring(const platform::CancelToken& cancel) const {
  auto found = keyring_.Find(entry_, cancel);
  if (!found) return found.error();
  if (*found && !(*found)->empty()) return **std::move(found);
  return Error{Failure::kNotConfigured, "The keyring has no password of this account.",
               "Give the account its password once more; it goes into the keyring when the account is saved."};
}

Result<Secret> AccountSecrets::FromCommand(const std::string& command, const platform::CancelToken& cancel) const {
  if (platform::Trim(command).empty()) {
    return Error{Failure::kNotConfigured, "The account takes its password from a command, and names none.",
                 "Name a command that prints the password."};
  }
  const std::array<std::string, 3> words = {"/bin/sh", "-c", command};
  const auto run = platform::RunProgram(words, {.patience = patience_, .cancel = &cancel});
  if (run.end != ProgramEnd::kExited || run.status != 0) return EndedOtherwise(run, patience_);
  const auto line = run.output.view().substr(0, run.output.view().find_first_of("\r\n"));
  if (!line.empty()) return Secret(line);
  return Error{Failure::kUnavailable, Say("The password command printed no password{}", ComplaintOf(run)),
               kTryItByHand};
}

bool AccountSecrets::SavingAsksKeyring(const AccountSettings& account, const profile::SettingsStore& settings) const {
  if (!TakesFromKeyring(account)) return ResettingAsksKeyring(settings);
  return !account[kPassword].empty() || HasStaleEntry(settings);
}

bool AccountSecrets::ResettingAsksKeyring(const profile::SettingsStore& settings) const {
  const auto stored = AccountSettings::Load(settings);
  return MayHaveEntry(settings) || (stored && TakesFromKeyring(*stored));
}

bool AccountSecrets::HasStaleEntry(const profile::SettingsStore& settings) {
  const auto stored = AccountSettings::Load(settings);
  return MayHaveEntry(settings) && stored && !TakesFromKeyring(*stored);
}

Result<void> AccountSecrets::Keep(const AccountSettings& account, profile::SettingsStore& settings,
                                  const platform::CancelToken& cancel) const {
  const bool may_have = MayHaveEntry(settings);
  if (auto noted = settings.Write(kKeyringSection, kMayHaveEntry, "1"); !noted) return noted;
  auto kept = keyring_.Keep(entry_, LabelOf(account), Secret(account[kPassword]), cancel);
  if (!kept && !may_have) IgnoreErrors(settings.DeleteSection(kKeyringSection));
  return kept;
}

Result<SecretsLeft> AccountSecrets::Save(AccountSettings account, profile::SettingsStore& settings,
                                         const platform::CancelToken& cancel) const {
  const bool leaves_keyring = !TakesFromKeyring(account) && ResettingAsksKeyring(settings);
  if (TakesFromKeyring(account) && !account[kPassword].empty()) {
    if (const auto kept = Keep(account, settings, cancel); !kept) return kept.error();
  } else if (TakesFromKeyring(account) && HasStaleEntry(settings)) {
    if (auto left = Forget(settings, cancel); left.in_keyring) return *std::move(left.in_keyring);
  }
  if (PlaceOfPassword(account) != PasswordPlace::kSettings) account.ForgetPassword();
  const auto saved = account.Save(settings);
  if (!saved) return saved.error();
  return leaves_keyring ? Forget(settings, cancel) : SecretsLeft{};
}

Result<SecretsLeft> AccountSecrets::Reset(profile::SettingsStore& settings, const platform::CancelToken& cancel) const {
  const bool was_kept = ResettingAsksKeyring(settings);
  const auto deleted = settings.DeleteSection(kAccountSection);
  if (!deleted) return deleted.error();
  return was_kept ? Forget(settings, cancel) : SecretsLeft{};
}

SecretsLeft AccountSecrets::Forget(profile::SettingsStore& settings, const platform::CancelToken& cancel) const {
  const auto forgotten = keyring_.Forget(entry_, cancel);
  if (forgotten) {
    IgnoreErrors(settings.DeleteSection(kKeyringSection));  // it is asked for nothing once more
    return {};
  }
  return {Error{forgotten.error().failure, Say("The keyring still has the password: {}", forgotten.error().what),
                "Delete its entry for Quillcast Classic in the keyring's own window."}};
}

}  // namespace quillcast::account
