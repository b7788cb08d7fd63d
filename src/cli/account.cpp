// quillcast account set|show|test|reset
#include <fmt/format.h>

#include <algorithm>

#include "cli/commands.h"
#include "cli/secret_input.h"
#include "platform/text.h"
#include "sending/account_settings.h"
#include "sending/message_options.h"
#include "sending/send_status.h"
#include "smtp/client.h"

namespace quillcast::cli {
namespace {

using sending::AccountKey;
using sending::AccountKeyRow;
using sending::AccountSettings;

constexpr const char* kHiddenPassword = "********";

struct SetOptions {
  std::vector<std::string> assignments;
  std::string password_file;
};

Result<void> CheckChoice(const AccountKeyRow& row, std::string_view value) {
  if (row.choices.empty() || std::find(row.choices.begin(), row.choices.end(), value) != row.choices.end()) return {};
  return Error{Failure::kUsage, fmt::format("{} cannot be \"{}\".", row.name, platform::Printable(value, 80)),
               fmt::format("It is one of: {}.", fmt::join(row.choices, ", "))};
}

Result<void> Assign(AccountSettings& account, const std::string& assignment) {
  const auto equals = assignment.find('=');
  const AccountKeyRow* row = sending::FindAccountKey(assignment.substr(0, equals));
  if (equals == std::string::npos || row == nullptr) {
    std::string keys;
    for (const auto& known : sending::AccountKeyRows())
      keys += fmt::format("{}{}", keys.empty() ? "" : ", ", known.name);
    return Error{Failure::kUsage,
                 fmt::format("\"{}\" is no setting of the account.", platform::Printable(assignment, 80)),
                 fmt::format("Write KEY=VALUE with one of: {}.", keys)};
  }
  if (row->key == AccountKey::kPassword) {
    return Error{Failure::kUsage, "A password must not stand on the command line, where others can read it.",
                 "Use --password-file FILE, or leave it out to be asked."};
  }
  std::string value = assignment.substr(equals + 1);
  auto choice = CheckChoice(*row, value);
  if (choice) account.Set(row->key, std::move(value));
  return choice;
}

Result<void> TakePassword(AccountSettings& account, const SetOptions& options, const Context& context) {
  const bool needed = account.IsOn(AccountKey::kAuth) && account[AccountKey::kPassword].empty() && context.may_ask;
  if (options.password_file.empty() && !needed) return {};
  auto password =
      options.password_file.empty() ? SecretFromTerminal("Password") : SecretFromFile(options.password_file);
  if (!password) return password.error();
  account.Set(AccountKey::kPassword, std::move(*password));
  return {};
}

int RunSet(Context& context, const SetOptions& options) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  app::SettingsStore settings(folders->settings);
  auto account = AccountSettings::Load(settings);
  if (!account) return context.output.Fail(account.error());
  for (const auto& assignment : options.assignments) {
    const auto assigned = Assign(*account, assignment);
    if (!assigned) return context.output.Fail(assigned.error());
  }
  const auto password = TakePassword(*account, options, context);
  if (!password) return context.output.Fail(password.error());
  if (const auto complaint = sending::CheckAccount(*account)) {
    return context.output.Complain(
        complaint->message.empty()
            ? fmt::format("\"{}\" is no e-mail address; nothing was saved. Set one: Email=you@example.org",
                          platform::Printable((*account)[AccountKey::kEmail], 80))
            : complaint->message + " Nothing was saved.");
  }
  const auto client_options = sending::ClientOptionsOf(*account);  // a server or port that could never work
  if (!client_options) {
    return context.output.Fail({Failure::kUsage, client_options.error().what, client_options.error().remedy});
  }
  if (client_options->servers.empty()) {
    return context.output.Complain("Please enter your mail server; Server names none. Nothing was saved.");
  }
  const auto saved = account->Save(settings);
  if (!saved) return context.output.Fail(saved.error());
  if (const auto note = sending::TidiedByDialog(*account); !note.empty()) context.output.Note(note);
  context.output.Line(fmt::format("The account of {} is saved.", (*account)[AccountKey::kEmail]));
  context.output.Object({{"saved", true}, {"email", (*account)[AccountKey::kEmail]}});
  return 0;
}

int RunShow(Context& context) {
  const auto account = AccountSettings::Load(app::SettingsStore(context.Folders().settings));
  if (!account) return context.output.Fail(account.error());
  nlohmann::ordered_json object;
  for (const auto& row : sending::AccountKeyRows()) {
    const bool hidden = row.key == AccountKey::kPassword && !(*account)[row.key].empty();
    const std::string value = hidden ? kHiddenPassword : (*account)[row.key];
    context.output.Line(fmt::format("{}={}", row.name, platform::Printable(value)));
    object[std::string(row.name)] = value;
  }
  context.output.Object(object);
  return 0;
}

// Follows a test of the connection; there is no message. The log is of use when the test fails.
class TestListener final : public smtp::Mailing {
 public:
  std::vector<std::string> log;

  smtp::Job* NextJob() override { return nullptr; }
  void Finished(smtp::Job&, const smtp::Outcome&) override {}
  void LogLine(std::string_view line) override { log.emplace_back(line); }
  void Progress(std::uint64_t, std::uint64_t) override {}
};

int RunTest(Context& context) {
  const auto account = AccountSettings::Load(app::SettingsStore(context.Folders().settings));
  if (!account) return context.output.Fail(account.error());
  if (const auto complaint = sending::CheckAccount(*account)) {
    return context.output.Fail(
        {Failure::kNotConfigured,
         complaint->message.empty() ? "The account's address is no e-mail address." : complaint->message,
         "Fill in the account first: quillcast account set --help"});
  }
  const auto options = sending::ClientOptionsOf(*account);
  if (!options) return context.output.Fail(options.error());
  TestListener listener;
  const smtp::Outcome outcome = smtp::Client(*options, context.clock, context.cancel).Test(listener);
  const auto code = static_cast<int>(outcome.code);
  const std::string text = code == 0 ? sending::kAccountWorks : sending::TestResultText(code);
  context.output.Object({{"code", code}, {"text", text}, {"reply", outcome.reply.text}, {"reason", outcome.reason}});
  if (code == 0) {
    context.output.Line(text);
    return 0;
  }
  for (const auto& line : listener.log) context.output.Note(line);
  context.prompts.Warn(text);
  if (!outcome.reason.empty()) context.output.Note(outcome.reason);
  if (outcome.reply.code != 0) {
    context.output.Note(
        fmt::format("The server said: {} {}", outcome.reply.code, platform::Printable(outcome.reply.text)));
  }
  return ExitCode(outcome.code == smtp::ResultCode::kCancelled ? Failure::kTryAgain : Failure::kUnavailable);
}

int RunReset(Context& context) {
  constexpr const char* kQuestion =
      "You are just about to wipe out all your SMTP settings.\r\nAre you sure you want to proceed?";
  if (context.prompts.Ask(kQuestion) != platform::Answer::kYes) return ExitCode(Failure::kNotPermitted);
  const auto deleted = app::SettingsStore(context.Folders().settings).DeleteSection(sending::kAccountSection);
  if (!deleted) return context.output.Fail(deleted.error());
  context.output.Line("The account is back to its defaults.");
  return 0;
}

}  // namespace

void AddAccountCommand(CLI::App& app, Context& context) {
  auto* account = app.add_subcommand("account", "The mail account that messages are sent with");
  account->require_subcommand(1);

  auto* set = account->add_subcommand("set", "Change settings of the account and save it");
  auto options = std::make_shared<SetOptions>();
  set->add_option("settings", options->assignments, "KEY=VALUE, as many as you like; see account show");
  set->add_option("--password-file", options->password_file, "Take the password from the first line of this file")
      ->type_name("FILE");
  set->footer(
      "Example:\n  quillcast account set Name=\"Ada\" Email=ada@example.org Server=mail.example.org Port=587 Auth=1 "
      "Username=ada --password-file secret.txt");
  OnRun(*set, context, [options](Context& c) { return RunSet(c, *options); });

  auto* show = account->add_subcommand("show", "Every setting of the account; the password is hidden");
  show->footer("Example:\n  quillcast account show");
  OnRun(*show, context, RunShow);

  auto* test = account->add_subcommand("test", "Connect to the server, sign in and leave, without sending anything");
  test->footer("Example:\n  quillcast account test");
  OnRun(*test, context, RunTest);

  auto* reset = account->add_subcommand("reset", "Set every setting of the account back to its default");
  reset->footer("Example:\n  quillcast account reset --yes");
  OnRun(*reset, context, RunReset);
}

}  // namespace quillcast::cli
