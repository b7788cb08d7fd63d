#include "account/account_secrets.h"

#include <fmt/format.h>

#include <array>
#include <cstring>

#include "account/account_choices.h"
#include "account/account_connection.h"
#include "account/password_place.h"
#include "platform/program_run.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::account {
namespace {

using enum AccountKey;
using platform::ProgramEnd;
using platform::Secret;

constexpr std::size_t kLongestComplaint = 300;       // octets of what the command said that are told
constexpr int kNoSuchCommand = 127;                  // sh(1)
constexpr std::chrono::seconds kOthersPatience{10};  // with who else saves the account
constexpr const char* kTryItByHand = "Try it in a terminal; it has to print the password on its first line.";

std::string OwnerOf(const std::filesystem::path& settings) {
  std::error_code failed;
  const auto whole = std::filesystem::weakly_canonical(std::filesystem::absolute(settings, failed), failed);
  return "mail account of " + (failed ? settings : whole).string();
}

std::string ShownWhom(const AccountSettings& account) { return platform::Printable(WhomOf(account), 200); }

// As the keyring's own window shows it.
std::string LabelOf(const AccountSettings& account) { return "Quillcast Classic: " + ShownWhom(account); }

Error NothingSaved(const Error& error) {
  return {error.failure, Say("Nothing was saved. {}", error.what), error.remedy};
}

// It may have done what it was asked, or do it yet.
bool GaveNoAnswer(const Error& error) {
  return error.failure == Failure::kTimedOut || error.failure == Failure::kTryAgain;
}

// The keyring says whether it may have the password all the same.
Error SettingsAsTheyWere(const Error& error) {
  return {error.failure, Say("The settings are as they were. {}", error.what), error.remedy};
}

Error SavedByAnother() {
  return {Failure::kTryAgain, "Another window or program is saving the account.", "Try again when it has done so."};
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

// One word that is no command may be the password, typed in the wrong box: the shell would repeat it.
Error NotFound(const std::string& command, const std::string& complaint) {
  const bool may_be_password = platform::Trim(command).find_first_of(" \t\n/") == std::string_view::npos;
  if (!may_be_password)
    return {Failure::kNotConfigured, Say("The password command was not found{}", complaint), kTryItByHand};
  return {Failure::kNotConfigured, "The password command was not found.",
          "Name a command that prints the password. Where it is the password itself, choose Settings or Keyring."};
}

Error EndedOtherwise(const std::string& command, const platform::ProgramRun& run, std::chrono::milliseconds patience) {
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
  if (run.status == kNoSuchCommand) return NotFound(command, complaint);
  if (run.status < 0)
    return {Failure::kUnavailable, Say("The password command was ended by a signal{}", complaint), kTryItByHand};
  return {Failure::kUnavailable, Say("The password command failed with exit code {}{}", run.status, complaint),
          kTryItByHand};
}

}  // namespace

AccountSecrets::AccountSecrets(platform::SecretStore& keyring, const std::filesystem::path& settings,
                               std::chrono::milliseconds patience)
    : keyring_(keyring),
      folder_(std::filesystem::absolute(settings).parent_path()),
      owner_(OwnerOf(settings)),
      patience_(patience) {}

Result<Secret> AccountSecrets::PasswordOf(const AccountSettings& account, const platform::CancelToken& cancel) const {
  if (!account.IsOn(kAuth)) return Secret();
  const auto place = ChosenAs<PasswordPlace>(account, kPasswordFrom);
  if (!place) return place.error();
  if (*place == PasswordPlace::kCommand) return FromCommand(account[kPasswordCommand], cancel);
  // One that is on its way into the keyring is the newer one.
  if (*place == PasswordPlace::kSettings || !account[kPassword].empty()) return Secret(account[kPassword]);
  return FromKeyring(account, cancel);
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

platform::SecretName AccountSecrets::NameOf(const AccountSettings& account) const {
  return {.owner = owner_, .server = HostsOf(account), .user = account[kUsername]};
}

Result<Secret> AccountSecrets::FromKeyring(const AccountSettings& account, const platform::CancelToken& cancel) const {
  auto found = keyring_.Find(NameOf(account), cancel);
  if (!found) return found.error();
  if (*found && !(*found)->empty()) return **std::move(found);
  return Error{Failure::kNotConfigured, NoPasswordInKeyring(account), kGivePassword};
}

Result<Secret> AccountSecrets::FromCommand(const std::string& command, const platform::CancelToken& cancel) const {
  if (platform::Trim(command).empty()) {
    return Error{Failure::kNotConfigured, "The account takes its password from a command, and names none.",
                 "Name a command that prints the password."};
  }
  const std::array<std::string, 3> words = {"/bin/sh", "-c", command};
  const auto run = platform::RunProgram(words, {.patience = patience_, .cancel = &cancel});
  if (run.end != ProgramEnd::kExited || run.status != 0) return EndedOtherwise(command, run, patience_);
  const auto line = run.output.view().substr(0, run.output.view().find_first_of("\r\n"));
  if (!line.empty() && platform::IsUtf8(line) && !platform::HoldsControl(line)) return Secret(line);
  if (!line.empty()) {
    return Error{Failure::kBadData, "What the password command printed first is no text, so it was not sent.",
                 kTryItByHand};
  }
  return Error{Failure::kUnavailable, Say("The password command printed no password{}", ComplaintOf(run)),
               kTryItByHand};
}

bool AccountSecrets::SavingAsksKeyring(const AccountSettings& account, const profile::SettingsStore& settings) const {
  const std::string kept_for = KeyringNoteOf(settings).kept_for;
  if (TakesFromKeyring(account))
    return !account[kPassword].empty() || (!kept_for.empty() && kept_for != WhomOf(account));
  const auto stored = AccountSettings::Load(settings);
  return !kept_for.empty() || (stored && TakesFromKeyring(*stored));
}

bool AccountSecrets::ResettingAsksKeyring(const profile::SettingsStore& settings) const {
  return KeyringNoteOf(settings).has_leftover || SavingAsksKeyring(AccountSettings(), settings);
}

std::optional<platform::FolderLock> AccountSecrets::Lock(const platform::CancelToken& cancel) const {
  return platform::FolderLock::Take(folder_, kOthersPatience, cancel);
}

Result<std::optional<Secret>> AccountSecrets::Keep(const AccountSettings& account, const KeyringNote& note,
                                                   profile::SettingsStore& settings,
                                                   const platform::CancelToken& cancel) const {
  std::optional<Secret> before;
  if (note.kept_for == WhomOf(account)) {
    auto found = keyring_.Find(NameOf(account), cancel);
    // One that a keyring cannot read any more is no reason to keep a new one out.
    if (!found && found.error().failure != Failure::kUnavailable) return NothingSaved(found.error());
    if (found) before = *std::move(found);
  }
  // Whatever ends the program from here on, the settings know that the keyring may have something to delete.
  if (const auto noted = Remember({note.kept_for, true}, settings); !noted) return NothingSaved(noted.error());
  const auto kept = keyring_.Keep(NameOf(account), LabelOf(account), Secret(account[kPassword]), cancel);
  if (kept) return before;
  if (GaveNoAnswer(kept.error())) return SettingsAsTheyWere(kept.error());
  IgnoreErrors(Remember(note, settings));
  return NothingSaved(kept.error());
}

Error AccountSecrets::TakeBack(const AccountSettings& account, const std::optional<Secret>& before,
                               const KeyringNote& note, profile::SettingsStore& settings, const Error& why) const {
  const platform::CancelToken to_the_end;
  const auto back = before ? keyring_.Keep(NameOf(account), LabelOf(account), *before, to_the_end)
                           : keyring_.Forget(NameOf(account), platform::Which::kNamed, to_the_end);
  if (back) {
    IgnoreErrors(Remember(note, settings));  // else it is asked once more at the next chance
    return NothingSaved(why);
  }
  return {why.failure,
          Say("The settings are as they were, but the keyring has the new password for {}. {} {}", ShownWhom(account),
              why.what, back.error().what),
          why.remedy};
}

Result<SecretsLeft> AccountSecrets::Save(AccountSettings account, profile::SettingsStore& settings,
                                         const platform::CancelToken& cancel) const {
  const auto lock = Lock(cancel);
  if (!lock) return NothingSaved(SavedByAnother());
  const bool asks_keyring = SavingAsksKeyring(account, settings);
  const bool goes_there = TakesFromKeyring(account) && !account[kPassword].empty();
  const KeyringNote note = KeyringNoteOf(settings);
  const auto before =
      goes_there ? Keep(account, note, settings, cancel) : Result<std::optional<Secret>>(std::optional<Secret>());
  if (!before) return before.error();
  if (PlaceOfPassword(account) != PasswordPlace::kSettings) account.ForgetPassword();
  if (const auto saved = account.Save(settings); !saved)
    return goes_there ? TakeBack(account, *before, note, settings, saved.error()) : NothingSaved(saved.error());
  if (goes_there) IgnoreErrors(Remember({WhomOf(account), note.has_leftover}, settings));
  return asks_keyring ? ForgetRest(account, settings, cancel) : SecretsLeft{};
}

Result<SecretsLeft> AccountSecrets::Reset(profile::SettingsStore& settings, const platform::CancelToken& cancel) const {
  const auto lock = Lock(cancel);
  if (!lock) return SavedByAnother();
  const bool was_kept = ResettingAsksKeyring(settings);
  const auto deleted = settings.DeleteSection(kAccountSection);
  if (!deleted) return deleted.error();
  return was_kept ? ForgetRest(AccountSettings(), settings, cancel) : SecretsLeft{};
}

SecretsLeft AccountSecrets::ForgetRest(const AccountSettings& account, profile::SettingsStore& settings,
                                       const platform::CancelToken& cancel) const {
  const bool stays_there = TakesFromKeyring(account);
  const auto forgotten =
      keyring_.Forget(NameOf(account), stays_there ? platform::Which::kAllOthers : platform::Which::kAll, cancel);
  const std::string kept_for = KeyringNoteOf(settings).kept_for;
  const bool has_its_own = stays_there && kept_for == WhomOf(account);
  // It is asked once more at the next chance where this cannot be remembered.
  IgnoreErrors(Remember({has_its_own ? kept_for : "", !forgotten}, settings));
  if (forgotten) return {};
  const auto& why = forgotten.error();
  return {Error{why.failure,
                stays_there ? Say("The keyring still has the password of before: {}", why.what)
                            : Say("The keyring still has the password: {}", why.what),
                "Delete its entry for Quillcast Classic in the keyring's own window."}};
}

}  // namespace quillcast::account
