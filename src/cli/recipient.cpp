// quillcast recipient: the recipients of one group.
#include <fmt/format.h>

#include <memory>

#include "cli/commands.h"
#include "platform/text.h"
#include "recipients/group_checks.h"
#include "recipients/recipient_store.h"

namespace quillcast::cli {
namespace {

using recipients::kFields;
using recipients::Recipient;
using recipients::RecipientGroup;
using recipients::RecipientStore;
using recipients::StoredRecipient;

struct RecipientOptions {
  std::string group;
  std::string address;
  std::optional<std::string> email;
  std::vector<std::string> fields;  // "First Name=Ada"
  bool all_fields = false;
  bool yes = false;
};

// The start that all four actions share: the store made ready and the group found.
template <typename Action>
void OnGroup(CLI::App& command, Context& context, const std::shared_ptr<RecipientOptions>& options, Action action) {
  command.add_option("-g,--group", options->group, "The group")->required();
  OnRun(command, context, [options, action](Context& ctx) {
    const auto folders = ctx.PreparedFolders();
    if (!folders) return ctx.output.Fail(folders.error());
    RecipientStore store(folders->Database(), {.cancel = &ctx.cancel});
    const auto group = store.RequireGroup(options->group);
    if (!group) return ctx.output.Fail(group.error());
    const Result<int> done = action(ctx, store, *group, *options);
    return done ? *done : ctx.output.Fail(done.error());
  });
}

// Every field of the list that was asked for, also the empty ones: programs look for fixed names.
nlohmann::ordered_json AsObject(const Recipient& recipient, bool all_fields) {
  nlohmann::ordered_json object;
  for (std::size_t field = 0; field < recipients::kFieldCount; ++field) {
    const bool always =
        field == recipients::kEmail || field == recipients::kFirstName || field == recipients::kLastName;
    if (always || all_fields) object[std::string(kFields[field].label)] = recipient.values[field];
  }
  return object;
}

std::vector<std::string> AsColumns(const Recipient& recipient, bool all_fields) {
  const auto& values = recipient.values;
  if (!all_fields) return {values[recipients::kEmail], values[recipients::kFirstName], values[recipients::kLastName]};
  std::vector<std::string> columns = {values[recipients::kEmail]};
  for (std::size_t field = 1; field < recipients::kFieldCount; ++field) {
    if (!values[field].empty()) columns.push_back(fmt::format("{}={}", kFields[field].label, values[field]));
  }
  return columns;
}

Result<int> List(Context& context, RecipientStore& store, const RecipientGroup& group,
                 const RecipientOptions& options) {
  // A pager may hold the list for hours, and writers are not to wait for it.
  auto cursor = store.ListRecipients(group.id, group.sort_sql, recipients::Reading::kCopy);
  if (!cursor) return cursor.error();
  const auto walked = Walk(*cursor, {}, nullptr, [&](const Recipient& recipient, std::int64_t) {
    if (context.output.json) {
      context.output.Object(AsObject(recipient, options.all_fields));
    } else {
      context.output.Columns(AsColumns(recipient, options.all_fields));
    }
    return true;
  });
  if (!walked) return walked.error();
  return 0;
}

Result<void> SetFields(const std::vector<std::string>& fields, Recipient& recipient) {
  for (const std::string& text : fields) {
    const auto equals = text.find('=');
    const auto field = recipients::FieldOfLabel(platform::Trim(std::string_view(text).substr(0, equals)));
    if (equals == std::string::npos || field == recipients::kFieldCount) {
      std::string labels;
      for (const auto& names : kFields) labels += fmt::format("{}\"{}\"", labels.empty() ? "" : ", ", names.label);
      return Error{Failure::kUsage, Say("\"{}\" names no field.", platform::Printable(text, 100)),
                   "Write it as in \"First Name=Ada\"; the fields are " + labels + "."};
    }
    recipient.values[field] = text.substr(equals + 1);
  }
  return {};
}

Result<StoredRecipient> Require(const RecipientStore& store, const RecipientGroup& group, const std::string& address) {
  auto found = store.FindRecipient(group.id, address);
  if (!found) return found.error();
  if (*found) return **found;
  return Error{Failure::kUsage, Say(R"(There is no recipient "{}" in the group "{}".)", address, group.name),
               "`quillcast recipient list` shows those that are."};
}

int Tell(Context& context, const RecipientGroup& group, std::string_view address, const char* done) {
  context.output.Line(fmt::format("{}: {}", platform::Printable(address), done));
  context.output.Object({{"group", group.name}, {"address", address}, {"done", done}});
  return 0;
}

Result<int> Add(Context& context, RecipientStore& store, const RecipientGroup& group, const RecipientOptions& options) {
  Recipient recipient;
  if (const auto set = SetFields(options.fields, recipient); !set) return set.error();
  if (options.email) recipient.values[recipients::kEmail] = *options.email;
  const auto complaint = recipients::AddNewRecipient(store, group.id, recipient);
  if (!complaint) return complaint.error();
  if (*complaint) return context.output.Complain((*complaint)->message);
  return Tell(context, group, recipient.email(), "added");
}

Result<int> Modify(Context& context, RecipientStore& store, const RecipientGroup& group,
                   const RecipientOptions& options) {
  auto stored = Require(store, group, options.address);
  if (!stored) return stored.error();
  Recipient& recipient = stored->recipient;
  if (const auto set = SetFields(options.fields, recipient); !set) return set.error();
  if (options.email) recipient.values[recipients::kEmail] = *options.email;
  const auto complaint = recipients::ChangeRecipient(store, group.id, stored->id, recipient);
  if (!complaint) return complaint.error();
  if (*complaint) return context.output.Complain((*complaint)->message);
  return Tell(context, group, recipient.email(), "modified");
}

Result<int> Delete(Context& context, RecipientStore& store, const RecipientGroup& group,
                   const RecipientOptions& options) {
  const auto stored = Require(store, group, options.address);
  if (!stored) return stored.error();
  const std::string& address = stored->recipient.email();
  const std::string question = fmt::format("Are you sure you want to delete '{}'?", platform::Printable(address));
  if (!options.yes && context.prompts.Ask(question) != platform::Answer::kYes) {
    return Error{Failure::kNotPermitted, "Nothing was deleted.", "`--yes` answers the question."};
  }
  if (const auto gone = store.DeleteRecipient(stored->id); !gone) return gone.error();
  return Tell(context, group, address, "deleted");
}

}  // namespace

void AddRecipientCommand(CLI::App& app, Context& context) {
  CLI::App& recipient = *app.add_subcommand("recipient", "List, add, modify and delete the recipients of a group");
  recipient.require_subcommand(1);
  recipient.footer("Example: quillcast recipient add --group Readers --email ada@example.org");
  const auto options = std::make_shared<RecipientOptions>();
  constexpr const char* kFieldHelp = "A field and its text, as in \"First Name=Ada\"; may be given several times";

  CLI::App& list = *recipient.add_subcommand("list", "Show address, first and last name of every recipient");
  list.add_flag("--fields", options->all_fields, "Show all eighteen fields");
  list.footer("Example: quillcast --json recipient list --group Readers --fields");
  OnGroup(list, context, options, List);

  CLI::App& add = *recipient.add_subcommand("add", "Add one recipient");
  add.add_option("-e,--email", options->email, "The address")->required();
  add.add_option("-f,--field", options->fields, kFieldHelp)->allow_extra_args(false);
  add.footer("Example: quillcast recipient add -g Readers -e ada@example.org -f \"First Name=Ada\" -f City=London");
  OnGroup(add, context, options, Add);

  CLI::App& modify = *recipient.add_subcommand("modify", "Change fields of one recipient; the others stay");
  modify.add_option("ADDRESS", options->address, "The recipient")->required();
  modify.add_option("-e,--email", options->email, "The new address");
  modify.add_option("-f,--field", options->fields, kFieldHelp)->allow_extra_args(false);
  modify.footer("Example: quillcast recipient modify -g Readers ada@example.org -f \"City=St Albans\"");
  OnGroup(modify, context, options, Modify);

  CLI::App& gone = *recipient.add_subcommand("delete", "Delete one recipient");
  gone.add_option("ADDRESS", options->address, "The recipient")->required();
  gone.add_flag("--yes", options->yes, "Do not ask");
  gone.footer("Example: quillcast recipient delete -g Readers ada@example.org --yes");
  OnGroup(gone, context, options, Delete);
}

}  // namespace quillcast::cli
