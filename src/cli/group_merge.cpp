// quillcast group merge: whole groups into another one.
#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "cli/group_commands.h"
#include "cli/store_command.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

using recipients::RecipientStore;

struct MergeOptions {
  std::vector<std::string> groups;
  std::string into;
};

// As the store has them, each once.
Result<std::vector<std::string>> NamesOf(const RecipientStore& store, const std::vector<std::string>& given) {
  std::vector<std::string> names;
  for (const std::string& name : given) {
    const auto group = store.RequireGroup(name);
    if (!group) return group.error();
    if (std::find(names.begin(), names.end(), group->name) == names.end()) names.push_back(group->name);
  }
  return names;
}

Result<int> Merge(Context& context, RecipientStore& store, const MergeOptions& options) {
  const auto groups = NamesOf(store, options.groups);
  if (!groups) return groups.error();
  const auto target = store.RequireGroup(options.into);
  if (!target) return target.error();
  if (const auto asked = AskFirst(context, recipients::MergeQuestion(*groups, target->name)); !asked)
    return asked.error();
  const auto merged = recipients::MergeGroups(store, *groups, target->name, ShowProgress(context));
  if (!merged) return merged.error();
  context.output.EndProgress();
  TellDuplicates(context, *merged);
  context.output.Line(fmt::format("{} moved to \"{}\", {} there already. `quillcast group undo` takes that back.",
                                  platform::Counted(merged->done, "recipient was", "recipients were"), target->name,
                                  platform::Counted(merged->duplicates, "was", "were")));
  context.output.Object({{"group", target->name},
                         {"done", "merge"},
                         {"merged", *groups},
                         {"moved", merged->done},
                         {"duplicates", merged->duplicates}});
  return 0;
}

}  // namespace

void AddGroupMerge(CLI::App& group, Context& context) {
  const auto options = std::make_shared<MergeOptions>();
  CLI::App& merge =
      *group.add_subcommand("merge", "Move all recipients of groups to another one, and delete the groups");
  merge.add_option("NAME", options->groups, "The groups that go")->required();
  merge.add_option("--into", options->into, "The group that stays")->required();
  merge.footer("Example: quillcast group merge \"Readers 2025\" Guests --into Readers --yes");
  OnRun(merge, context, [options](Context& ctx) {
    return WithStore(ctx, [&](RecipientStore& store) { return Merge(ctx, store, *options); });
  });
}

}  // namespace quillcast::cli
