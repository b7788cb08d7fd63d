// What an import was asked for on the command line, made into a request.
#pragma once

#include <optional>
#include <string>

#include "cli/context.h"
#include "recipients/import/import_sample.h"
#include "recipients/import/recipient_import.h"

namespace quillcast::cli {

struct ImportOptions {
  std::string file;  // "-" is standard input
  std::string group;
  bool harvest = false;
  std::string map;
  bool header = false;
  std::optional<std::string> take;  // columns, "25,1,2"; "All" whatever the kept mapping takes
  std::string mapping;              // of a kept one, its name
  std::string save_mapping;         // the name to keep it under
  std::string delimiter;            // empty: that of the kept mapping, or Comma
  bool quotes = false;
  bool rfc4180 = false;
  std::optional<std::int64_t> skip;
  bool opt_in = false;
  std::optional<std::string> encoding;  // blank or "Auto": found out, whatever the kept mapping says; so the next one
  std::string format;                   // empty: found out
  std::optional<std::string> sheet;     // blank: the first with anything in it
  bool preview = false;
  bool dry_run = false;
  bool list_mappings = false;
  std::string delete_mapping;
  bool forget_mappings = false;
};

// What was asked for, with what had to be found out in the file.
struct ImportPlan {
  recipients::ImportRequest request;
  bool delimiter_was_found = false;
  std::vector<std::string> headings;  // that were mapped by; none without --header
  std::string left_out;               // what to know of headings that cannot be mapped; empty where all can
};

// `file` is what to open, where that is not what was named. Errors: kUsage for what does not go together, and those of
// reading the file, with kTryAgain when `cancel` asks to give up.
Result<ImportPlan> PlanImport(const ImportOptions& options, const std::filesystem::path& file,
                              const profile::SettingsStore& settings, const std::string& codeset,
                              const platform::CancelToken& cancel);

// Keeps the mapping of the plan under the name that was asked for, if any was; to be called when every check has
// passed.
Result<void> SaveMappingOf(const ImportOptions& options, const ImportPlan& plan, profile::SettingsStore& settings);

}  // namespace quillcast::cli
