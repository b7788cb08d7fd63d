// quillcast account import: what other mail programs know already
#include "account/import/account_import.h"

#include <fmt/format.h>

#include <memory>

#include "account/account_steps.h"
#include "account/import/find_accounts.h"
#include "account/keyring_note.h"
#include "cli/account_commands.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

using account::AccountKey;
using account::FoundAccount;
using account::FoundAccounts;

struct AccountImportOptions {
  std::string account;  // its number or name; empty for a list
  std::string home;     // in place of one's own
  account::TakenBeside beside;
};

// An empty word is a variable of a script that holds nothing.
std::string NamesSomething(const std::string& given) { return given.empty() ? "it is empty" : ""; }

FoundAccounts FindWith(const Context& context, const AccountImportOptions& options) {
  const auto roots = options.home.empty() ? account::AccountRoots(context.environment)
                                          : account::AccountRoots(std::filesystem::path(options.home));
  return account::FindAccounts(roots, context.cancel);
}

nlohmann::ordered_json AsObject(const FoundAccount& found) {
  return {{"account", found.account_name}, {"name", found.name},       {"email", found.email},
          {"server", found.server},        {"port", found.port},       {"security", found.security},
          {"user_name", found.user_name},  {"program", found.program}, {"file", found.file.string()}};
}

void TellPassedOver(const Context& context, const FoundAccounts& found) {
  for (const Sentence& why : found.passed_over) context.output.Note(why.InEnglish());
  if (found.also_passed_over > 0)
    context.output.Note(fmt::format("And {} more of the same kind.", platform::WithThousands(found.also_passed_over)));
}

int ListAccounts(const Context& context, const FoundAccounts& found) {
  std::size_t number = 0;
  for (const FoundAccount& account : found.accounts) {
    ++number;
    context.output.Columns({std::to_string(number), account.account_name, account::SenderOf(account),
                            account::ServerOf(account).InEnglish(), std::string(account.program)});
    nlohmann::ordered_json object = {{"number", number}};
    object.update(AsObject(account));
    context.output.Object(object);
  }
  TellPassedOver(context, found);
  if (found.accounts.empty()) {
    context.output.Note(
        "No account of Thunderbird, Evolution or Claws Mail was found. Fill yours in: quillcast account "
        "set --help");
  }
  return 0;
}

// What was asked for and the account does not have.
void TellMissing(const Context& context, const FoundAccount& found, const account::TakenBeside& beside) {
  const auto tell = [&](bool asked, const std::string& value, std::string_view what) {
    if (asked && value.empty()) context.output.Note(fmt::format("The account has no {}; ours stays.", what));
  };
  if (beside.port && found.port.empty()) context.output.Note("The account has no port; 25 was set.");
  tell(beside.security, found.security, "security");
  tell(beside.user_name, found.user_name, "user name");
}

int Take(Context& context, const FoundAccount& found, const account::TakenBeside& beside) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  profile::SettingsStore settings(folders->settings);
  const auto written = account::ImportAccount(settings, found, beside, account::kOthersPatience, context.cancel);
  if (!written) return context.output.Fail(written.error());
  EndPracticeWhereLeft(context, settings);
  const auto saved = account::AccountSettings::Load(settings);
  if (!saved) return context.output.Fail(saved.error());
  nlohmann::ordered_json values;
  for (const AccountKey key : *written) values[std::string(account::RowOf(key).name)] = (*saved)[key];
  context.output.Line(fmt::format("The account of {} is taken over, port {}.", (*saved)[AccountKey::kEmail],
                                  (*saved)[AccountKey::kPort]));
  context.output.Object({{"imported", true}, {"from", account::TextsOf(*saved).from}, {"written", values}});
  TellMissing(context, found, beside);
  const std::string told =
      account::PasswordAfterImport(*saved, *written, account::KeyringNoteOf(settings).kept_for).InEnglish();
  if (!told.empty()) context.output.Note(told + " quillcast account set --password-file FILE");
  return 0;
}

int RunAccountImport(Context& context, const AccountImportOptions& options) {
  std::error_code failed;
  if (!options.home.empty() && !std::filesystem::is_directory(options.home, failed)) {
    return context.output.Fail({Failure::kNoInput,
                                Say("There is no folder \"{}\".", platform::Printable(options.home, 200)),
                                "Name the home folder that the accounts are below."});
  }
  const FoundAccounts found = FindWith(context, options);
  if (context.cancel.Requested() != platform::Stop::kNone) return ExitCode(Failure::kTryAgain);
  if (options.account.empty()) return ListAccounts(context, found);
  const auto chosen = account::ChooseAccount(found.accounts, options.account);
  if (chosen) return Take(context, *chosen, options.beside);
  TellPassedOver(context, found);
  return context.output.Fail(chosen.error());
}

}  // namespace

void AddAccountImport(CLI::App& account, Context& context) {
  auto* command = account.add_subcommand(
      "import", "List the accounts of Thunderbird, Evolution and Claws Mail, or take one over; never a password");
  auto options = std::make_shared<AccountImportOptions>();
  command->add_option("ACCOUNT", options->account, "Its number in the list, or its name; without it the list is shown")
      ->check(NamesSomething);
  command->add_flag("--port", options->beside.port, "Take its port too, in place of 25");
  command->add_flag("--security", options->beside.security, "Take over how its connection is secured too");
  command->add_flag("--user-name", options->beside.user_name, "Take its user name too, and sign in with it");
  command->add_option("--home", options->home, "Look below this home folder, such as that of an old disk")
      ->type_name("DIR")
      ->check(NamesSomething);
  command->footer("Example:\n  quillcast account import\n  quillcast account import 1 --port --security --user-name");
  OnRun(*command, context, [options](Context& c) { return RunAccountImport(c, *options); });
}

}  // namespace quillcast::cli
