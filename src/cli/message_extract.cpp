// quillcast message extract: takes message files apart.
#include <fmt/format.h>

#include <array>

#include "cli/message_commands.h"
#include "mail_file/extraction.h"
#include "platform/locale_codeset.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

using mail_file::ExtractionOutcome;
using mail_file::ExtractionRequest;

struct ExtractOptions {
  MessageFiles files;
  ExtractionRequest request;
  bool utf8 = false;
};

// What would be written over by the next message, or be locked.
Result<void> CheckFiles(Context& context, const ExtractOptions& options) {
  const ExtractionRequest& request = options.request;
  for (const std::string* file : {&request.body_file, &request.recipients_file, &request.stamps_file}) {
    if (file->empty()) continue;
    if (auto named = CheckNamesAFile(*file); !named) return named;
    if (options.files.names.size() > 1) {
      return Error{Failure::kUsage, Say("\"{}\" would be replaced by each of the messages.", *file),
                   "Take one message at a time, or folders alone."};
    }
    const auto may_write = platform::MayWriteTo(*file, context.Folders().OwnFiles(), context.prompts);
    if (!may_write) return may_write.error();
    if (!*may_write) {
      return Error{Failure::kNotPermitted, platform::LeftLocked(*file),
                   "Name another file, or answer yes (--yes does) to have it unlocked."};
    }
  }
  return {};
}

void ShowOutcome(const Context& context, const std::string& name, const ExtractionRequest& request,
                 const ExtractionOutcome& outcome) {
  const auto parts = static_cast<std::int64_t>(outcome.parts.size());
  const std::string count = request.parts_folder.empty() ? "" : " " + platform::Counted(parts, "part", "parts");
  context.output.Line(fmt::format("{}:{}", platform::Printable(name), count));
  for (const std::string& part : outcome.parts) context.output.Line("  " + part);
  if (outcome.page) {
    context.output.Line(
        fmt::format("  {} with {}", *outcome.page,
                    platform::Counted(static_cast<std::int64_t>(outcome.pictures.size()), "picture", "pictures")));
  }
  for (const std::string& file : outcome.files) context.output.Line("  " + file);
}

void ShowObject(const Context& context, const std::string& name, const mail_file::Loading& loading,
                const ExtractionOutcome& outcome) {
  nlohmann::ordered_json object = {{"file", name}, {"code", static_cast<int>(loading.code())}};
  object["faults"] = FaultsAsList(loading);
  object["parts"] = outcome.parts;
  object["page"] = outcome.page ? nlohmann::ordered_json(*outcome.page) : nlohmann::ordered_json();
  object["pictures"] = outcome.pictures;
  object["files"] = outcome.files;
  object["renamed"] = outcome.renamed;
  object["no_stamps"] = outcome.has_no_stamps;
  object["older_stamps_stay"] = outcome.has_old_stamps;
  object["failed"] = outcome.failed;
  object["lost"] = outcome.lost;
  context.output.Object(object);
}

int ExtractOne(Context& context, const std::string& name, const mail_file::Loading& loading,
               const ExtractionRequest& request, mail_file::ChosenFolders& folders) {
  const auto see = [&](std::uint64_t done, std::uint64_t total) {
    context.output.Progress(fmt::format("{}: {} of {}", platform::Printable(name, 100), platform::HumanSize(done),
                                        platform::HumanSize(total)));
  };
  const auto outcome = mail_file::Extract(*loading.message, request, folders, context.cancel, see);
  context.output.EndProgress();
  ShowOutcome(context, name, request, outcome);
  ShowObject(context, name, loading, outcome);
  for (const Sentence& note : mail_file::ExtractionNotes(request, outcome)) context.output.Note(note.InEnglish());
  for (const Sentence& trouble : mail_file::ExtractionTroubles(outcome, request.code_page))
    context.output.Note(trouble.InEnglish());
  if (outcome.is_cancelled) return ExitCode(Failure::kTryAgain);
  return outcome.failures.empty() ? 0 : ExitCode(outcome.failures.front().failure);
}

int Extract(Context& context, ExtractOptions options) {
  ExtractionRequest& request = options.request;
  request.file = options.files.names.front();
  if (!options.utf8) request.code_page = platform::LocaleCodeset();
  if (const auto complaint = mail_file::CheckExtraction(request)) return context.output.Complain(complaint->message);
  if (const auto checked = CheckFiles(context, options); !checked) return context.output.Fail(checked.error());
  mail_file::ChosenFolders folders(context.Folders().OwnFiles());
  return WithMessages(context, options.files, [&](const LoadedFile& file) {
    return ExtractOne(context, file.name, file.loading, request, folders);
  });
}

}  // namespace

void AddMessageExtract(CLI::App& message, Context& context) {
  CLI::App& extract = *message.add_subcommand("extract", "Take message files apart: parts, body, recipients, stamps");
  const auto options = std::make_shared<ExtractOptions>();
  ExtractionRequest& request = options->request;
  AddMessageFiles(extract, options->files);
  extract.add_option("--parts", request.parts_folder, "A folder for the parts")->type_name("FOLDER");
  extract.add_flag("--body-parts", request.with_body_parts, "The texts of the body go into that folder too");
  extract.add_option("--body", request.body_file, "A file for the body")->type_name("FILE");
  AddBodyFormat(extract, request.format, "The form of that file: text, html, rtf or xml; text without it");
  extract.add_option("--page", request.second_folder, "A folder for the body as a page with its pictures")
      ->type_name("FOLDER");
  extract.add_option("--recipients", request.recipients_file, "A text file for the recipients")->type_name("FILE");
  extract.add_option("--stamps", request.stamps_file, "A text file for the stamps of the relays that it came by")
      ->type_name("FILE");
  extract.add_flag("--utf8", options->utf8, "Write texts in UTF-8, whatever the character set of the locale is");
  extract.footer(
      "A folder that is not there is made. Parts replace nothing there: one whose name is taken gets \" (2)\"; the "
      "three files are\n"
      "replaced. Pages are written without what would run or load something.\n"
      "Example: quillcast message extract letter.eml --parts attachments --body letter.rtf -f rtf");
  OnRun(extract, context, [options](Context& ctx) { return Extract(ctx, *options); });
}

}  // namespace quillcast::cli
