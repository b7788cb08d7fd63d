// quillcast export: the recipients of a group as a text file.
#include <fmt/format.h>
#include <unistd.h>

#include <climits>
#include <memory>
#include <optional>

#include "cli/commands.h"
#include "cli/standard_streams.h"
#include "cli/store_command.h"
#include "platform/file.h"
#include "platform/file_attributes.h"
#include "platform/locale_codeset.h"
#include "platform/text.h"
#include "recipients/delimiters.h"
#include "recipients/export/recipient_export.h"
#include "recipients/recipient_store.h"

namespace quillcast::cli {
namespace {

using recipients::ExportOutcome;
using recipients::ExportRequest;
using recipients::RecipientStore;

constexpr std::string_view kStandardOutput = "-";

struct ExportOptions {
  std::string group;
  std::string fields;
  std::string delimiter;
  std::string file = std::string(kStandardOutput);
  bool rfc4180 = false;
  bool utf8 = false;
  bool inert_formulas = false;
};

Result<ExportRequest> RequestOf(const ExportOptions& options) {
  ExportRequest request;
  request.group = options.group;
  auto& format = request.format;
  format.rfc4180 = options.rfc4180;
  format.inert_formulas = options.inert_formulas;
  if (!options.utf8) format.code_page = platform::LocaleCodeset();
  const auto delimiter =
      recipients::DelimiterOf(!options.delimiter.empty() ? options.delimiter : (options.rfc4180 ? "Comma" : "Tab"));
  if (!delimiter) {
    return Error{Failure::kUsage, Say("\"{}\" is no delimiter.", options.delimiter),
                 "Name Tab, Colon, Space, Comma or Semicolon."};
  }
  format.delimiter = *delimiter;
  if (options.fields.empty()) return request;
  auto fields = recipients::ParseFields(options.fields);
  if (!fields) return fields.error();
  format.fields = std::move(*fields);
  return request;
}

Result<void> CheckObjects(const ExportOptions& options) {
  if (!options.rfc4180 && options.delimiter.empty()) return {};
  return Error{Failure::kUsage, "--json writes objects, which --rfc4180 and --delimiter say nothing of.",
               "Leave --json out, or name a file by `--output`."};
}

Result<void> Check(Context& context, const profile::Folders& folders, const RecipientStore& store,
                   const ExportOptions& options) {
  const auto names = store.ListGroupNames();
  if (!names) return names.error();
  const auto complaint = recipients::CheckExport(
      {.has_groups = !names->empty() || !options.group.empty(), .group = options.group, .file = options.file});
  if (complaint) return Error{Failure::kUsage, std::string(complaint->message)};
  if (const auto group = store.RequireGroup(options.group); !group) return group.error();
  if (options.file == kStandardOutput) return {};
  const auto may_write = platform::MayWriteTo(options.file, folders.OwnFiles(), context.prompts);
  if (!may_write) return may_write.error();
  if (*may_write) return {};
  return Error{Failure::kNotPermitted, platform::LeftLocked(options.file),
               "Name another file, or answer yes (--yes does) to have it unlocked."};
}

// Behind as many records as a pipe takes whole, or behind one that is longer; 0 where none is whole. Between quotes a
// record goes on over the ends of lines (RFC 4180 2.6).
std::size_t EndOfRecords(std::string_view text, bool has_quotes) {
  if (!has_quotes) {
    const auto last = text.substr(0, PIPE_BUF).rfind('\n');
    return (last != std::string_view::npos ? last : text.find('\n')) + 1;
  }
  std::size_t end = 0;
  bool is_quoted = false;
  for (std::size_t at = 0; at < text.size() && (at < PIPE_BUF || end == 0); ++at) {
    is_quoted ^= text[at] == '"';
    if (text[at] == '\n' && !is_quoted) end = at + 1;
  }
  return end;
}

// Nothing where nobody cancelled: why else a stream takes no more is told at the end of every command.
Result<void> NotWhole(const Context& context) {
  if (context.cancel.Requested() == platform::Stop::kNone) return {};
  return Error{Failure::kTryAgain, "The export was cancelled; what was written is not whole.",
               "Run it again for all of it."};
}

// The records that are whole, until a stop at `end`; gives what is left of the text.
std::string_view PrintRecords(const Context& context, std::string_view text, platform::Stop end, bool has_quotes) {
  while (std::ferror(stdout) == 0 && context.cancel.Requested() < end) {
    const std::size_t whole = EndOfRecords(text, has_quotes);
    if (whole == 0) break;
    Print(stdout, text.substr(0, whole));
    text.remove_prefix(whole);
  }
  return text;
}

// What is in the file, from its beginning, until a stop at `end`: then as many whole records as were printed by then.
// Known limit: one that is longer than a pipe takes at once (4,096 octets) is cut where its reader takes nothing of it
// for half a second after that is given up too.
Result<void> PrintFile(Context& context, int fd, const std::filesystem::path& folder, platform::Stop end,
                       bool has_quotes) {
  if (::lseek(fd, 0, SEEK_SET) < 0) return platform::SystemError("read", folder, errno);
  std::string block(platform::kFileBlock, '\0');
  std::string records;
  while (std::ferror(stdout) == 0 && context.cancel.Requested() < end) {
    const auto got = platform::ReadSome(fd, folder, block.data(), block.size());
    if (!got) return got.error();
    if (*got == 0) {
      Print(stdout, records);
      return {};
    }
    records.append(block, 0, *got);
    records.erase(0, records.size() - PrintRecords(context, records, end, has_quotes).size());
  }
  return NotWhole(context);
}

// Through a file without a name: who reads may take hours, and the store's writers are not to wait for that.
ExportOutcome ExportToStandardOutput(Context& context, const profile::Folders& folders, const ExportRequest& request) {
  ExportOutcome outcome;
  // A profile that cannot be written can be read all the same.
  auto scratch = platform::OpenScratchFile(folders.temporary);
  std::error_code none;
  const auto of_system = std::filesystem::temp_directory_path(none);
  if (!scratch && !none) scratch = platform::OpenScratchFile(of_system);
  if (!scratch) {
    outcome.error = scratch.error();
    return outcome;
  }
  const auto sink = [&](std::string_view block) {
    return platform::WriteAll(scratch->get(), folders.temporary, block);
  };
  outcome = recipients::ExportRecipients(folders.Database(), request, sink, context.cancel, ShowProgress(context));
  context.output.EndProgress();
  if (outcome.error) return outcome;
  // What was written before a cancel is shown to its end, unless that is given up too.
  const auto end = outcome.cancelled ? platform::Stop::kAbandon : platform::Stop::kStop;
  if (const auto printed = PrintFile(context, scratch->get(), folders.temporary, end, request.format.rfc4180); !printed)
    outcome.error = printed.error();
  return outcome;
}

// With --json, who reads standard output expects objects.
Result<ExportOutcome> ExportAsObjects(Context& context, const RecipientStore& store, const ExportRequest& request) {
  const auto group = store.RequireGroup(request.group);
  if (!group) return group.error();
  auto cursor = store.ListRecipients(group->id, group->sort_sql, recipients::Reading::kCopy);
  if (!cursor) return cursor.error();
  ExportOutcome outcome;
  const auto walked = Walk(*cursor, {}, &context.cancel, [&](const recipients::Recipient& recipient, std::int64_t) {
    nlohmann::ordered_json object;
    for (const std::size_t field : request.format.fields) {
      const std::string& value = recipient.values[field];
      object[std::string(recipients::kFields[field].label)] =
          request.format.inert_formulas ? recipients::WithoutFormula(value) : value;
    }
    context.output.Object(object);
    ++outcome.written;
    return true;
  });
  if (!walked) return walked.error();
  outcome.cancelled = *walked == recipients::Walked::kCancelled;
  return outcome;
}

int Conclude(Context& context, const ExportOptions& options, const ExportOutcome& outcome) {
  for (const auto& sentence : recipients::ExportTroubles(outcome)) context.output.Note(sentence.InEnglish());
  if (outcome.error) return context.output.Fail(*outcome.error);
  const std::string summary = recipients::ExportSummary(outcome.written);
  if (options.file == kStandardOutput) {
    if (HasStandardOutputArrived()) context.output.Note(summary);
  } else {
    context.output.Line(summary);
    context.output.Object({{"exported", outcome.written}, {"file", options.file}, {"lost", outcome.lost}});
  }
  if (!outcome.cancelled) return 0;
  return context.output.Fail({Failure::kTryAgain, "The export was cancelled; what is counted here was written.",
                              "Run it again for the others."});
}

Result<int> Export(Context& context, const profile::Folders& folders, const ExportOptions& options) {
  const auto request = RequestOf(options);
  if (!request) return request.error();
  const RecipientStore store(folders.Database(), {.cancel = &context.cancel});
  if (const auto checked = Check(context, folders, store, options); !checked) return checked.error();
  if (options.file != kStandardOutput) {
    const auto outcome = recipients::ExportToFile(folders.Database(), *request, options.file, folders.OwnFiles(),
                                                  context.cancel, ShowProgress(context));
    context.output.EndProgress();
    return Conclude(context, options, outcome);
  }
  if (!context.output.json) {
    return Conclude(context, options, ExportToStandardOutput(context, folders, *request));
  }
  if (const auto checked = CheckObjects(options); !checked) return checked.error();
  const auto outcome = ExportAsObjects(context, store, *request);
  if (!outcome) return outcome.error();
  return Conclude(context, options, *outcome);
}

}  // namespace

void AddExportCommand(CLI::App& app, Context& context) {
  CLI::App& command = *app.add_subcommand("export", "Write the recipients of a group to a text file");
  const auto options = std::make_shared<ExportOptions>();
  command.add_option("-g,--group", options->group, "The group")->required();
  command.add_option("--fields", options->fields,
                     "The fields of each line in their order, as in \"Email Address,City\", or All; the address alone "
                     "without it");
  command.add_option("--delimiter", options->delimiter,
                     "Tab, Colon, Space, Comma or Semicolon; without it Tab, or with --rfc4180 Comma");
  command.add_flag("--rfc4180", options->rfc4180,
                   "Begin with a line of headings, and put values that hold the delimiter, quotes or line ends in "
                   "quotes");
  command.add_flag("--utf8", options->utf8, "Write UTF-8, whatever the character set of the locale is");
  command.add_flag("--inert-formulas", options->inert_formulas,
                   "Put an apostrophe before values that a spreadsheet would calculate: those with \"=\", \"+\", "
                   "\"-\" or \"@\" first. An import brings the apostrophe back");
  command.add_option("-o,--output", options->file, "The file, or - for standard output")
      ->type_name("FILE")
      ->capture_default_str();
  command.footer(
      "Without --rfc4180 values are written as they are: one that holds the delimiter becomes two for whoever reads "
      "it.\n"
      "Example: quillcast export -g Readers --fields \"Email Address,First Name,City\" --rfc4180 --utf8 -o list.csv");
  OnRun(command, context, [options](Context& ctx) {
    const auto folders = ctx.PreparedFolders();
    if (!folders) return ctx.output.Fail(folders.error());
    const auto done = Export(ctx, *folders, *options);
    return done ? *done : ctx.output.Fail(done.error());
  });
}

}  // namespace quillcast::cli
