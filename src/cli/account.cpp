// quillcast account set|show|test|import|threads|reset
#include <fmt/format.h>

#include "account/account_connection.h"
#include "account/account_form.h"
#include "account/account_steps.h"
#include "account/component_values.h"
#include "account/keyring_note.h"
#include "account/password_place.h"
#include "account/practice.h"
#include "cli/account_commands.h"
#include "cli/account_values.h"
#include "cli/commands.h"
#include "platform/text.h"
#include "smtp/outcome_text.h"

namespace quillcast::cli {
namespace {

using account::AccountKey;
using account::AccountSettings;
using account::ThreadProtocol;

constexpr const char* kHiddenPassword = "********";

struct ThreadOptions {
  std::array<std::string, account::kThreadSections.size()> modes;  // empty for one that stays
};

// Fails, in words, for a server or port that could never work.
Result<smtp::ClientOptions> ConnectionOf(const AccountSettings& account) {
  auto options = account::ConnectionOptionsOf(account);
  if (!options) return Error{Failure::kUsage, options.error().what, options.error().remedy};
  return options;
}

account::AccountSecrets SecretsOf(const Context& context) { return {context.keyring, context.Folders().settings}; }

int RunSet(Context& context, const AccountValueOptions& options) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  profile::SettingsStore settings(folders->settings);
  auto values = AccountWith(options, settings, context);
  if (!values) return context.output.Fail(values.error());
  const std::string forgotten = account::ForgetUnusedSignIn(values->account);
  const account::AccountChange change = values->Change();
  if (const auto complaint = change.Refusal(values->account, values->stored.note.kept_for)) {
    const std::string why = complaint->message.empty() ? complaint->reason.InEnglish() : complaint->message;
    const bool is_address = complaint->control == account::ControlOf(AccountKey::kEmail);
    return context.output.Complain(why + " Nothing was saved." + (is_address ? " Set one: Email=you@example.org" : ""));
  }
  const auto connection = ConnectionOf(values->account);
  if (!connection) return context.output.Fail(connection.error());
  const auto saved = SecretsOf(context).Save(change, settings, context.cancel);
  if (!saved) return context.output.Fail(saved.error());
  EndPracticeWhereLeft(context, settings);
  const AccountSettings account = IgnoreErrors(AccountSettings::Load(settings), saved->account);  // as practice left it
  if (!forgotten.empty()) context.output.Note(fmt::format("Without Auth=1 these are not kept: {}.", forgotten));
  for (const auto& note : account::TidiedByDialog(account, values->given)) context.output.Note(note.InEnglish());
  if (saved->in_keyring) context.output.Note(InOneLine(*saved->in_keyring));
  const auto texts = account::TextsOf(account);
  const std::string& email = account[AccountKey::kEmail];
  context.output.Line(email.empty() ? "The account is saved." : fmt::format("The account of {} is saved.", email));
  context.output.Object({{"saved", true}, {"email", email}, {"from", texts.from}, {"method", texts.method}});
  return 0;
}

void ShowThreads(const Context& context, const account::ThreadModes& threads, nlohmann::ordered_json& object) {
  for (std::size_t i = 0; i < account::kThreadSections.size(); ++i) {
    const auto mode = account::Name(threads[static_cast<ThreadProtocol>(i)]);
    context.output.Line(fmt::format("{}={}", account::kThreadSections[i], mode));
    object[std::string(account::kThreadSections[i])] = mode;
  }
}

int RunShow(Context& context) {
  const profile::SettingsStore settings(context.Folders().settings);
  const auto account = AccountSettings::Load(settings);
  if (!account) return context.output.Fail(account.error());
  const auto threads = account::ThreadModes::Load(settings);
  if (!threads) return context.output.Fail(threads.error());
  const std::string kept_for = account::KeyringNoteOf(settings).kept_for;
  nlohmann::ordered_json object;
  for (const auto& row : account::AccountKeyRows()) {
    const bool is_password = row.key == AccountKey::kPassword;
    const std::string value = is_password && !(*account)[row.key].empty() ? kHiddenPassword : (*account)[row.key];
    const std::string place = is_password ? account::PasswordPlaceText(*account, kept_for).InEnglish() : std::string();
    context.output.Line(place.empty() ? fmt::format("{}={}", row.name, platform::Printable(value))
                                      : fmt::format("{}=({})", row.name, place));
    object[std::string(row.name)] = value;
  }
  ShowThreads(context, *threads, object);
  context.output.Object(object);
  return 0;
}

// What the client was given, as the mail component counts it.
nlohmann::ordered_json Given(const AccountSettings& account, const account::ThreadModes& threads) {
  const auto values = account::ComponentValuesOf(account, threads[ThreadProtocol::kSmtp]);
  nlohmann::ordered_json given = {{"server", account[AccountKey::kServer]},
                                  {"port", account[AccountKey::kPort]},
                                  {"security", account[AccountKey::kSecurity]},
                                  {"timeout", values.timeout_seconds},
                                  {"auth", account.IsOn(AccountKey::kAuth)},
                                  {"auth_mode", values.auth_mode},
                                  {"pipeline", account.IsOn(AccountKey::kPipeline)},
                                  {"options", nullptr},
                                  {"threading", values.threading}};
  if (values.options) given["options"] = *values.options;
  return given;
}

// The text of the dialog's box first, then what the server and the client say about it.
int TellFailedTest(Context& context, const account::AccountTest& test) {
  for (const auto& line : test.log) context.output.Note(line);
  context.prompts.Warn(test.text);
  const auto& outcome = test.outcome;
  if (!outcome.reason.empty()) context.output.Note(outcome.reason);
  if (outcome.reply.code != 0) context.output.Note("The server said: " + smtp::ReplyText(outcome.reply));
  if (outcome.code == smtp::ResultCode::kCancelled) return ExitCode(Failure::kTryAgain);
  if (outcome.code != smtp::ResultCode::kNoServer) return ExitCode(Failure::kUnavailable);
  context.output.Note("Fill in the account first: quillcast account set --help");
  return ExitCode(Failure::kNotConfigured);
}

int RunTest(Context& context, const AccountValueOptions& options) {
  const profile::SettingsStore settings(context.Folders().settings);
  const auto values = AccountWith(options, settings, context);
  if (!values) return context.output.Fail(values.error());
  const auto threads = account::ThreadModes::Load(settings);
  if (!threads) return context.output.Fail(threads.error());
  const auto connection = ConnectionOf(values->account);
  if (!connection) return context.output.Fail(connection.error());
  const auto test = account::TestAccount(values->account, SecretsOf(context), context.clock, context.cancel);
  context.output.Object({{"code", static_cast<int>(test.outcome.code)},
                         {"text", test.text},
                         {"reply_code", test.outcome.reply.code},
                         {"reply", test.outcome.reply.text},
                         {"reason", test.outcome.reason},
                         {"given", Given(values->account, *threads)}});
  if (!test.Works()) return TellFailedTest(context, test);
  context.output.Line(test.text);
  return 0;
}

int RunThreads(Context& context, const ThreadOptions& options) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  profile::SettingsStore settings(folders->settings);
  auto threads = account::ThreadModes::Load(settings);
  if (!threads) return context.output.Fail(threads.error());
  bool changed = false;
  for (std::size_t i = 0; i < options.modes.size(); ++i) {
    if (options.modes[i].empty()) continue;
    threads->Set(static_cast<ThreadProtocol>(i), account::ThreadModeFrom(options.modes[i]));
    changed = true;
  }
  const auto saved = changed ? threads->Save(settings) : Result<void>();
  if (!saved) return context.output.Fail(saved.error());
  nlohmann::ordered_json object;
  ShowThreads(context, *threads, object);
  context.output.Line(account::kThreadModesNote);
  object["effect"] = false;
  object["note"] = account::kThreadModesNote;
  context.output.Object(object);
  return 0;
}

int RunReset(Context& context) {
  profile::SettingsStore settings(context.Folders().settings);
  if (!account::AgreesToReset(context.prompts)) return ExitCode(Failure::kNotPermitted);
  const auto reset = SecretsOf(context).Reset(settings, context.cancel);
  if (!reset) return context.output.Fail(reset.error());
  if (reset->in_keyring) context.output.Note(InOneLine(*reset->in_keyring));
  EndPracticeWhereLeft(context, settings);
  const auto texts = account::TextsAfterReset(settings);
  if (!texts) return context.output.Fail(texts.error());
  context.output.Line("The account is back to its defaults.");
  context.output.Object({{"reset", true}, {"from", texts->from}, {"method", texts->method}});
  return 0;
}

void AddThreads(CLI::App& account, Context& context) {
  auto* threads = account.add_subcommand("threads", "Show or change the threading modes: No, Single, Second");
  auto options = std::make_shared<ThreadOptions>();
  constexpr std::array<const char*, account::kThreadSections.size()> kNames = {"--smtp", "--pop3", "--imap4"};
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    threads->add_option(kNames[i], options->modes[i], fmt::format("The mode of {}", account::kThreadSections[i]))
        ->check(CLI::IsMember(std::vector<std::string>(account::kThreadModes.begin(), account::kThreadModes.end())));
  }
  threads->footer(fmt::format("{}\n\nExample:\n  quillcast account threads --smtp Single", account::kThreadModesNote));
  OnRun(*threads, context, [options](Context& c) { return RunThreads(c, *options); });
}

}  // namespace

void EndPracticeWhereLeft(Context& context, profile::SettingsStore& settings) {
  account::Practice practice(settings, context.clock, context.Folders().data / "Practice");
  const auto ended = practice.EndWhereLeft();
  if (!ended) return context.output.Note(InOneLine(ended.error()));
  if (*ended) context.output.Note(account::InWords(**ended).InEnglish());
}

void AddAccountCommand(CLI::App& app, Context& context) {
  auto* account = app.add_subcommand("account", "The mail account that messages are sent with");
  account->require_subcommand(1);

  auto* set = account->add_subcommand("set", "Change settings of the account and save it");
  auto set_options = std::make_shared<AccountValueOptions>();
  AddAccountValueOptions(*set, *set_options);
  set->footer(
      "Example:\n  quillcast account set Name=\"Ada\" Email=ada@example.org Server=mail.example.org Port=587 Auth=1 "
      "Username=ada --password-file secret.txt\n  quillcast account set --password-from Keyring\n  quillcast account "
      "set --password-command 'pass show mail/ada'");
  OnRun(*set, context, [set_options](Context& c) { return RunSet(c, *set_options); });

  auto* show =
      account->add_subcommand("show", "Every setting of the account; the password is hidden, and told where it is");
  show->footer("Example:\n  quillcast account show");
  OnRun(*show, context, RunShow);

  auto* test = account->add_subcommand(
      "test", "Connect to the server, sign in and leave, without sending anything; values given here are not saved");
  auto test_options = std::make_shared<AccountValueOptions>();
  AddAccountValueOptions(*test, *test_options);
  test->footer("Example:\n  quillcast account test\n  quillcast account test Port=587 Security=STARTTLS");
  OnRun(*test, context, [test_options](Context& c) { return RunTest(c, *test_options); });

  AddAccountImport(*account, context);
  AddThreads(*account, context);

  auto* reset = account->add_subcommand("reset", "Set every setting of the account back to its default");
  reset->footer("Example:\n  quillcast account reset --yes");
  OnRun(*reset, context, RunReset);
}

}  // namespace quillcast::cli
