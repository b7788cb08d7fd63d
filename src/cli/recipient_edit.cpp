// quillcast recipient delete, move, copy and groups: several recipients at once, and where one stands.
#include <fmt/format.h>

#include <memory>
#include <unordered_set>

#include "cli/recipient_commands.h"
#include "cli/store_command.h"
#include "platform/text.h"
#include "recipients/edit/duplicates.h"
#include "recipients/group_checks.h"

namespace quillcast::cli {
namespace {

using recipients::MoveOutcome;
using recipients::RecipientGroup;
using recipients::RecipientStore;

struct EditOptions {
  std::string group;
  std::string to;
  std::vector<std::string> addresses;
};

// Several recipients of a group, all of them there and each once; by the first of the names that were given for it.
struct Named {
  RecipientGroup group;
  std::vector<std::string> addresses;
  std::vector<std::int64_t> keys;
};

// Nothing is begun where one is missing: it may be a slip of the keyboard.
Result<Named> RequireAll(const Context& context, const RecipientStore& store, const EditOptions& options) {
  const auto group = store.RequireGroup(options.group);
  if (!group) return group.error();
  const auto addresses = AddressesOf(context, options.addresses);
  if (!addresses) return addresses.error();
  const auto keys = store.KeysOfAddresses(group->id, *addresses);
  if (!keys) return keys.error();
  Named named{*group, {}, {}};
  std::unordered_set<std::int64_t> known;
  for (std::size_t at = 0; at < keys->size(); ++at) {
    const std::int64_t key = (*keys)[at];
    if (key == 0) return NoSuchRecipient((*addresses)[at], group->name);
    if (!known.insert(key).second) continue;
    named.addresses.push_back((*addresses)[at]);
    named.keys.push_back(key);
  }
  return named;
}

// Which of them others deleted before, while the question stood, is not known.
void TellDeleted(Context& context, const Named& named, std::int64_t gone) {
  const auto others = static_cast<std::int64_t>(named.keys.size()) - gone;
  if (others > 0) {
    context.output.Line(fmt::format("{} deleted, {} gone already.",
                                    platform::Counted(gone, "recipient was", "recipients were"),
                                    platform::Counted(others, "was", "were")));
    context.output.Object({{"group", named.group.name}, {"done", "deleted"}, {"recipients", gone}, {"gone", others}});
    return;
  }
  for (const std::string& address : named.addresses) {
    context.output.Line(fmt::format("{}: deleted", platform::Printable(address)));
    context.output.Object({{"group", named.group.name}, {"address", address}, {"done", "deleted"}});
  }
}

Result<int> Delete(Context& context, RecipientStore& store, const EditOptions& options) {
  const auto named = RequireAll(context, store, options);
  if (!named) return named.error();
  const auto count = static_cast<std::int64_t>(named->keys.size());
  const Sentence question = count == 1 ? recipients::DeleteQuestion(platform::Printable(named->addresses.front()))
                                       : recipients::DeleteSeveralQuestion(count, named->group.name);
  if (const auto asked = AskFirst(context, question); !asked) return asked.error();
  const auto gone = recipients::DeleteRecipients(store, named->group.name, named->keys, recipients::DeletedFrom::kGroup,
                                                 ShowProgress(context));
  if (!gone) return gone.error();
  context.output.EndProgress();
  TellDeleted(context, *named, *gone);
  return 0;
}

enum class Original : std::uint8_t { kGoes, kStays };

Result<int> MoveOrCopy(Context& context, RecipientStore& store, const EditOptions& options, Original original) {
  const auto named = RequireAll(context, store, options);
  if (!named) return named.error();
  const auto to = store.RequireGroup(options.to);
  if (!to) return to.error();
  if (const auto complaint = recipients::CheckOtherGroup(named->group.name, to->name))
    return context.output.Complain(complaint->message);
  const bool moves = original == Original::kGoes;
  if (moves) {
    const auto count = static_cast<std::int64_t>(named->keys.size());
    const auto asked = AskFirst(context, recipients::MoveQuestion(count, named->group.name, to->name));
    if (!asked) return asked.error();
  }
  const auto run = moves ? recipients::MoveRecipients : recipients::CopyRecipients;
  const auto moved = run(store, named->group.name, to->name, named->keys, ShowProgress(context));
  if (!moved) return moved.error();
  context.output.EndProgress();
  TellDuplicates(context, *moved);
  context.output.Line(fmt::format("{} {} to \"{}\"", platform::Counted(moved->done, "recipient was", "recipients were"),
                                  moves ? "moved" : "copied", to->name));
  context.output.Object({{"group", named->group.name},
                         {"to", to->name},
                         {"done", moves ? "moved" : "copied"},
                         {"recipients", moved->done},
                         {"duplicates", moved->duplicates}});
  return 0;
}

Result<int> Groups(Context& context, const RecipientStore& store, const EditOptions& options) {
  const auto holders = recipients::GroupsOfAddress(store, options.addresses.front());
  if (!holders) return holders.error();
  for (const recipients::Holder& holder : *holders) {
    context.output.Columns({holder.group, holder.entry});
    context.output.Object({{"group", holder.group}, {"entry", holder.entry}});
  }
  if (holders->empty()) context.output.Note("No group holds that address.");
  return 0;
}

template <typename Action>
void OnAddresses(CLI::App& command, Context& context, const std::shared_ptr<EditOptions>& options, Action action) {
  command.add_option("-g,--group", options->group, "The group that they are in")->required();
  command.add_option("ADDRESS", options->addresses, "The recipients; \"-\" reads them from standard input")->required();
  OnRun(command, context, [options, action](Context& ctx) {
    return WithStore(ctx, [&](RecipientStore& store) { return action(ctx, store, *options); });
  });
}

}  // namespace

void AddRecipientEdits(CLI::App& recipient, Context& context) {
  const auto options = std::make_shared<EditOptions>();
  CLI::App& gone = *recipient.add_subcommand("delete", "Delete recipients");
  gone.footer("Example: quillcast find -g Readers old.example | quillcast recipient delete -g Readers --yes -");
  OnAddresses(gone, context, options, Delete);

  CLI::App& move = *recipient.add_subcommand("move", "Move recipients to another group; who is there already stays");
  move.add_option("--to", options->to, "The group that gets them")->required();
  move.footer("Example: quillcast recipient move -g Readers --to Guests ada@example.org bob@example.net");
  OnAddresses(move, context, options, [](Context& ctx, RecipientStore& store, const EditOptions& given) {
    return MoveOrCopy(ctx, store, given, Original::kGoes);
  });

  CLI::App& copy = *recipient.add_subcommand("copy", "Copy recipients to another group");
  copy.add_option("--to", options->to, "The group that gets them")->required();
  copy.footer("Example: quillcast recipient list -g Readers | quillcast recipient copy -g Readers --to Guests -");
  OnAddresses(copy, context, options, [](Context& ctx, RecipientStore& store, const EditOptions& given) {
    return MoveOrCopy(ctx, store, given, Original::kStays);
  });

  CLI::App& groups = *recipient.add_subcommand("groups", "Show the groups that hold an address");
  groups.add_option("ADDRESS", options->addresses, "The address, without a name")->required()->expected(1);
  groups.footer("Example: quillcast recipient groups ada@example.org");
  OnRun(groups, context, [options](Context& ctx) {
    return WithStore(ctx, [&](RecipientStore& store) { return Groups(ctx, store, *options); });
  });
}

}  // namespace quillcast::cli
