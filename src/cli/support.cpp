// quillcast support: a request for help to the maker, sent, shown or written into a file.
#include <fmt/format.h>

#include <memory>

#include "account/account_settings.h"
#include "cli/commands.h"
#include "cli/message_commands.h"
#include "cli/send_steps.h"
#include "cli/standard_input.h"
#include "document/body_file.h"
#include "platform/file_attributes.h"
#include "platform/text.h"
#include "smtp/outcome_text.h"
#include "support/request_message.h"
#include "support/support_contact.h"
#include "support/system_facts.h"

namespace quillcast::cli {
namespace {

struct SupportOptions {
  std::string description;
  std::string description_file;
  std::string topic = std::string(support::kUsualTopic);
  std::string priority = "Normal";
  std::string attachment;
  std::string name;
  std::string email;
  std::string product;
  std::array<bool, support::kFurtherItems> further{};
  bool show = false;
  std::string save;

  bool Sends() const { return !show && save.empty(); }
};

Result<std::string> DescriptionFrom(Context& context, const SupportOptions& options, const profile::Folders& folders) {
  if (options.description_file.empty()) return options.description;
  const auto input = InputFile::Of(options.description_file, folders.temporary, context.cancel);
  if (!input) return input.error();
  auto read = document::ReadBodyFile(input->path());
  if (!read) return read.error();
  return std::move(read->text);
}

Result<support::SupportRequest> RequestFrom(Context& context, const SupportOptions& options,
                                            const profile::Folders& folders, const profile::SettingsStore& settings) {
  auto request = support::NewRequest(settings);
  if (!request) return request;
  auto description = DescriptionFrom(context, options, folders);
  if (!description) return description.error();
  request->description = *std::move(description);
  request->topic = options.topic;
  request->priority = options.priority;
  request->further = options.further;
  if (!options.name.empty()) request->name = options.name;
  if (!options.email.empty()) request->email = options.email;
  if (!options.product.empty()) request->product = options.product;
  std::error_code failed;  // the current folder is gone: opening the file tells the failure
  const auto attachment = std::filesystem::absolute(options.attachment, failed);
  if (!options.attachment.empty())
    request->attachment = failed ? std::filesystem::path(options.attachment) : attachment;
  return request;
}

nlohmann::ordered_json ObjectOf(const support::RequestContents& contents) {
  auto files = nlohmann::ordered_json::array();
  for (const auto& file : contents.files) files.push_back(file.string());
  return {{"to", contents.to.text()}, {"from", contents.from},     {"subject", contents.subject},
          {"body", contents.body},    {"report", contents.report}, {"files", files}};
}

Result<std::uint64_t> WriteText(const std::string& text, const std::string& file, const profile::Folders& folders) {
  const auto written = platform::ReplaceChosenFile(file, folders.OwnFiles(), text);
  return written ? Result<std::uint64_t>(text.size()) : written.error();
}

std::string TextOf(const Complaint<support::SupportControl>& complaint) {
  return complaint.message.empty() ? complaint.reason.InEnglish() : complaint.message;
}

// Of one that was not sent.
int ExitCodeOf(const smtp::Outcome& outcome) {
  using enum smtp::ResultCode;
  if (outcome.state == smtp::State::kDeferred) return ExitCode(Failure::kTryAgain);
  switch (outcome.code) {
    case kCancelled:
      return ExitCode(Failure::kTryAgain);
    case kFileNotOpened:
    case kFileNotRead:
      return ExitCode(Failure::kNoInput);
    case kConnectFailed:
    case kHostNotFound:
    case kResolveTimeout:
    case kConnectTimeout:
      return ExitCode(Failure::kUnavailable);
    default:
      return 1;
  }
}

// The files of a request that may lack what is yet to be written.
int TellOfFiles(Context& context, support::SupportRequest request, const support::RequestContents& contents,
                const profile::Folders& folders) {
  if (contents.files.empty()) return 0;
  request.email = contents.to.text();
  const auto tried = support::TryRequest(request, contents, PlaceOf(context, folders));
  if (!tried) return context.output.Fail(tried.error());
  if (tried->state == smtp::State::kSent) return 0;
  context.output.Note(fmt::format("It would not be sent so: {}", tried->reason));
  return ExitCodeOf(*tried);
}

// What was shown or written is looked at as sending does. The account and the description may come later; for anything
// else that keeps it back the exit code is that of sending.
int TellWhatKeepsItBack(Context& context, const support::SupportRequest& request,
                        const support::RequestContents& contents, const profile::Folders& folders, bool has_account) {
  const auto tell = [&context](const std::string& why) {
    context.output.Note(fmt::format("It would not be sent so: {}", why));
  };
  int code = 0;
  if (!has_account) tell(support::kNoAccount);
  if (const auto complaint = support::CheckDescription(request)) {
    tell(TextOf(*complaint));
    if (!request.description.empty()) code = ExitCode(Failure::kUsage);
  }
  const bool has_address = has_account || !request.email.empty();
  if (const auto complaint = has_address ? support::CheckEmail(request) : std::nullopt) {
    tell(TextOf(*complaint));
    code = ExitCode(Failure::kUsage);
  }
  const int of_files = TellOfFiles(context, request, contents, folders);
  return code != 0 ? code : of_files;
}

int Show(Context& context, const support::RequestContents& contents) {
  context.output.Line(support::AsText(contents));
  context.output.Object(ObjectOf(contents));
  return 0;
}

int Save(Context& context, const std::string& file, const support::SupportRequest& request,
         const support::RequestContents& contents, const profile::Folders& folders) {
  if (const auto named = CheckNamesAFile(file); !named) return context.output.Fail(named.error());
  if (const int refused = AskToWrite(context, file)) return refused;
  const bool is_message = platform::EqualsIgnoringAsciiCase(std::filesystem::path(file).extension().string(), ".eml");
  const auto written = is_message ? support::WriteRequest(request, contents, file, PlaceOf(context, folders))
                                  : WriteText(support::AsText(contents), file, folders);
  if (!written) return context.output.Fail(written.error());
  context.output.Line(fmt::format("What would go is in {}; nothing was sent.", platform::Printable(file)));
  context.output.Object({{"file", file}, {"octets", *written}});
  return 0;
}

int TellFailure(Context& context, const Result<smtp::Outcome>& end) {
  const platform::Environment& environment = context.environment;
  platform::XdgDesktop desktop(environment.Get("DISPLAY") || environment.Get("WAYLAND_DISPLAY"));
  const int exit_code = end ? ExitCodeOf(*end) : context.output.Fail(end.error());
  if (end) context.output.Note(support::WhatBecameOf(end).InEnglish());
  if (support::CodeOf(end) == smtp::ResultCode::kCancelled) return exit_code;
  const auto opened = support::TellEnd(end, context.prompts, desktop);
  context.output.Note(fmt::format("The online support form: {}", support::kSupportPage));
  if (!opened) context.output.Note(InOneLine(opened.error()));
  return exit_code;
}

int Send(Context& context, const support::SupportRequest& request, const support::RequestContents& contents,
         const support::SystemFacts& facts, const profile::Folders& folders) {
  const auto end = support::SendRequest(request, facts, contents.to, PlaceOf(context, folders));
  const bool sent = end && end->state == smtp::State::kSent;
  if (end) {
    context.output.Object({{"to", contents.to.text()},
                           {"subject", contents.subject},
                           {"state", smtp::Name(end->state)},
                           {"code", static_cast<int>(end->code)},
                           {"reply", smtp::ReplyText(end->reply)},
                           {"reason", end->reason}});
  }
  if (!sent) return TellFailure(context, end);
  context.output.Line(support::kSentSentence);
  return 0;
}

int RunSupport(Context& context, const SupportOptions& options) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  const profile::SettingsStore settings(folders->settings);
  const auto filled_in = account::AccountIsFilledIn(settings);
  if (!filled_in) return context.output.Fail(filled_in.error());
  if (options.Sends() && !*filled_in) {
    return context.output.Fail({Failure::kNotConfigured, support::kNoAccount,
                                "quillcast account set Name=... Email=you@example.org Server=... Port=..."});
  }
  const auto to = support::SupportAddress(context.environment);
  if (!to) return context.output.Fail(to.error());
  const auto request = RequestFrom(context, options, *folders, settings);
  if (!request) return context.output.Fail(request.error());
  if (const auto complaint = options.Sends() ? support::CheckRequest(*request) : std::nullopt) {
    return context.output.Complain(TextOf(*complaint));
  }
  const auto facts = support::ReadSystemFacts();
  const auto hidden = options.Sends() ? Result<support::HiddenPassword>(support::HiddenPassword())
                                      : support::PasswordToHide(PlaceOf(context, *folders));
  if (!hidden) return context.output.Fail(hidden.error());
  if (hidden->not_known) context.output.Note(hidden->not_known->InEnglish());
  const auto contents = support::ContentsOf(*request, facts, *to, *folders, settings, hidden->password);
  if (!contents) return context.output.Fail(contents.error());
  if (options.Sends()) return Send(context, *request, *contents, facts, *folders);
  const int code = options.show ? Show(context, *contents) : Save(context, options.save, *request, *contents, *folders);
  return code != 0 ? code : TellWhatKeepsItBack(context, *request, *contents, *folders, *filled_in);
}

void AddContents(CLI::App& support, SupportOptions& options) {
  auto* description =
      support.add_option("--description", options.description, "What the trouble, the question or the idea is");
  support.add_option("--description-file", options.description_file, "The same from a text file; - for standard input")
      ->type_name("FILE")
      ->excludes(description);
  support.add_option("--topic", options.topic, "What it is about")
      ->check(CLI::IsMember(std::vector<std::string>(support::kTopics.begin(), support::kTopics.end())))
      ->capture_default_str();
  support.add_option("--attach", options.attachment, "A file to go along")->type_name("FILE");
  support.add_option("--priority", options.priority, "The priority")
      ->check(CLI::IsMember({"Low", "Normal", "High"}))
      ->capture_default_str();
  support.add_option("--name", options.name, "Your name, where it is not the account's");
  support.add_option("--email", options.email, "Your address, where it is not the account's")->type_name("ADDRESS");
  support.add_option("--product", options.product, "What it is about, where it is not this program");
  using enum support::FurtherItem;
  support.add_flag("--last-report", options.further[static_cast<std::size_t>(kLastReport)],
                   "Also attach the report of the last run, which names recipients");
  support.add_flag("--first-message", options.further[static_cast<std::size_t>(kFirstMessage)],
                   "Also attach the first message of the last run, with its recipient's data");
  support.add_flag("--session-log", options.further[static_cast<std::size_t>(kSessionLog)],
                   "Also attach the log of the session");
}

}  // namespace

void AddSupportCommand(CLI::App& app, Context& context) {
  auto* support = app.add_subcommand(
      "support", "Ask the maker for help by mail; a report of this computer and of the settings goes along");
  const auto options = std::make_shared<SupportOptions>();
  AddContents(*support, *options);
  auto* show = support->add_flag("--show", options->show, "Send nothing: show all that would go");
  support
      ->add_option(
          "--save", options->save,
          "Send nothing: write all that would go into this file; the whole message where it ends in .eml. What is "
          "there is replaced")
      ->type_name("FILE")
      ->excludes(show);
  support->footer(
      "No password goes along, and no recipient's data but by --last-report and --first-message. A keyring or a "
      "command is asked for the password, so that it is hidden wherever another setting repeats it.\n"
      "--show and --save look at the files and the address as sending does, and say what would keep the request back.\n"
      "Exit codes: 0 sent; 1 refused; 69 no server could be reached; 75 to be tried again; others: why is told on "
      "standard error.\n"
      "Example:\n  quillcast support --show\n"
      "  quillcast support --topic 'Bug Report' --description 'The preview stays empty.' --attach letter.html");
  OnRun(*support, context, [options](Context& c) { return RunSupport(c, *options); });
}

}  // namespace quillcast::cli
