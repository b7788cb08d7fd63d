// quillcast message print: message files as pages, in a PDF or on a printer.
#include <fmt/format.h>

#include <sstream>

#include "cli/desktop_print.h"
#include "cli/message_commands.h"
#include "cli/send_steps.h"
#include "cli/start_desktop.h"
#include "mail_file/body_page.h"
#include "mail_file/chosen_folder.h"
#include "mail_file/load_settings.h"
#include "mail_file/safe_part_name.h"
#include "platform/file_attributes.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

using mail_file::PrintCode;
using mail_file::PrintedMessage;

struct PrintOptions {
  MessageFiles files;
  std::string pdf;  // a file, or a folder
  std::string margins = "20";
  mail_file::PrintJob job;
};

// Checked once, and known for each of the messages.
struct Place {
  std::string program;
  std::optional<mail_file::ChosenFolder> folder;
};

bool HasPdfName(const std::filesystem::path& file) {
  return platform::EqualsIgnoringAsciiCase(file.extension().string(), ".pdf");
}

// Several messages go into a folder, which is made where nothing has its name.
Result<Place> FindPlace(const Context& context, const PrintOptions& options) {
  if (auto named = CheckNamesAFile(options.pdf); !named) return named.error();
  auto program = FindDesktop(context.executable);
  if (!program) {
    return Error{Failure::kUnavailable, "Pages are drawn by quillcast-desktop, which is not installed here.",
                 "Install it beside the command; no display is needed for this."};
  }
  Place place{*std::move(program), {}};
  if (!std::filesystem::is_directory(options.pdf, IgnoreErrors())) {
    if (options.pdf.empty() || options.files.names.size() == 1) return place;
    if (std::filesystem::exists(options.pdf, IgnoreErrors()) || HasPdfName(options.pdf)) {
      return Error{Failure::kUsage, Say("\"{}\" would be replaced by each of the messages.", options.pdf),
                   "Name a folder, or take one message at a time."};
    }
  }
  auto folder = mail_file::ChosenFolder::OpenOrMake(options.pdf, context.Folders().OwnFiles());
  if (!folder) return folder.error();
  place.folder.emplace(*std::move(folder));
  return place;
}

// Draws into the file; what it fails with keeps the file from being placed.
Result<void> Draw(Context& context, const PrintOptions& options, const Place& place, const LoadedFile& message,
                  const std::string& target, int pdf, PrintedMessage& printed) {
  mail_file::PrintJob job = options.job;
  job.mode = message.mode;
  job.target = target;
  auto drawn = PrintByDesktop(place.program, job, message.path, pdf, context.cancel, [&](int page, int of) {
    context.output.Progress(fmt::format("{}: page {} of {}", platform::Printable(message.name, 100), page, of));
  });
  context.output.EndProgress();
  if (!drawn) return drawn.error();
  printed = *std::move(drawn);
  if (printed.code == PrintCode::kPrinted) return {};
  return printed.error.value_or(Error{Failure::kUnavailable, std::string(mail_file::TextOf(printed.code))});
}

// Where it went to.
Result<std::string> PrintTo(Context& context, const PrintOptions& options, Place& place, const LoadedFile& message,
                            PrintedMessage& printed) {
  if (options.pdf.empty()) {
    const auto drawn = Draw(context, options, place, message, "", -1, printed);
    return drawn ? Result<std::string>(options.job.printer) : drawn.error();
  }
  if (!place.folder) {
    const auto placed = platform::ReplaceChosenFile(options.pdf, context.Folders().OwnFiles(), [&](int fd) {
      return Draw(context, options, place, message, options.pdf, fd, printed);
    });
    return placed ? Result<std::string>(options.pdf) : placed.error();
  }
  const std::string stem = message.name == "-" ? "message" : std::filesystem::path(message.name).stem().string();
  const auto name =
      place.folder->WriteNew(mail_file::SafePartName(stem + ".pdf"), [&](int fd, const std::filesystem::path& file) {
        return Draw(context, options, place, message, file.string(), fd, printed);
      });
  return name ? Result<std::string>((place.folder->path() / *name).string()) : name.error();
}

int PrintOne(Context& context, const PrintOptions& options, Place& place, const LoadedFile& message) {
  const auto none = mail_file::WhyNothing(*message.loading.message, options.job.form.format);
  if (none) return context.output.Fail(*none);
  PrintedMessage printed{.code = PrintCode::kNotBegun};
  const auto where = PrintTo(context, options, place, message, printed);
  if (!where && printed.code == PrintCode::kPrinted) printed.code = PrintCode::kNotWritten;
  for (const Sentence& words : printed.left_out)
    context.output.Note(platform::Printable(message.name, 4096) + ": " + words.InEnglish());
  nlohmann::ordered_json left_out = nlohmann::ordered_json::array();
  for (const Sentence& words : printed.left_out) left_out.push_back(words.InEnglish());
  context.output.Object({{"file", message.name},
                         {"code", static_cast<int>(printed.code)},
                         {"pages", printed.pages},
                         {"to", where ? nlohmann::ordered_json(*where) : nlohmann::ordered_json()},
                         {"left_out", left_out}});
  if (!where) {
    const Failure failure = where.error().failure;
    if (failure != Failure::kUsage && failure != Failure::kTryAgain)
      context.output.Note(mail_file::TextOf(printed.code));
    return context.output.Fail(where.error());
  }
  context.output.Line(fmt::format("{}: {} in {}", platform::Printable(message.name, 4096),
                                  platform::Counted(printed.pages, "page", "pages"),
                                  platform::Printable(*where, 4096)));
  return 0;
}

// One for all, or left, top and right; what is missing is empty, which the check names.
void TakeMargins(const std::string& given, mail_file::PrintForm& form) {
  std::istringstream numbers(given);
  if (given.find(',') == std::string::npos) {
    form.left = form.top = form.right = given;
  } else {
    for (std::string* margin : {&form.left, &form.top, &form.right})
      if (!std::getline(numbers, *margin, margin == &form.right ? '\n' : ',')) margin->clear();
  }
}

int RunPrint(Context& context, PrintOptions options) {
  mail_file::PrintForm& form = options.job.form;
  form.file = options.files.names.front();
  TakeMargins(options.margins, form);
  if (const auto complaint = mail_file::CheckPrint(form)) return context.output.Complain(complaint->message);
  if (options.pdf.empty() == options.job.printer.empty())
    return context.output.Complain("Say where to: --pdf FILE, or --printer NAME.");
  auto place = FindPlace(context, options);
  if (!place) return context.output.Fail(place.error());
  if (!options.pdf.empty() && !place->folder) {
    if (const auto other = mail_file::CheckIsNotMessage(options.pdf, form.file); !other)
      return context.output.Fail(other.error());
    if (const int refused = AskToWrite(context, options.pdf)) return refused;
  }
  return WithMessages(context, options.files,
                      [&](const LoadedFile& file) { return PrintOne(context, options, *place, file); });
}

void AddLook(CLI::App& command, PrintOptions& options) {
  mail_file::PrintForm& form = options.job.form;
  AddBodyFormat(command, form.format,
                "What of it: text, html or rtf (its page with its pictures), or xml (its source); html without it");
  command
      .add_option("--margins", options.margins,
                  "Millimetres, from 1 to 99: one number, or left,top,right; the bottom is as the top; 20 without it")
      ->type_name("MM");
  command.add_option("--heading", form.heading, "A line above each page")->type_name("TEXT");
  command.add_flag("--centred", form.is_centred, "Centre it");
  command.add_flag("--bold", form.is_bold, "Make it bold");
  command.add_flag("--underlined", form.is_underlined, "Underline it");
  command.add_option("--pages", options.job.pages, "These pages alone, as \"1-3,7\"")->type_name("PAGES");
}

}  // namespace

void AddMessagePrint(CLI::App& message, Context& context) {
  CLI::App& command = *message.add_subcommand("print", "Print message files, into a PDF or on a printer");
  const auto options = std::make_shared<PrintOptions>();
  AddMessageFiles(command, options->files);
  command
      .add_option("--pdf", options->pdf, "The PDF, which replaces what is there, or a folder for one of each message")
      ->type_name("FILE");
  command.add_option("--printer", options->job.printer, "A printer of this system, by its name")->type_name("NAME");
  AddLook(command, *options);
  command.footer(
      "Nothing in a message runs, and nothing is fetched for it. No display is needed. In a folder nothing is "
      "replaced.\n"
      "Example: quillcast message print letter.eml --pdf letter.pdf --heading 'For the files'");
  OnRun(command, context, [options](Context& ctx) { return RunPrint(ctx, *options); });
}

}  // namespace quillcast::cli
