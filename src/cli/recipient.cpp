// quillcast recipient: the recipients of one group.
#include <fmt/format.h>

#include <memory>
#include <span>

#include "cli/commands.h"
#include "cli/recipient_commands.h"
#include "cli/store_command.h"
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
};

// The start that these actions share: the store made ready and the group found.
template <typename Action>
void OnGroup(CLI::App& command, Context& context, const std::shared_ptr<RecipientOptions>& options, Action action) {
  command.add_option("-g,--group", options->group, "The group")->required();
  OnRun(command, context, [options, action](Context& ctx) {
    return WithStore(ctx, [&](RecipientStore& store) -> Result<int> {
      const auto group = store.RequireGroup(options->group);
      if (!group) return group.error();
      return action(ctx, store, *group, *options);
    });
  });
}

Result<int> ListRecipients(Context& context, RecipientStore& store, const RecipientGroup& group,
                           const RecipientOptions& options) {
  // A pager may hold the list for hours, and writers are not to wait for it.
  auto cursor = store.ListRecipients(group.id, group.sort_sql, recipients::Reading::kCopy);
  if (!cursor) return cursor.error();
  const auto walked = Walk(*cursor, {}, &context.cancel, [&](const Recipient& recipient, std::int64_t) {
    ShowRecipient(context, recipient, options.all_fields);
    return IsWanted(context);
  });
  if (!walked) return walked.error();
  if (const auto ended = EndOfList(context); !ended) return ended.error();
  return 0;
}

Result<void> SetFields(const std::vector<std::string>& fields, Recipient& recipient) {
  for (const std::string& text : fields) {
    const auto equals = text.find('=');
    const auto field = recipients::FieldOfLabel(platform::Trim(std::string_view(text).substr(0, equals)));
    if (equals == std::string::npos || field == recipients::kFieldCount)
      return recipients::NoSuchField(text, "Write it as in \"First Name=Ada\"");
    recipient.values[field] = text.substr(equals + 1);
  }
  return {};
}

Result<StoredRecipient> Require(const RecipientStore& store, const RecipientGroup& group, const std::string& address) {
  const auto keys = store.KeysOfAddresses(group.id, std::span(&address, 1));
  if (!keys) return keys.error();
  if (keys->front() == 0) return NoSuchRecipient(address, group.name);
  auto rows = store.RecipientsOfKeys(*keys);
  if (!rows) return rows.error();
  return rows->front().id == 0 ? Result<StoredRecipient>(recipients::RecipientGone()) : std::move(rows->front());
}

int Tell(Context& context, const RecipientGroup& group, std::string_view address, const char* done) {
  context.output.Line(fmt::format("{}: {}", platform::Printable(address), done));
  context.output.Object({{"group", group.name}, {"address", address}, {"done", done}});
  return 0;
}

Result<int> AddRecipient(Context& context, RecipientStore& store, const RecipientGroup& group,
                         const RecipientOptions& options) {
  Recipient recipient;
  if (const auto set = SetFields(options.fields, recipient); !set) return set.error();
  if (options.email) recipient.values[recipients::kEmail] = *options.email;
  const auto entered = recipients::AddNewRecipient(store, group.id, recipient);
  if (!entered) return entered.error();
  if (entered->complaint) return context.output.Complain(entered->complaint->message);
  return Tell(context, group, recipient.email(), "added");
}

Result<int> ModifyRecipient(Context& context, RecipientStore& store, const RecipientGroup& group,
                            const RecipientOptions& options) {
  auto stored = Require(store, group, options.address);
  if (!stored) return stored.error();
  Recipient& recipient = stored->recipient;
  if (const auto set = SetFields(options.fields, recipient); !set) return set.error();
  if (options.email) recipient.values[recipients::kEmail] = *options.email;
  const auto entered = recipients::ChangeRecipient(store, group.id, stored->id, recipient);
  if (!entered) return entered.error();
  if (entered->complaint) return context.output.Complain(entered->complaint->message);
  return Tell(context, group, recipient.email(), "modified");
}

}  // namespace

void AddRecipientCommand(CLI::App& app, Context& context) {
  CLI::App& recipient =
      *app.add_subcommand("recipient", "The recipients of a group: list, add, modify, delete, move and copy");
  recipient.require_subcommand(1);
  recipient.footer("Example: quillcast recipient add --group Readers --email ada@example.org");
  const auto options = std::make_shared<RecipientOptions>();
  constexpr const char* kFieldHelp = "A field and its text, as in \"First Name=Ada\"; may be given several times";

  CLI::App& list = *recipient.add_subcommand("list", "Show address, first and last name of every recipient");
  list.add_flag("--fields", options->all_fields, "Show all eighteen fields");
  list.footer("Example: quillcast --json recipient list --group Readers --fields");
  OnGroup(list, context, options, ListRecipients);

  CLI::App& add = *recipient.add_subcommand("add", "Add one recipient");
  add.add_option("-e,--email", options->email, "The address")->required();
  add.add_option("-f,--field", options->fields, kFieldHelp)->allow_extra_args(false);
  add.footer("Example: quillcast recipient add -g Readers -e ada@example.org -f \"First Name=Ada\" -f City=London");
  OnGroup(add, context, options, AddRecipient);

  CLI::App& modify = *recipient.add_subcommand("modify", "Change fields of one recipient; the others stay");
  modify.add_option("ADDRESS", options->address, "The recipient")->required();
  modify.add_option("-e,--email", options->email, "The new address");
  modify.add_option("-f,--field", options->fields, kFieldHelp)->allow_extra_args(false);
  modify.footer("Example: quillcast recipient modify -g Readers ada@example.org -f \"City=St Albans\"");
  OnGroup(modify, context, options, ModifyRecipient);

  AddRecipientEdits(recipient, context);
}

}  // namespace quillcast::cli
