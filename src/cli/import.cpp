// quillcast import: recipients from a text file.
#include <fmt/format.h>

#include <memory>

#include "cli/commands.h"
#include "platform/locale_codeset.h"
#include "platform/text.h"
#include "recipients/delimiters.h"
#include "recipients/import/recipient_import.h"
#include "recipients/recipient_store.h"

namespace quillcast::cli {
namespace {

using recipients::ImportMode;
using recipients::ImportOutcome;
using recipients::ImportPlaces;
using recipients::ImportRequest;

constexpr std::size_t kPreviewLines = 5;

struct ImportOptions {
  std::string file;
  std::string group;
  bool harvest = false;
  std::string map;
  std::string delimiter = "Comma";
  bool quotes = false;
  bool opt_in = false;
  std::string encoding;
  bool preview = false;
};

Result<ImportRequest> RequestOf(const ImportOptions& options) {
  if (options.harvest == !options.map.empty()) {
    return Error{Failure::kUsage, "An import takes either --harvest or --map.",
                 "--harvest finds every address in the file; --map \"Email Address=1\" takes one recipient from each "
                 "line."};
  }
  ImportRequest request;
  request.file = options.file;
  request.group = options.group;
  request.mode = options.harvest ? ImportMode::kHarvest : ImportMode::kDelimited;
  request.quotes = options.quotes;
  request.encoding = options.encoding;
  const auto delimiter = recipients::DelimiterOf(options.delimiter);
  if (!delimiter) {
    return Error{Failure::kUsage, Say("\"{}\" is no delimiter.", options.delimiter),
                 "Name Tab, Colon, Space, Comma or Semicolon."};
  }
  request.delimiter = *delimiter;
  if (options.harvest) return request;
  const auto mapping = recipients::ParseMapping(options.map);
  if (!mapping) return mapping.error();
  request.mapping = *mapping;
  return request;
}

Result<std::optional<Complaint<recipients::ImportControl>>> Check(const ImportRequest& request,
                                                                  const recipients::RecipientStore& store) {
  const auto names = store.ListGroupNames();
  if (!names) return names.error();
  return recipients::CheckImport({.file = request.file.string(),
                                  .has_groups = !names->empty(),
                                  .group = request.group,
                                  .mode = request.mode,
                                  .sample_was_read = true,
                                  .mapping = request.mapping});
}

int Preview(Context& context, const ImportRequest& request, const std::string& codeset) {
  const auto sample = recipients::ReadSample(request.file, request.encoding, codeset, kPreviewLines);
  if (!sample) return context.output.Fail(sample.error());
  context.output.Line(fmt::format("Encoding: {} ({})", sample->encoding, sample->how_known));
  context.output.Object({{"encoding", sample->encoding}, {"known_by", sample->how_known}});
  std::int64_t number = 0;
  for (const std::string& line : sample->lines) {
    ++number;
    context.output.Line(fmt::format("Line {}: {}", number, platform::Printable(line, 200)));
    nlohmann::ordered_json object = {{"line", number}};
    if (request.mode == ImportMode::kDelimited) {
      const auto values = recipients::MapLine(line, request.delimiter, request.quotes, request.mapping);
      for (std::size_t field = 0; field < recipients::kFieldCount; ++field) {
        if (request.mapping.source[field] == recipients::kIgnore) continue;
        const std::string_view label = recipients::kFields[field].label;
        context.output.Line(fmt::format("  {} = {}", label, platform::Printable(values[field], 200)));
        object[std::string(label)] = values[field];
      }
    }
    context.output.Object(object);
  }
  return 0;
}

void TellCounts(Context& context, const ImportOutcome& outcome, const ImportPlaces& places) {
  const auto& counts = outcome.counts;
  const std::string summary = recipients::ImportSummary(counts);
  for (const std::string_view line : platform::Split(summary, '\n')) context.output.Line(platform::Trim(line));
  context.output.Object({{"added", counts.added}, {"duplicates", counts.duplicates}, {"ignored", counts.ignored}});
  if (!outcome.encoding.empty()) {
    context.output.Note(fmt::format("Read as {} ({}).", outcome.encoding, outcome.how_known));
  }
  for (const auto& sentence : recipients::ImportTroubles(outcome)) context.output.Note(sentence.InEnglish());
  if (!outcome.no_report) context.output.Note(fmt::format("The report is in {}", places.report.string()));
}

int Conclude(Context& context, const ImportRequest& request, const ImportPlaces& places, const ImportOutcome& outcome) {
  TellCounts(context, outcome, places);
  if (outcome.error) return context.output.Fail(*outcome.error);
  if (outcome.cancelled) {
    return context.output.Fail({Failure::kTryAgain, "The import was cancelled; what is counted here was added.",
                                "Run it again to go on: what is there already counts as duplicate."});
  }
  if (outcome.counts.added + outcome.counts.duplicates > 0) return 0;
  return context.output.Fail({Failure::kBadData, Say("{} holds no address.", request.file.string()),
                              "`--preview` shows how the file is read; `--encoding`, `--delimiter` and `--map` change "
                              "it."});
}

int RunImport(Context& context, const ImportOptions& options) {
  const auto request = RequestOf(options);
  if (!request) return context.output.Fail(request.error());
  const std::string codeset = platform::LocaleCodeset();
  if (options.preview) return Preview(context, *request, codeset);

  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  const ImportPlaces places{folders->Database(), folders->ImportReport(), codeset};
  const recipients::RecipientStore store(places.store, {.cancel = &context.cancel});
  const auto complaint = Check(*request, store);
  if (!complaint) return context.output.Fail(complaint.error());
  if (*complaint) return context.output.Complain((*complaint)->message);
  if (const auto group = store.RequireGroup(request->group); !group) return context.output.Fail(group.error());
  // A dialog would go on with a file that cannot be read, and report nothing; here it is an error at once, and so is
  // an unknown encoding.
  const auto readable = recipients::ReadSample(request->file, request->encoding, codeset, 0);
  if (!readable) return context.output.Fail(readable.error());
  if (!options.opt_in && !context.prompts.Consent(recipients::kConsentQuestion)) {
    return context.output.Fail({Failure::kNotPermitted, "Nothing was imported: the list was not confirmed as opt-in.",
                                "`--opt-in` confirms it."});
  }
  const auto outcome = recipients::ImportRecipients(
      *request, places, context.cancel, [&context](const recipients::ImportProgress& progress) {
        const auto percent = progress.bytes_total == 0 ? 100 : progress.bytes_done * 100 / progress.bytes_total;
        context.output.Progress(fmt::format("{}% read, {} added", percent, progress.counts.added));
      });
  context.output.EndProgress();
  return Conclude(context, *request, places, outcome);
}

}  // namespace

void AddImportCommand(CLI::App& app, Context& context) {
  CLI::App& import = *app.add_subcommand("import", "Add recipients from a text file to a group");
  const auto options = std::make_shared<ImportOptions>();
  import.add_option("FILE", options->file, "The text file")->required();
  import.add_option("-g,--group", options->group, "The group that gets them");
  import.add_flag("--harvest", options->harvest, "Find every address anywhere in the file");
  import.add_option("--map", options->map, "Take one recipient from each line: \"Email Address=2,First Name=1\"");
  import.add_option("--delimiter", options->delimiter, "Tab, Colon, Space, Comma or Semicolon")->capture_default_str();
  import.add_flag("--quotes", options->quotes, "Take the first and the last character off every field");
  import.add_flag("--opt-in", options->opt_in, "Confirm that everybody in the list has agreed to receive mail");
  import.add_option("--encoding", options->encoding, "What the file is encoded in, where it is not found out rightly");
  import.add_flag("--preview", options->preview, "Show how the first five lines would be read; change nothing");
  import.footer(
      "Example: quillcast import list.csv --group Readers --map \"Email Address=2,First Name=1\" --opt-in\n"
      "The first line is a recipient like every other.");
  OnRun(import, context, [options](Context& ctx) { return RunImport(ctx, *options); });
}

}  // namespace quillcast::cli
