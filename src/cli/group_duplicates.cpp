// quillcast group duplicates: who stands more than once.
#include <fmt/format.h>

#include <memory>

#include "cli/group_commands.h"
#include "cli/store_command.h"
#include "platform/text.h"
#include "recipients/edit/duplicates.h"

namespace quillcast::cli {
namespace {

using recipients::DuplicateSet;
using recipients::Holder;
using recipients::RecipientStore;

struct DuplicatesOptions {
  std::vector<std::string> groups;
  bool remove = false;
};

void ShowSet(Context& context, const DuplicateSet& set) {
  auto holders = nlohmann::ordered_json::array();
  for (const Holder& holder : set.holders) {
    context.output.Columns({set.address, holder.group, holder.entry});
    holders.push_back({{"group", holder.group}, {"entry", holder.entry}});
  }
  context.output.Object({{"address", set.address}, {"holders", holders}});
}

Result<int> Remove(Context& context, RecipientStore& store, const std::string& group, std::int64_t count) {
  const auto asked = AskFirst(context, recipients::DeleteDuplicatesQuestion(count, group));
  if (!asked) return asked.error();
  const auto gone = recipients::DeleteDuplicates(store, group, ShowProgress(context));
  if (!gone) return gone.error();
  context.output.EndProgress();
  context.output.Note(fmt::format("{} deleted. `quillcast group undo` takes that back.",
                                  platform::Counted(*gone, "duplicate was", "duplicates were")));
  context.output.Object({{"group", group}, {"done", "duplicates"}, {"deleted", *gone}});
  return 0;
}

Result<int> Duplicates(Context& context, RecipientStore& store, const DuplicatesOptions& options) {
  if (options.remove && options.groups.size() != 1) {
    return Error{Failure::kUsage, "Duplicates are deleted from one group at a time.", "Name the group."};
  }
  std::int64_t too_many = 0;
  const auto found = recipients::FindDuplicates(store, options.groups, [&](const DuplicateSet& set) {
    ShowSet(context, set);
    too_many += static_cast<std::int64_t>(set.holders.size()) - 1;
    return context.cancel.Requested() == platform::Stop::kNone;
  });
  if (!found) return found.error();
  if (const auto ended = EndOfList(context); !ended) return ended.error();
  if (too_many == 0) context.output.Note("Nobody stands there twice.");
  if (too_many > 0 && options.remove) return Remove(context, store, options.groups.front(), too_many);
  return 0;
}

}  // namespace

void AddGroupDuplicates(CLI::App& group, Context& context) {
  const auto options = std::make_shared<DuplicatesOptions>();
  CLI::App& command = *group.add_subcommand("duplicates", "Show who stands more than once in a group, or in several");
  command.add_option("NAME", options->groups, "The groups; without any, all of them");
  command.add_flag("--delete", options->remove, "Keep the first of each in this group, delete the others");
  command.footer(
      "Shows the address, the group and the entry in it. \"Ada <ada@example.org>\" and \"ada@example.org\" are one "
      "address.\n"
      "Example: quillcast group duplicates Readers Guests");
  OnRun(command, context, [options](Context& ctx) {
    return WithStore(ctx, [&](RecipientStore& store) { return Duplicates(ctx, store, *options); });
  });
}

}  // namespace quillcast::cli
