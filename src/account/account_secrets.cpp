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

constexpr std::size_t kLongestComplaint = 300;  // octets of what the command said that are told
constexpr int kNoSuchCommand = 127;             // sh(1)
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

Error NothingReset(const Error& error) {
  return {error.failure, Say("Nothing was reset. {}", error.what), error.remedy};
}

// The keyring says whether it may have the password all the same.
Error SettingsAsTheyWere(const Error& error) {
  return {error.failure, Say("The settings are as they were. {}", error.what), error.remedy};
}

// Without a note of it, and without an answer, nobody knows whether there is anything.
Error StillThere(const Error& why, bool is_noted, bool has_newer) {
  const Sentence what = has_newer ? "the password of before" : "the password";
  const bool is_known = is_noted && why.failure != Failure::kTimedOut;
  return {why.failure,
          is_known ? Say("The keyring still has {}: {}", what, why.what)
                   : Say("The keyring may still have {}: {}", what, why.what),
          "Delete its entry for Quillcast Classic in the keyring's own window."};
}

bool TakesFromKeyring(const AccountSettings& account) { return PlaceOfPassword(account) == PasswordPlace::kKeyring; }

// Whether the keyring is known to have what this account does not use.
bool HasMore(const StoredAccount& before, const AccountSettings& account) {
  if (before.note.has_leftover) return true;
  if (before.note.kept_for.empty()) return TakesFromKeyring(before.account) && !TakesFromKeyring(account);
  return !TakesFromKeyring(account) || before.note.kept_for != WhomOf(account);
}

// What the command said about its failure, to end the sentence with. A password that it printed already is not
// repeated.
std::string ComplaintOf(const platform::ProgramRun& run) {
  std::string said = platform::ReplaceAll(platform::Trim(run.complaint), "\n", " ");
  const auto printed = platform::Trim(run.output.view());
  if (!printed.empty()) said = platform::ReplaceAll(said, printed.substr(0, printed.find_first_of("\r\n")), "****");
  return said.empty() ? "." : fmt::format(", and said: \"{}\".", platform::Printable(said, kLongestComplaint));
}

// It may be the password, typed in the wrong box: what the shell says would repeat it.
Error NotFound() {
  return {Failure::kNotConfigured, "The password command was not found.",
          "Name a command that prints the password. Where it is the password itself, choose Settings or Keyring."};
}

Error EndedOtherwise(const platform::ProgramRun& run, std::chrono::milliseconds patience) {
  switch (run.end) {
    case ProgramEnd::kExited:
      break;
    case ProgramEnd::kNotStarted:
      return {Failure::kUnavailable, Say("The password command could not be started: {}.", std::strerror(run.status)),
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
  if (run.status == kNoSuchCommand) return NotFound();
  if (run.status < 0)
    return {Failure::kUnavailable, Say("The password command was ended by a signal{}", complaint), kTryItByHand};
  return {Failure::kUnavailable, Say("The password command failed with exit code {}{}", run.status, complaint),
          kTryItByHand};
}

}  // namespace

AccountSecrets::AccountSecrets(platform::SecretStore& keyring, const std::filesystem::path& settings,
                               std::chrono::milliseconds patience)
    : keyring_(keyring), owner_(OwnerOf(settings)), patience_(patience) {}

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
  if (run.end != ProgramEnd::kExited || run.status != 0) return EndedOtherwise(run, patience_);
  const auto line = run.output.view().substr(0, run.output.view().find_first_of("\r\n"));
  if (!line.empty() && platform::IsUtf8(line) && !platform::HoldsControl(line)) return Secret(line);
  if (!line.empty()) {
    return Error{Failure::kBadData, "What the password command printed first is no text, so it was not sent.",
                 kTryItByHand};
  }
  return Error{Failure::kUnavailable, Say("The password command printed no password{}", ComplaintOf(run)),
               kTryItByHand};
}

bool AccountSecrets::Asks(const AccountSettings& account, const StoredAccount& stored) {
  if (TakesFromKeyring(account)) return !account[kPassword].empty();
  return !stored.note.kept_for.empty() || TakesFromKeyring(stored.account);
}

bool AccountSecrets::SavingAsksKeyring(const AccountSettings& account, const profile::SettingsStore& settings) const {
  const auto stored = LoadStored(settings);
  return stored && Asks(account, *stored);
}

bool AccountSecrets::ResettingAsksKeyring(const profile::SettingsStore& settings) const {
  const auto stored = LoadStored(settings);
  return stored && (stored->note.has_leftover || Asks(AccountSettings(), *stored));
}

Result<AccountSecrets::KeptBefore> AccountSecrets::Keep(const AccountSettings& account, const KeyringNote& note,
                                                        profile::SettingsStore& settings,
                                                        const platform::CancelToken& cancel) const {
  KeptBefore before;
  if (note.kept_for == WhomOf(account)) {
    auto found = keyring_.Find(NameOf(account), cancel);
    // One that a keyring cannot read any more is no reason to keep a new one out.
    before.is_unreadable = !found && found.error().failure == Failure::kUnavailable;
    if (!found && !before.is_unreadable) return NothingSaved(found.error());
    if (found) before.secret = *std::move(found);
  }
  // Whatever ends the program from here on, the settings know that the keyring may have something to delete.
  if (const auto noted = Remember({note.kept_for, true}, settings); !noted) return NothingSaved(noted.error());
  const auto kept = keyring_.Keep(NameOf(account), LabelOf(account), Secret(account[kPassword]), cancel);
  if (!kept.failed) return before;
  if (kept.may_have_it) return SettingsAsTheyWere(*kept.failed);
  IgnoreErrors(Remember(note, settings));
  return NothingSaved(*kept.failed);
}

Error AccountSecrets::TakeBack(const AccountSettings& account, const KeptBefore& before, const KeyringNote& note,
                               profile::SettingsStore& settings, const Error& why) const {
  const platform::CancelToken to_the_end;
  std::optional<Error> stays;
  if (before.secret) {
    stays = keyring_.Keep(NameOf(account), LabelOf(account), *before.secret, to_the_end).failed;
  } else if (const auto gone = keyring_.Forget(NameOf(account), platform::Which::kNamed, to_the_end); !gone) {
    stays = gone.error();
  }
  if (stays) {
    return {why.failure,
            Say("The settings are as they were, but the keyring has the new password for {}. {} {}", ShownWhom(account),
                why.what, stays->what),
            why.remedy};
  }
  // Else it is asked once more at the next chance.
  IgnoreErrors(Remember({before.is_unreadable ? "" : note.kept_for, note.has_leftover}, settings));
  if (!before.is_unreadable) return NothingSaved(why);
  return {why.failure,
          Say("The settings are as they were, but the keyring has no password for {} any more: it could not read the "
              "one that it had. {}",
              ShownWhom(account), why.what),
          why.remedy};
}

Result<SavedAccount> AccountSecrets::Save(const AccountChange& change, profile::SettingsStore& settings,
                                          const platform::CancelToken& cancel) const {
  const auto lock = LockAccount(settings, kOthersPatience, cancel);
  return lock ? SaveLocked(change, settings, cancel) : NothingSaved(lock.error());
}

std::optional<Result<SavedAccount>> AccountSecrets::SaveAtOnce(const AccountChange& change,
                                                               profile::SettingsStore& settings) const {
  const platform::CancelToken never;
  const auto lock = LockAccount(settings, std::chrono::milliseconds(0), never);
  if (!lock) return {};
  const auto stored = LoadStored(settings);
  const auto account = stored ? change.Onto(stored->account) : Result<AccountSettings>(stored.error());
  if (account && Asks(*account, *stored)) return {};
  return SaveLocked(change, settings, never);
}

Result<SavedAccount> AccountSecrets::SaveLocked(const AccountChange& change, profile::SettingsStore& settings,
                                                const platform::CancelToken& cancel) const {
  const auto stored = LoadStored(settings);
  if (!stored) return NothingSaved(stored.error());
  auto account = change.Onto(stored->account);
  if (!account) return NothingSaved(account.error());
  if (const auto refused = change.Refusal(*account, stored->note.kept_for))
    return NothingSaved(ChangedMeanwhile(*refused));
  const bool asks_keyring = Asks(*account, *stored);
  const bool goes_there = TakesFromKeyring(*account) && !(*account)[kPassword].empty();
  auto before = goes_there ? Keep(*account, stored->note, settings, cancel) : Result<KeptBefore>(KeptBefore());
  if (!before) return before.error();
  if (PlaceOfPassword(*account) != PasswordPlace::kSettings) account->ForgetPassword();
  // The account never names what the note does not know of.
  const KeyringNote note = goes_there ? KeyringNote{WhomOf(*account), HasMore(*stored, *account)} : stored->note;
  if (const auto saved = SaveStored({*account, note}, settings); !saved) {
    return goes_there ? TakeBack(*account, *before, stored->note, settings, saved.error())
                      : NothingSaved(saved.error());
  }
  auto left = asks_keyring ? ForgetRest(*account, *stored, Rest::kNoted, settings, cancel) : SecretsLeft{};
  return SavedAccount{*std::move(account), std::move(left.in_keyring)};
}

Result<SecretsLeft> AccountSecrets::Reset(profile::SettingsStore& settings, const platform::CancelToken& cancel) const {
  const auto lock = LockAccount(settings, kOthersPatience, cancel);
  return lock ? ResetLocked(settings, cancel) : NothingReset(lock.error());
}

std::optional<Result<SecretsLeft>> AccountSecrets::ResetAtOnce(profile::SettingsStore& settings) const {
  const platform::CancelToken never;
  const auto lock = LockAccount(settings, std::chrono::milliseconds(0), never);
  if (!lock || ResettingAsksKeyring(settings)) return {};
  return ResetLocked(settings, never);
}

Result<SecretsLeft> AccountSecrets::ResetLocked(profile::SettingsStore& settings,
                                                const platform::CancelToken& cancel) const {
  const auto stored = LoadStored(settings);
  if (!stored) return NothingReset(stored.error());
  const auto deleted = settings.DeleteSection(kAccountSection);
  if (!deleted) return NothingReset(deleted.error());
  const bool was_kept = stored->note.has_leftover || Asks(AccountSettings(), *stored);
  return was_kept ? ForgetRest(AccountSettings(), *stored, Rest::kAll, settings, cancel) : SecretsLeft{};
}

// Where the note tells what there is, that alone is deleted. Where it tells of more, or of nothing (an older version
// kept it, or the settings were made anew), it is all that the profile has there and the account does not use.
SecretsLeft AccountSecrets::ForgetRest(const AccountSettings& account, const StoredAccount& before, Rest rest,
                                       profile::SettingsStore& settings, const platform::CancelToken& cancel) const {
  const bool stays_there = TakesFromKeyring(account);
  const std::string own = stays_there ? WhomOf(account) : "";
  const auto noted = before.note.has_leftover ? std::nullopt : WhomNamedBy(before.note.kept_for);
  if (noted && before.note.kept_for == own) return {};
  const auto forgotten =
      noted && rest == Rest::kNoted
          ? keyring_.Forget({owner_, noted->hosts, noted->user}, platform::Which::kNamed, cancel)
          : keyring_.Forget(NameOf(account), stays_there ? platform::Which::kAllOthers : platform::Which::kAll, cancel);
  const bool has_more = !forgotten && HasMore(before, account);
  // It is asked once more at the next chance where this cannot be remembered.
  IgnoreErrors(Remember({own, has_more}, settings));
  if (!has_more) return {};
  return {StillThere(forgotten.error(), noted.has_value(), stays_there)};
}

}  // namespace quillcast::account
