// quillcast group sort: the order in which a group is listed, exported and sent to.
#include <fmt/format.h>

#include <memory>

#include "cli/group_commands.h"
#include "cli/store_command.h"
#include "platform/text.h"
#include "recipients/sort_order.h"

namespace quillcast::cli {
namespace {

using recipients::kFields;
using recipients::RecipientGroup;
using recipients::RecipientStore;
using recipients::SortKey;

constexpr std::size_t kLongestOrder = 200;  // of a text that is not understood

struct SortOptions {
  std::string group;
  std::optional<std::string> by;
  bool as_added = false;
};

// "Last Name, City desc".
Result<std::vector<SortKey>> KeysOf(const std::string& by) {
  std::vector<SortKey> keys;
  for (const std::string_view raw : platform::Split(by, ',')) {
    std::string_view label = platform::Trim(raw);
    const bool descending =
        label.size() > 5 && platform::EqualsIgnoringAsciiCase(label.substr(label.size() - 5), " desc");
    if (descending) label = platform::Trim(label.substr(0, label.size() - 5));
    const std::size_t field = recipients::FieldOfLabel(label);
    if (field == recipients::kFieldCount)
      return recipients::NoSuchField(label, "Write it as in \"Last Name, City desc\"");
    keys.push_back({kFields[field].column, descending});
  }
  return keys;
}

std::string LabelOf(std::string_view column) {
  for (const auto& field : kFields) {
    if (field.column == column) return std::string(field.label);
  }
  return std::string(column);
}

// It is the store's, which others write as well; whoever only looks at it has done nothing wrong.
int ShowWhatIsNotUnderstood(Context& context, const RecipientGroup& group) {
  context.output.Line(platform::Printable(group.sort_sql, kLongestOrder));
  context.output.Object({{"group", group.name}, {"sort", nullptr}, {"not_understood", group.sort_sql}});
  context.output.Note("This order is not understood, so the group is neither listed nor sent to. --by sets another.");
  return 0;
}

Result<int> Show(Context& context, const RecipientGroup& group) {
  const auto keys = recipients::SortKeysOf(group.sort_sql);
  if (!keys) return ShowWhatIsNotUnderstood(context, group);
  auto fields = nlohmann::ordered_json::array();
  std::string line;
  for (const SortKey& key : *keys) {
    line += fmt::format("{}{}{}", line.empty() ? "" : ", ", LabelOf(key.column), key.descending ? " desc" : "");
    fields.push_back({{"field", LabelOf(key.column)}, {"descending", key.descending}});
  }
  context.output.Line(line.empty() ? "In the order in which they were added" : line);
  context.output.Object({{"group", group.name}, {"sort", fields}});
  return 0;
}

Result<int> Sort(Context& context, RecipientStore& store, const SortOptions& options) {
  if (options.as_added || options.by) {
    std::vector<SortKey> keys;
    if (!options.as_added) {
      auto named = KeysOf(*options.by);
      if (!named) return named.error();
      keys = std::move(*named);
    }
    const auto sorted = recipients::SortGroup(store, options.group, recipients::SortTextOf(keys));
    if (!sorted) return sorted.error();
  }
  const auto group = store.RequireGroup(options.group);
  if (!group) return group.error();
  return Show(context, *group);
}

}  // namespace

void AddGroupSort(CLI::App& group, Context& context) {
  const auto options = std::make_shared<SortOptions>();
  CLI::App& sort = *group.add_subcommand("sort", "Show or set the order in which a group is listed and sent to");
  sort.add_option("NAME", options->group, "The group")->required();
  CLI::Option* by =
      sort.add_option("--by", options->by, "Fields, the first counting most; \"desc\" behind one turns it round");
  sort.add_flag("--as-added", options->as_added, "The order in which they were added")->excludes(by);
  sort.footer("Example: quillcast group sort Readers --by \"Country, Last Name, First Name\"");
  OnRun(sort, context, [options](Context& ctx) {
    return WithStore(ctx, [&](RecipientStore& store) { return Sort(ctx, store, *options); });
  });
}

}  // namespace quillcast::cli
