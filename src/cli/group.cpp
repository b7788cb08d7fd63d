// quillcast group: the groups of recipients.
#include <fmt/format.h>

#include <memory>

#include "cli/commands.h"
#include "cli/group_commands.h"
#include "cli/store_command.h"
#include "platform/text.h"
#include "recipients/group_checks.h"
#include "recipients/recipient_store.h"

namespace quillcast::cli {
namespace {

using recipients::RecipientStore;

struct GroupOptions {
  std::string name;
  std::string new_name;
};

Result<int> ListGroups(Context& context, const RecipientStore& store) {
  const auto names = store.ListGroupNames();
  if (!names) return names.error();
  for (const std::string& name : *names) {
    context.output.Line(platform::Printable(name));
    context.output.Object({{"group", name}});
  }
  if (names->empty()) context.output.Note("There are no groups yet. `quillcast group new NAME` makes one.");
  return 0;
}

int Refuse(const Context& context, const recipients::GroupComplaint& refused) {
  return context.output.Complain(refused.message.empty() ? refused.reason.InEnglish() : refused.message);
}

Result<int> NewGroup(Context& context, RecipientStore& store, const GroupOptions& options) {
  const auto complaint = recipients::MakeGroup(store, options.name);
  if (!complaint) return complaint.error();
  if (*complaint) return Refuse(context, **complaint);
  context.output.Line(fmt::format("Group \"{}\" was made.", options.name));
  context.output.Object({{"group", options.name}, {"done", "new"}});
  return 0;
}

Result<int> RenameGroup(Context& context, RecipientStore& store, const GroupOptions& options) {
  const auto group = store.RequireGroup(options.name);
  if (!group) return group.error();
  const auto complaint = recipients::GiveGroupName(store, group->name, options.new_name);
  if (!complaint) return complaint.error();
  if (*complaint) return Refuse(context, **complaint);
  context.output.Line(fmt::format(R"(Group "{}" is now "{}".)", group->name, options.new_name));
  context.output.Object({{"group", options.new_name}, {"done", "rename"}, {"old", group->name}});
  return 0;
}

Result<int> DeleteGroup(Context& context, RecipientStore& store, const GroupOptions& options) {
  const auto group = store.RequireGroup(options.name);
  if (!group) return group.error();
  if (const auto asked = AskFirst(context, recipients::DeleteQuestion(group->name)); !asked) return asked.error();
  const auto gone = recipients::DeleteWholeGroup(store, group->name, ShowProgress(context));
  if (!gone) return gone.error();
  context.output.EndProgress();
  context.output.Line(fmt::format(
      "Group \"{}\" and its recipients were deleted. `quillcast group undo` takes that back.", group->name));
  context.output.Object({{"group", group->name}, {"done", "delete"}, {"recipients", *gone}});
  return 0;
}

Result<int> CountGroup(Context& context, const RecipientStore& store, const GroupOptions& options) {
  const auto group = store.RequireGroup(options.name);
  if (!group) return group.error();
  const auto count = store.CountRecipients(group->name);
  if (!count) return count.error();
  context.output.Line(std::to_string(*count));
  context.output.Object({{"group", group->name}, {"recipients", *count}});
  return 0;
}

}  // namespace

void AddGroupCommand(CLI::App& app, Context& context) {
  CLI::App& group = *app.add_subcommand(
      "group", "The groups of recipients: list, make, rename, delete, count, sort, merge, and more");
  group.require_subcommand(1);
  group.footer("Example: quillcast group new \"Readers 2026\"");
  const auto options = std::make_shared<GroupOptions>();

  CLI::App& list = *group.add_subcommand("list", "Show the groups in the order in which they were made");
  list.footer("Example: quillcast --json group list");
  OnRun(list, context,
        [](Context& ctx) { return WithStore(ctx, [&](RecipientStore& store) { return ListGroups(ctx, store); }); });

  CLI::App& made = *group.add_subcommand("new", "Make an empty group");
  made.add_option("NAME", options->name, "Letters A to Z, digits, blanks and \"-\"")->required();
  made.footer("Example: quillcast group new \"Readers 2026\"");
  OnRun(made, context, [options](Context& ctx) {
    return WithStore(ctx, [&](RecipientStore& store) { return NewGroup(ctx, store, *options); });
  });

  CLI::App& renamed = *group.add_subcommand("rename", "Give a group another name");
  renamed.add_option("OLD", options->name, "The group")->required();
  renamed.add_option("NEW", options->new_name, "Its new name")->required();
  renamed.footer("Example: quillcast group rename Readers \"Readers 2026\"");
  OnRun(renamed, context, [options](Context& ctx) {
    return WithStore(ctx, [&](RecipientStore& store) { return RenameGroup(ctx, store, *options); });
  });

  CLI::App& gone = *group.add_subcommand("delete", "Delete a group and all its recipients");
  gone.add_option("NAME", options->name, "The group")->required();
  gone.footer("Example: quillcast group delete Readers --yes");
  OnRun(gone, context, [options](Context& ctx) {
    return WithStore(ctx, [&](RecipientStore& store) { return DeleteGroup(ctx, store, *options); });
  });

  CLI::App& count = *group.add_subcommand("count", "Count the recipients of a group");
  count.add_option("NAME", options->name, "The group")->required();
  count.footer("Example: quillcast group count Readers");
  OnRun(count, context, [options](Context& ctx) {
    return WithStore(ctx, [&](RecipientStore& store) { return CountGroup(ctx, store, *options); });
  });

  AddGroupSort(group, context);
  AddGroupMerge(group, context);
  AddGroupCapitalise(group, context);
  AddGroupDuplicates(group, context);
  AddGroupUndo(group, context);
}

}  // namespace quillcast::cli
