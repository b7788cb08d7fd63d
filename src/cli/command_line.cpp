#include "cli/command_line.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <functional>
#include <sstream>

#include "cli/commands.h"
#include "cli/standard_streams.h"
#include "cli/start_desktop.h"
#include "cli/terminal_prompts.h"
#include "platform/keyring.h"
#include "profile/version.h"

namespace quillcast::cli {
namespace {

constexpr const char* kDescription =
    "Quillcast Classic sends one personal e-mail to each recipient of a group.\n"
    "Without a command it opens its window, where there is a display. Start with: quillcast demo";

// Written by the standard library on its way out; a result that never arrived must not look like success.
int CheckStandardOutput(int exit_code, const platform::CancelToken& cancel) {
  if (HasStandardOutputArrived()) return exit_code;
  if (cancel.Requested() == platform::Stop::kAbandon) return ExitCode(Failure::kTryAgain);
  Print(
      stderr,
      "quillcast: Standard output could not be written.\nFree some space where it goes, or let the program that reads "
      "it read to the end.\n");
  return exit_code == 0 ? ExitCode(Failure::kIo) : exit_code;
}

std::function<bool(const CLI::App*)> IsCalled(const std::string& name) {
  return [name](const CLI::App* command) { return command->check_name(name); };
}

// Of the command that the arguments name so far, or of one above it.
const CLI::Option* FindOption(const CLI::App* command, const std::string& name) {
  const CLI::Option* option = nullptr;
  for (; command != nullptr && option == nullptr; command = command->get_parent())
    option = command->get_option_no_throw(name);
  return option;
}

// How long the name is in "--name=", with nothing behind it, or in "-n=value"; 0 for any other argument.
std::size_t NameLength(const std::string& argument) {
  const bool is_long = argument.starts_with("--");
  const bool is_short = !is_long && argument.starts_with('-');
  const std::size_t sign = argument.find('=');
  return (is_short && sign == 2) || (is_long && sign > 2 && sign == argument.size() - 1) ? sign : 0;
}

// "--name=" as "--name" and an empty value, and "-n=value" as "-n" and the value. The parser would take the argument
// behind the first for the value, and "=value" for that of the second, which nobody means. Errors: kUsage for one that
// takes no value.
Result<std::vector<std::string>> WithSplitValues(const CLI::App& app, std::vector<std::string> arguments) {
  std::vector<std::string> out;
  const CLI::App* command = &app;
  bool are_options = true;
  for (std::string& argument : arguments) {
    for (const CLI::App* named : command->get_subcommands(IsCalled(argument))) command = named;
    are_options = are_options && argument != "--";
    const std::string name = argument.substr(0, are_options ? NameLength(argument) : 0);
    const CLI::Option* option = name.empty() ? nullptr : FindOption(command, name);
    if (option == nullptr) {  // the parser refuses one that it does not know as it was typed
      out.push_back(std::move(argument));
      continue;
    }
    if (option->get_expected_max() == 0) {
      return Error{Failure::kUsage, Say("{} takes no value.", name),
                   "Leave the \"=\" out, or the option, where it is not meant."};
    }
    out.push_back(name);
    out.push_back(argument.substr(name.size() + 1));
  }
  return out;
}

// Texts that may be empty. Every other option names something, and a script with an empty variable does not mean to
// leave it out.
constexpr std::array kMayBeEmpty = {
    "--subject",    "--sheet", "--heading", "--company", "--web", "--unsubscribe", "--unsubscribe-subject",
    "--description"};

// Numbers of `compose` that the core refuses in the words of the windows, where they are empty too.
constexpr std::array kRefusedLater = {"--rows",    "--columns", "--border", "--spacing",
                                      "--padding", "--width",   "--height"};

// That no group is named where one is needed is told as in a window, too.
bool MayBeEmpty(const CLI::Option& option) {
  if (option.get_required() && option.check_name("--group")) return true;
  const auto is_named = [&option](const char* name) { return option.check_name(name); };
  return std::any_of(kMayBeEmpty.begin(), kMayBeEmpty.end(), is_named) ||
         std::any_of(kRefusedLater.begin(), kRefusedLater.end(), is_named);
}

void RefuseEmptyValues(CLI::App& command) {
  for (CLI::Option* option : command.get_options()) {
    if (!option->nonpositional() || option->get_expected_max() == 0 || MayBeEmpty(*option)) continue;
    option->check([](const std::string& given) { return given.empty() ? "names nothing" : std::string(); });
  }
  for (CLI::App* below : command.get_subcommands([](CLI::App*) { return true; })) RefuseEmptyValues(*below);
}

// In the order of the help.
void AddCommands(CLI::App& app, Context& context) {
  AddDemoCommand(app, context);
  AddAccountCommand(app, context);
  AddGroupCommand(app, context);
  AddRecipientCommand(app, context);
  AddFindCommand(app, context);
  AddImportCommand(app, context);
  AddExportCommand(app, context);
  AddComposeCommand(app, context);
  AddTemplateCommand(app, context);
  AddSignatureCommand(app, context);
  AddPreviewCommand(app, context);
  AddPropertiesCommand(app, context);
  AddSendCommand(app, context);
  AddRunsCommand(app, context);
  AddHistoryCommand(app, context);
  AddMessageCommand(app, context);
  AddServerCommand(app, context);
  AddDomainCommand(app, context);
  AddSupportCommand(app, context);
  AddMailboxCommand(app, context);
  AddUpdateCommand(app, context);
  AddAboutCommand(app, context);
  AddHelpCommand(app, context);
}

}  // namespace

int RunCommandLine(std::vector<std::string> arguments, const std::filesystem::path& executable,
                   platform::CancelToken& cancel) {
  Output output;
  TerminalPrompts prompts;
  platform::SystemClock clock;
  platform::SystemEntropy entropy;
  platform::ProcessEnvironment environment;
  platform::Keyring keyring(platform::KeyringPlaceOf(environment));
  Context context{output, prompts, clock, entropy, environment, cancel, keyring, executable, {}};

  CLI::App app(kDescription, "quillcast");
  bool no_input = false;
  app.set_version_flag("--version",
                       fmt::format("Quillcast Classic {}.{}", profile::kVersionMajor, profile::kVersionMinor));
  app.add_flag("--json", output.json, "Results as JSON, one object a line");
  app.add_flag("--quiet", output.quiet, "No notes on standard error, only failures");
  app.add_flag("--yes", prompts.assume_yes,
               "Answer every question with Yes, but not that for pictures from other folders");
  app.add_flag("--no-input", no_input, "Never ask; questions count as answered with No");
  app.add_option("--profile", context.profile, "Keep settings, recipients and history below this folder")
      ->type_name("DIR");
  app.require_subcommand(0, 1);
  app.fallthrough();  // these options may also stand behind the command
  app.parse_complete_callback([&] {
    context.may_ask = prompts.may_ask = keyring.may_ask = !no_input && ::isatty(STDIN_FILENO) != 0;
    context.assume_yes = prompts.assume_yes;
  });

  AddCommands(app, context);
  RefuseEmptyValues(app);

  auto parsed = WithSplitValues(app, std::move(arguments));
  if (!parsed) return output.Fail(parsed.error());
  std::reverse(parsed->begin(), parsed->end());  // the parser takes them from the back
  try {  // the parser tells wrong usage, --help and --version by exceptions; they end here
    app.parse(std::move(*parsed));
  } catch (const CLI::ParseError& error) {
    std::ostringstream shown;
    const int exit_code = app.exit(error, shown);
    Print(stdout, shown.str());
    return CheckStandardOutput(exit_code == 0 ? 0 : ExitCode(Failure::kUsage), cancel);
  }
  if (app.get_subcommands().empty()) {
    output.Note(InOneLine(StartDesktop(executable, context.profile, environment)));
    Print(stdout, app.help());
  }
  return CheckStandardOutput(context.exit_code, cancel);
}

}  // namespace quillcast::cli
