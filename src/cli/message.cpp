// quillcast message: message files, taken apart.
#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "cli/commands.h"
#include "cli/message_commands.h"
#include "cli/standard_input.h"
#include "mail_file/load_settings.h"

namespace quillcast::cli {
namespace {

using mail_file::LoadMode;

Result<LoadMode> ModeOf(const Context& context, const MessageFiles& files) {
  if (files.extended) return LoadMode::kExtended;
  return mail_file::LoadModeOf(profile::SettingsStore(context.Folders().settings));
}

void TellFaults(const Context& context, const std::string& name, const mail_file::Loading& loading) {
  for (const mail_file::LoadFault& fault : loading.faults)
    context.output.Note(fmt::format("{}: {} {}", name, mail_file::TextOf(fault.code), fault.what.InEnglish()));
  if (const Sentence why = mail_file::WhyNoMessage(*loading.message); !why.empty())
    context.output.Note(fmt::format("{}: {}", name, why.InEnglish()));
}

int UseFile(Context& context, const std::string& name, LoadMode mode, const UseMessage& use) {
  const auto input = InputFile::Of(name, context.Folders().temporary, context.cancel);
  if (!input) return context.output.Fail(input.error());
  const std::string shown = name == "-" ? "standard input" : name;
  const auto loading = mail_file::Load(input->path(), {mode, &context.cancel, shown});
  if (!loading) return context.output.Fail(loading.error());
  if (!loading->message) {
    const mail_file::LoadFault& fault = loading->faults.front();
    return context.output.Fail({Failure::kNoInput, std::string(mail_file::TextOf(fault.code)), fault.what});
  }
  TellFaults(context, shown, *loading);
  if (const int failed = use({name, input->path(), mode, *loading}); failed != 0) return failed;
  return loading->code() == mail_file::LoadCode::kLoaded ? 0 : ExitCode(Failure::kBadData);
}

}  // namespace

void AddMessageFiles(CLI::App& command, MessageFiles& files) {
  command.add_option("FILE", files.names, "Message files (.eml); \"-\" for standard input")->required();
  command.add_flag("--extended", files.extended, "Read leniently, whatever the account's \"Extended\" says");
}

void AddBodyFormat(CLI::App& command, mail_file::BodyFormat& format, const char* help) {
  static constexpr std::array<const char*, 4> kNames = {"text", "html", "rtf", "xml"};  // by BodyFormat
  const auto take = [&format](const std::string& name) {
    format = static_cast<mail_file::BodyFormat>(std::ranges::find(kNames, name) - kNames.begin());
  };
  command.add_option_function<std::string>("-f,--format", take, help)
      ->transform(CLI::IsMember(std::vector<std::string>(kNames.begin(), kNames.end()), CLI::ignore_case))
      ->type_name("FORM");
}

int WithMessages(Context& context, const MessageFiles& files, const UseMessage& use) {
  const auto mode = ModeOf(context, files);
  if (!mode) return context.output.Fail(mode.error());
  int exit_code = 0;
  for (const std::string& name : files.names) {
    if (const int failed = UseFile(context, name, *mode, use); failed != 0) exit_code = failed;
    if (exit_code == ExitCode(Failure::kTryAgain)) break;
  }
  return exit_code;
}

Result<void> CheckNamesAFile(const std::string& file) {
  if (file != "-") return {};
  return Error{Failure::kUsage, "Nothing of a message is written to standard output.",
               "Name a file; one of that name is \"./-\"."};
}

nlohmann::ordered_json FaultsAsList(const mail_file::Loading& loading) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const auto& fault : loading.faults) {
    list.push_back({{"code", static_cast<int>(fault.code)},
                    {"text", mail_file::TextOf(fault.code)},
                    {"what", fault.what.InEnglish()}});
  }
  return list;
}

void AddMessageCommand(CLI::App& app, Context& context) {
  CLI::App& message =
      *app.add_subcommand("message", "Look into message files (.eml), from wherever they come, and make them");
  message.require_subcommand(1);
  AddMessageShow(message, context);
  AddMessageExport(message, context);
  AddMessageExtract(message, context);
  AddMessageImport(message, context);
  AddMessagePrint(message, context);
}

}  // namespace quillcast::cli
