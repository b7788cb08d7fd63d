#include "cli/store_command.h"

#include <fmt/format.h>

#include <iostream>

#include "platform/text.h"

namespace quillcast::cli {

using recipients::kFields;
using recipients::Recipient;

Result<void> AskFirst(Context& context, const Sentence& question) {
  if (context.assume_yes || context.prompts.Ask(question.InEnglish()) == platform::Answer::kYes) return {};
  return Error{Failure::kNotPermitted, "Nothing was changed.", "`--yes` answers the question."};
}

Error NoSuchField(std::string_view given, std::string_view example) {
  std::string labels;
  for (const auto& names : kFields) labels += fmt::format("{}\"{}\"", labels.empty() ? "" : ", ", names.label);
  return {Failure::kUsage, Say("\"{}\" names no field.", platform::Printable(given, 100)),
          fmt::format("Write it as in \"{}\"; the fields are {}.", example, labels)};
}

Error NoSuchRecipient(std::string_view address, std::string_view group) {
  return {Failure::kUsage,
          Say(R"(There is no recipient "{}" in the group "{}".)", platform::Printable(address, 300), group),
          "`quillcast recipient list` shows those that are."};
}

recipients::OnProgress ShowProgress(Context& context) {
  return [&context](std::int64_t done, std::int64_t total) {
    context.output.Progress(fmt::format("{} of {}", done, total));
  };
}

nlohmann::ordered_json AsObject(const Recipient& recipient, bool all_fields) {
  nlohmann::ordered_json object;
  for (std::size_t field = 0; field < recipients::kFieldCount; ++field) {
    const bool always =
        field == recipients::kEmail || field == recipients::kFirstName || field == recipients::kLastName;
    if (always || all_fields) object[std::string(kFields[field].label)] = recipient.values[field];
  }
  return object;
}

namespace {

std::vector<std::string> AsColumns(const Recipient& recipient, bool all_fields) {
  const auto& values = recipient.values;
  if (!all_fields) return {values[recipients::kEmail], values[recipients::kFirstName], values[recipients::kLastName]};
  std::vector<std::string> columns = {values[recipients::kEmail]};
  for (std::size_t field = 1; field < recipients::kFieldCount; ++field) {
    if (!values[field].empty()) columns.push_back(fmt::format("{}={}", kFields[field].label, values[field]));
  }
  return columns;
}

}  // namespace

void ShowRecipient(Context& context, const Recipient& recipient, bool all_fields) {
  if (context.output.json) {
    context.output.Object(AsObject(recipient, all_fields));
  } else {
    context.output.Columns(AsColumns(recipient, all_fields));
  }
}

void TellDuplicates(Context& context, const recipients::MoveOutcome& outcome) {
  for (const std::string& entry : outcome.duplicate_entries) {
    context.output.Line(fmt::format("{}: was there already", platform::Printable(entry)));
    context.output.Object({{"address", entry}, {"done", "duplicate"}});
  }
  const auto more = outcome.duplicates - static_cast<std::int64_t>(outcome.duplicate_entries.size());
  if (more > 0) context.output.Note(fmt::format("{} more were there already.", more));
}

Result<std::vector<std::string>> AddressesOf(const std::vector<std::string>& arguments) {
  if (arguments != std::vector<std::string>{"-"}) return arguments;
  std::vector<std::string> addresses;
  for (std::string line; std::getline(std::cin, line);) {
    const std::string_view address = platform::Trim(std::string_view(line).substr(0, line.find('\t')));
    if (!address.empty()) addresses.emplace_back(address);
  }
  if (!addresses.empty()) return addresses;
  return Error{Failure::kNoInput, "Standard input holds no address.",
               "Write one on each line, as `quillcast find` does."};
}

}  // namespace quillcast::cli
