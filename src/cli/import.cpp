// quillcast import: recipients from a file.
#include <fmt/format.h>

#include <memory>

#include "cli/commands.h"
#include "cli/import_options.h"
#include "cli/import_preview.h"
#include "cli/standard_input.h"
#include "platform/locale_codeset.h"
#include "platform/text.h"
#include "recipients/import/kept_mappings.h"
#include "recipients/import/taken_fields.h"
#include "recipients/recipient_store.h"

namespace quillcast::cli {
namespace {

constexpr std::size_t kLongestShown = 100;  // bytes of an option

using recipients::ImportOutcome;
using recipients::ImportPlaces;
using recipients::ImportRequest;

Result<std::optional<Complaint<recipients::ImportControl>>> Check(const ImportRequest& request,
                                                                  const recipients::RecipientStore& store) {
  const auto names = store.ListGroupNames();
  if (!names) return names.error();
  return recipients::CheckImport({.file = request.file.string(),
                                  .has_groups = !names->empty() || !request.group.empty(),
                                  .group = request.group,
                                  .mode = request.mode,
                                  .sample_was_read = true,
                                  .mapping = request.mapping});
}

void TellCounts(Context& context, const ImportOutcome& outcome, bool dry_run) {
  const auto& counts = outcome.counts;
  const std::string summary =
      dry_run ? fmt::format("{} would be imported.\n{} would be ignored.\n{} would be ignored.",
                            platform::Counted(counts.added, "recipient", "recipients"),
                            platform::Counted(counts.duplicates, "duplicate recipient", "duplicate recipients"),
                            platform::Counted(counts.ignored, "invalid recipient", "invalid recipients"))
              : recipients::ImportSummary(counts);
  for (const std::string_view line : platform::Split(summary, '\n')) context.output.Line(platform::Trim(line));
}

// Everything that is known of the outcome, for programs.
nlohmann::ordered_json AsObject(const ImportOutcome& outcome, const ImportPlaces& places, const ImportPlan& plan) {
  const auto& counts = outcome.counts;
  nlohmann::ordered_json object = {
      {"added", counts.added}, {"duplicates", counts.duplicates}, {"ignored", counts.ignored}};
  if (plan.request.dry_run) object["dry_run"] = true;
  if (outcome.facts) {
    object["format"] = recipients::NameOf(outcome.facts->format);
    if (!outcome.facts->encoding.name.empty()) object["encoding"] = outcome.facts->encoding.name;
  }
  if (!plan.request.mapping.IsAllIgnore()) object["mapping"] = recipients::MappingText(plan.request.mapping);
  std::vector<std::string> warnings;
  if (!plan.left_out.empty()) warnings.push_back(plan.left_out);
  for (const auto& sentence : recipients::ImportTroubles(outcome)) warnings.push_back(sentence.InEnglish());
  object["warnings"] = warnings;
  if (!outcome.no_report && !plan.request.dry_run) object["report"] = places.report.string();
  return object;
}

void TellOutcome(Context& context, const ImportOutcome& outcome, const ImportPlaces& places, const ImportPlan& plan) {
  TellCounts(context, outcome, plan.request.dry_run);
  context.output.Object(AsObject(outcome, places, plan));
  TellPlan(context, plan);
  if (outcome.facts && !outcome.facts->encoding.name.empty()) {
    context.output.Note(
        fmt::format("Read as {} ({}).", outcome.facts->encoding.name, outcome.facts->encoding.how_known));
  }
  for (const auto& sentence : recipients::ImportTroubles(outcome)) context.output.Note(sentence.InEnglish());
  if (!outcome.no_report && !plan.request.dry_run)
    context.output.Note(fmt::format("The report is in {}", places.report.string()));
}

int Conclude(Context& context, const ImportOptions& options, const ImportOutcome& outcome) {
  if (outcome.error) return context.output.Fail(*outcome.error);
  if (outcome.cancelled) {
    return context.output.Fail({Failure::kTryAgain, "The import was cancelled; what is counted here was added.",
                                "Run it again to go on: what is there already counts as duplicate."});
  }
  if (outcome.counts.added + outcome.counts.duplicates > 0) return 0;
  const std::string file = options.file == "-" ? "Standard input" : options.file;
  return context.output.Fail({Failure::kBadData, Say("{} holds no address.", file),
                              "`--preview` shows how the file is read; `--encoding`, `--delimiter` and `--map` change "
                              "it."});
}

// A dialog would go on with a file that cannot be read, and report nothing; here it is an error at once, and so is an
// unknown encoding.
Result<void> CheckFile(const ImportRequest& request) {
  const auto format = recipients::FormatOf(request.file, request.reading);
  if (!format) return format.error();
  return recipients::CheckEncodingName(request.reading.encoding);
}

// All that must hold before the first recipient is added.
Result<void> CheckAll(Context& context, const ImportOptions& options, const ImportRequest& request,
                      const std::filesystem::path& file) {
  const recipients::RecipientStore store(file, {.cancel = &context.cancel});
  const auto complaint = Check(request, store);
  if (!complaint) return complaint.error();
  if (*complaint) return Error{Failure::kUsage, std::string((*complaint)->message)};
  if (const auto group = store.RequireGroup(options.group); !group) return group.error();
  if (auto readable = CheckFile(request); !readable) return readable;
  if (options.opt_in || options.dry_run || context.prompts.Consent(recipients::kConsentQuestion)) return {};
  return Error{Failure::kNotPermitted, "Nothing was imported: the list was not confirmed as opt-in.",
               "`--opt-in` confirms it."};
}

int Import(Context& context, const ImportOptions& options, const profile::Folders& folders, const ImportPlan& plan,
           profile::SettingsStore& settings, const std::string& codeset) {
  const ImportPlaces places{folders.Database(), folders.ImportReport(), codeset};
  const auto checked = CheckAll(context, options, plan.request, places.store);
  if (!checked) return context.output.Fail(checked.error());
  if (const auto kept = SaveMappingOf(options, plan, settings); !kept) return context.output.Fail(kept.error());
  const auto outcome = recipients::ImportRecipients(
      plan.request, places, context.cancel, [&context](const recipients::ImportProgress& progress) {
        const auto percent = progress.bytes_total == 0 ? 100 : progress.bytes_done * 100 / progress.bytes_total;
        context.output.Progress(
            fmt::format("{}% read, {} added", percent, platform::WithThousands(progress.counts.added)));
      });
  context.output.EndProgress();
  TellOutcome(context, outcome, places, plan);
  return Conclude(context, options, outcome);
}

void ShowMapping(Context& context, const recipients::KeptMapping& kept) {
  const std::string map = recipients::MappingText(kept.mapping);
  context.output.Columns({kept.name, map});
  context.output.Object({{"name", kept.name},
                         {"mapping", map},
                         {"delimiter", recipients::NameOf(kept.delimiter)},
                         {"quotes", kept.quotes},
                         {"rfc4180", kept.rfc4180},
                         {"skip", kept.skip},
                         {"sheet", kept.sheet},
                         {"encoding", kept.encoding},
                         {"columns", recipients::ColumnsText(kept.columns)}});
}

// One that is damaged is told, and does not keep the others from being shown.
int ListMappings(Context& context, const profile::SettingsStore& settings) {
  const auto names = recipients::ListMappingNames(settings);
  if (!names) return context.output.Fail(names.error());
  int exit_code = 0;
  for (const std::string& name : *names) {
    const auto kept = recipients::FindMapping(settings, name);
    if (kept) {
      ShowMapping(context, *kept);
    } else {
      exit_code = context.output.Fail(kept.error());
    }
  }
  return exit_code;
}

int ForgetMappings(Context& context, profile::SettingsStore& settings) {
  if (context.prompts.Ask("Would you like to forget every mapping that is kept?") != platform::Answer::kYes) {
    return context.output.Fail(
        {Failure::kNotPermitted, "The mappings were kept.", "Answer yes (--yes does) to forget all of them."});
  }
  if (const auto forgotten = recipients::ForgetMappings(settings); !forgotten)
    return context.output.Fail(forgotten.error());
  context.output.Line("No mapping is kept any more.");
  context.output.Object({{"done", "forgotten"}});
  return 0;
}

int RunImport(Context& context, const ImportOptions& options) {
  const auto folders = options.preview ? Result<profile::Folders>(context.Folders()) : context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  profile::SettingsStore settings(folders->settings);
  if (options.list_mappings) return ListMappings(context, settings);
  if (options.forget_mappings) return ForgetMappings(context, settings);
  if (!options.delete_mapping.empty()) {
    const auto deleted = recipients::DeleteMapping(settings, options.delete_mapping);
    if (!deleted) return context.output.Fail(deleted.error());
    context.output.Line(fmt::format("The mapping \"{}\" was deleted.", platform::Printable(options.delete_mapping)));
    context.output.Object({{"name", options.delete_mapping}, {"done", "deleted"}});
    return 0;
  }
  if (options.file.empty())
    return context.output.Fail({Failure::kUsage, "No file is named.", "Name one, or \"-\" for standard input."});
  const auto input = InputFile::Of(options.file, folders->temporary, context.cancel);
  if (!input) return context.output.Fail(input.error());
  const std::string codeset = platform::LocaleCodeset();
  const auto plan = PlanImport(options, input->path(), settings, codeset, context.cancel);
  if (!plan) return context.output.Fail(plan.error());
  if (!options.preview) return Import(context, options, *folders, *plan, settings, codeset);
  if (const int exit_code = PreviewImport(context, *plan, codeset); exit_code != 0) return exit_code;
  const auto kept = SaveMappingOf(options, *plan, settings);
  return kept ? 0 : context.output.Fail(kept.error());
}

// What is wrong with the text of --skip; empty where nothing is.
std::string NumberOfLines(const std::string& text) {
  const auto lines = platform::ParseWholeNumber(text);
  if (lines && *lines <= recipients::kMostSkipped) return {};
  return fmt::format("\"{}\" is no number of lines from 0 to {}", platform::Printable(text, kLongestShown),
                     platform::WithThousands(recipients::kMostSkipped));
}

void AddReadingOptions(CLI::App& import, ImportOptions& options) {
  import.add_option("--delimiter", options.delimiter,
                    "Tab, Colon, Space, Comma or Semicolon, or Auto: found out and told (else Comma)");
  import.add_flag("--quotes", options.quotes, "Take the first and the last character off every field");
  import.add_flag("--rfc4180", options.rfc4180,
                  "Fields in quotes may hold delimiters, line ends and doubled quotes, as spreadsheets write them");
  // As a text: the parser would read "010" as eight.
  const auto take_skip = [&options](const std::string& text) { options.skip = platform::ParseWholeNumber(text); };
  CLI::Option* skip =
      import.add_option_function<std::string>("--skip", take_skip, "Leave so many lines at the beginning out");
  skip->check(NumberOfLines)->type_name("N");
  import.add_option("--format", options.format, "Text, Spreadsheet, vCard or LDIF, where it is not found out rightly");
  import.add_option("--sheet", options.sheet,
                    "Of a spreadsheet, the name of the sheet (else, or with \"\", the first that is filled)");
  import.add_option("--encoding", options.encoding,
                    "What the file is encoded in, where it is not found out rightly; Auto has it found out, whatever a "
                    "kept mapping says");
}

void AddMappingOptions(CLI::App& import, ImportOptions& options) {
  import.add_flag("--harvest", options.harvest, "Find every address anywhere in the file");
  import.add_option("--map", options.map, "Take one recipient from each line: \"Email Address=2,First Name=1\"");
  import.add_flag("--header", options.header,
                  "Map the fields by what the line of headings, one of the first five, calls them");
  import.add_option("--take", options.take,
                    "Take these columns of the file, eighteen at most, as its fields: \"25,1,2\"; All, whatever a kept "
                    "mapping takes");
  import.add_option("--mapping", options.mapping, "Map the fields as it was kept under this name");
  import.add_option("--save-mapping", options.save_mapping,
                    "Keep the mapping, and how the file is read, under a name, once nothing is refused; also with "
                    "--preview and --dry-run");
  import.add_flag("--list-mappings", options.list_mappings, "Show the mappings that are kept");
  import.add_option("--delete-mapping", options.delete_mapping, "Delete the one of this name");
  import.add_flag("--forget-mappings", options.forget_mappings, "Delete all of them, also where they cannot be read");
}

// What sees to the mappings that are kept imports nobody: it stands alone.
Result<void> CheckAlone(const CLI::App& import) {
  for (const char* name : {"--list-mappings", "--delete-mapping", "--forget-mappings"}) {
    if (import.count(name) == 0) continue;
    for (const CLI::Option* other : import.get_options()) {
      if (other->count() == 0 || other->check_name(name)) continue;
      return Error{Failure::kUsage, Say("{} excludes {}.", name, other->get_name()), "Leave one of them out."};
    }
  }
  return {};
}

}  // namespace

void AddImportCommand(CLI::App& app, Context& context) {
  CLI::App& import = *app.add_subcommand("import", "Add recipients from a file to a group");
  const auto options = std::make_shared<ImportOptions>();
  import.add_option("FILE", options->file, "The file; - for standard input");
  import.add_option("-g,--group", options->group, "The group that gets them");
  AddMappingOptions(import, *options);
  AddReadingOptions(import, *options);
  import.add_flag("--opt-in", options->opt_in, "Confirm that everybody in the list has agreed to receive mail");
  import.add_flag("--preview", options->preview,
                  "Show how the first five lines would be read, without a mapping by number; add nobody");
  import.add_flag("--dry-run", options->dry_run, "Read it all and count what would be added; add nobody");
  import.footer(
      "Examples:\n  quillcast import list.csv --group Readers --header --delimiter Auto --opt-in\n"
      "  quillcast import list.csv --group Readers --map \"Email Address=2,First Name=1\" --opt-in\n"
      "Without --header the first line is a recipient like every other.");
  OnRun(import, context, [options, &import](Context& ctx) {
    const auto alone = CheckAlone(import);
    return alone ? RunImport(ctx, *options) : ctx.output.Fail(alone.error());
  });
}

}  // namespace quillcast::cli
