// quillcast group capitalise: names written as names are.
#include <fmt/format.h>

#include <memory>

#include "cli/group_commands.h"
#include "cli/store_command.h"
#include "platform/text.h"
#include "recipients/edit/capitalise_group.h"

namespace quillcast::cli {
namespace {

using recipients::NameChange;
using recipients::RecipientStore;

struct CapitaliseOptions {
  std::string group;
  bool dry_run = false;
};

Error EndedBefore() {
  return {Failure::kTryAgain, "The list of changes was cancelled; nothing was changed.", "Run the command again."};
}

// How many recipients there are to be changed; each change is shown.
Result<std::int64_t> ShowChanges(Context& context, const RecipientStore& store, const std::string& group) {
  std::int64_t count = 0;
  std::int64_t last = 0;
  const auto shown = PreviewCapitals(store, group, [&](const NameChange& change) {
    const std::string label(recipients::kFields[change.field].label);
    context.output.Columns({change.address, label, change.before, change.after});
    context.output.Object(
        {{"address", change.address}, {"field", label}, {"before", change.before}, {"after", change.after}});
    count += change.id == last ? 0 : 1;
    last = change.id;
    return context.cancel.Requested() == platform::Stop::kNone;  // the question names all, whoever reads them
  });
  if (!shown) return shown.error();
  if (context.cancel.Requested() != platform::Stop::kNone) return EndedBefore();
  return count;
}

Result<int> Capitalise(Context& context, const RecipientStore& store, const CapitaliseOptions& options) {
  const auto group = store.RequireGroup(options.group);
  if (!group) return group.error();
  const auto count = ShowChanges(context, store, group->name);
  if (!count) return count.error();
  std::int64_t changed = 0;
  if (*count > 0 && !options.dry_run) {
    const auto asked = AskFirst(context, recipients::CapitaliseQuestion(*count, group->name));
    if (!asked) return asked.error();
    const auto done = recipients::CapitaliseGroup(store, group->name, ShowProgress(context));
    if (!done) return done.error();
    changed = *done;
    context.output.EndProgress();
    context.output.Note(fmt::format("{} changed. `quillcast group undo` takes that back.",
                                    platform::Counted(changed, "recipient was", "recipients were")));
  }
  if (*count == 0) context.output.Note("All names are written as names are.");
  context.output.Object({{"group", group->name}, {"done", "capitalise"}, {"changed", changed}});
  return 0;
}

}  // namespace

void AddGroupCapitalise(CLI::App& group, Context& context) {
  const auto options = std::make_shared<CapitaliseOptions>();
  CLI::App& command =
      *group.add_subcommand("capitalise", "Write first and last names as names are: DUPONT-LEROY as Dupont-Leroy");
  command.alias("capitalize");
  command.add_option("NAME", options->group, "The group")->required();
  command.add_flag("--dry-run", options->dry_run, "Show what would change; change nothing");
  command.footer(
      "Shows address, field, old and new name of each change, then asks.\n"
      "Example: quillcast group capitalise Readers --dry-run");
  OnRun(command, context, [options](Context& ctx) {
    return WithStore(ctx, [&](RecipientStore& store) { return Capitalise(ctx, store, *options); });
  });
}

}  // namespace quillcast::cli
