#include "cli/store_command.h"

#include <fmt/format.h>

#include "cli/standard_input.h"
#include "platform/text.h"

namespace quillcast::cli {

using recipients::kFields;
using recipients::Recipient;

Result<void> AskFirst(Context& context, const Sentence& question) {
  if (context.assume_yes || context.prompts.Ask(question.InEnglish()) == platform::Answer::kYes) return {};
  return Error{Failure::kNotPermitted, "Nothing was changed.", "`--yes` answers the question."};
}

Error NoSuchRecipient(std::string_view address, std::string_view group) {
  return {Failure::kUsage,
          Say(R"(There is no recipient "{}" in the group "{}".)", platform::Printable(address, 300), group),
          "`quillcast recipient list` shows those that are."};
}

recipients::OnProgress ShowProgress(Context& context) {
  return [&context](std::int64_t done, std::int64_t total) {
    context.output.Progress(fmt::format("{} of {}", platform::WithThousands(done), platform::WithThousands(total)));
  };
}

nlohmann::ordered_json RecipientObject(const Recipient& recipient, bool all_fields) {
  nlohmann::ordered_json object;
  for (std::size_t field = 0; field < recipients::kFieldCount; ++field) {
    const bool always =
        field == recipients::kEmail || field == recipients::kFirstName || field == recipients::kLastName;
    if (always || all_fields) object[std::string(kFields[field].label)] = recipient.values[field];
  }
  return object;
}

namespace {

// The address first: that is what AddressesOf takes.
std::vector<std::string> AsColumns(const Recipient& recipient, bool all_fields) {
  const auto& values = recipient.values;
  std::vector<std::string> columns = {values[recipients::kEmail]};
  if (!all_fields) {
    columns.insert(columns.end(), {values[recipients::kFirstName], values[recipients::kLastName]});
    return columns;
  }
  for (std::size_t field = 1; field < recipients::kFieldCount; ++field) {
    if (!values[field].empty()) columns.push_back(fmt::format("{}={}", kFields[field].label, values[field]));
  }
  return columns;
}

}  // namespace

void ShowRecipient(Context& context, const Recipient& recipient, bool all_fields, std::string_view group) {
  if (context.output.json) return context.output.Object(RecipientObject(recipient, all_fields));
  auto columns = AsColumns(recipient, all_fields);
  if (!group.empty()) columns.push_back(fmt::format("{}{}", all_fields ? "Group=" : "", group));
  context.output.Columns(columns);
}

void TellDuplicates(Context& context, const recipients::MoveOutcome& outcome) {
  for (const std::string& entry : outcome.duplicate_entries) {
    context.output.Line(fmt::format("{}: was there already", platform::Printable(entry)));
    context.output.Object({{"address", entry}, {"done", "duplicate"}});
  }
  const auto more = outcome.duplicates - static_cast<std::int64_t>(outcome.duplicate_entries.size());
  if (more > 0) context.output.Note(platform::Counted(more, "more was", "more were") + " there already.");
}

bool IsWanted(const Context& context) {
  return context.cancel.Requested() == platform::Stop::kNone && std::ferror(stdout) == 0;
}

Result<void> EndOfList(const Context& context) {
  if (context.cancel.Requested() == platform::Stop::kNone) return {};
  return Error{Failure::kTryAgain, "The list was cancelled; it may not be whole.",
               "Run the command again for all of it."};
}

Result<std::vector<std::string>> AddressesOf(const Context& context, const std::vector<std::string>& arguments) {
  if (arguments != std::vector<std::string>{"-"}) return arguments;
  std::string lines;
  const auto read = ReadStandardInput(context.cancel, [&](std::string_view piece) -> Result<void> {
    lines += piece;
    return {};
  });
  if (!read) return read.error();
  std::vector<std::string> addresses;
  for (const std::string_view line : platform::Split(lines, '\n')) {
    const std::string_view address = line.substr(0, line.find_first_of("\t\r"));
    if (!platform::Trim(address).empty()) addresses.emplace_back(address);
  }
  if (!addresses.empty()) return addresses;
  return Error{Failure::kNoInput, "Standard input holds no address.",
               "Write one on each line, as `quillcast find` does."};
}

}  // namespace quillcast::cli
