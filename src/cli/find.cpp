// quillcast find: recipients by what stands in their fields.
#include <fmt/format.h>

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <span>
#include <thread>
#include <utility>

#include "cli/commands.h"
#include "cli/store_command.h"
#include "platform/text.h"
#include "recipients/recipient_search.h"

namespace quillcast::cli {
namespace {

using recipients::Comparison;
using recipients::RecipientGroup;
using recipients::RecipientStore;
using recipients::SearchRequest;
using recipients::StoredRecipient;

struct FindOptions {
  std::string term;
  std::string group;
  std::string field = std::string(recipients::kAllFieldsLabel);
  std::string compare = "Contains";
  bool all_fields = false;
};

// How many rows are read at a time to be shown: between two such blocks the store is free.
constexpr std::size_t kShownAtOnce = 5000;

template <typename List>
std::string Quoted(const List& list) {
  return fmt::format("\"{}\"", fmt::join(list, "\", \""));
}

Result<SearchRequest> RequestOf(const FindOptions& options) {
  const auto is = [](std::string_view text) {
    return [text](std::string_view label) { return platform::EqualsIgnoringAsciiCase(label, text); };
  };
  const auto labels = recipients::SearchLabels();
  const auto label = std::find_if(labels.begin(), labels.end(), is(options.field));
  const auto field = label == labels.end() ? recipients::FieldOfLabel(options.field)
                                           : static_cast<std::size_t>(label - labels.begin());
  if (label == labels.end() && field == recipients::kFieldCount) {
    return Error{Failure::kUsage, Say("\"{}\" names no field.", platform::Printable(options.field, 100)),
                 "The fields are " + Quoted(labels) + "."};
  }
  const auto& ways = recipients::kComparisonLabels;
  const auto way = std::find_if(ways.begin(), ways.end(), is(options.compare));
  if (way == ways.end()) {
    return Error{Failure::kUsage, Say("\"{}\" is no comparison.", platform::Printable(options.compare, 100)),
                 "Name one of " + Quoted(ways) + "."};
  }
  return SearchRequest{0, field, static_cast<Comparison>(way - ways.begin()), options.term};
}

void Show(Context& context, const RecipientGroup& group, const StoredRecipient& found, bool all_fields) {
  if (found.id == 0) return;  // deleted since it was found
  if (!context.output.json) return ShowRecipient(context, found.recipient, all_fields);
  nlohmann::ordered_json object = {{"group", group.name}};
  object.update(AsObject(found.recipient, all_fields));
  context.output.Object(object);
}

// What is found on a thread of its own, until somebody takes it: whoever reads slowly holds up neither the search nor,
// by it, those who write to the store.
class FoundKeys {
 public:
  // False when no more are wanted.
  bool Add(std::int64_t key) {
    const std::lock_guard lock(mutex_);
    keys_.push_back(key);
    if (keys_.size() == 1) news_.notify_one();
    return !is_enough_;
  }
  void End() {
    const std::lock_guard lock(mutex_);
    has_ended_ = true;
    news_.notify_one();
  }
  void Enough() {
    const std::lock_guard lock(mutex_);
    is_enough_ = true;
  }
  // Those that were found since, after a wait for one; none at the end.
  std::vector<std::int64_t> Take() {
    std::unique_lock lock(mutex_);
    news_.wait(lock, [this] { return has_ended_ || !keys_.empty(); });
    return std::exchange(keys_, {});
  }

 private:
  std::mutex mutex_;
  std::condition_variable news_;
  std::vector<std::int64_t> keys_;
  bool has_ended_ = false;
  bool is_enough_ = false;
};

Result<void> ShowKeys(Context& context, const RecipientStore& store, const RecipientGroup& group,
                      std::span<const std::int64_t> keys, bool all_fields) {
  for (std::size_t at = 0; at < keys.size() && std::ferror(stdout) == 0; at += kShownAtOnce) {
    const auto rows = store.RecipientsOfKeys(keys.subspan(at, std::min(kShownAtOnce, keys.size() - at)));
    if (!rows) return rows.error();
    for (const StoredRecipient& row : *rows) Show(context, group, row, all_fields);
  }
  return {};
}

Result<std::int64_t> FindIn(Context& context, const RecipientStore& store, const RecipientGroup& group,
                            SearchRequest request, bool all_fields) {
  request.group_id = group.id;
  FoundKeys found;
  Result<void> searched;
  std::thread search([&] {
    searched = Search(store, request, [&found](std::int64_t key) { return found.Add(key); });
    found.End();
  });
  std::int64_t count = 0;
  Result<void> shown;
  for (auto keys = found.Take(); !keys.empty(); keys = found.Take()) {
    if (shown) shown = ShowKeys(context, store, group, keys, all_fields);
    if (!shown || std::ferror(stdout) != 0) found.Enough();
    count += static_cast<std::int64_t>(keys.size());
  }
  search.join();
  if (!searched) return searched.error();
  if (!shown) return shown.error();
  return count;
}

Result<int> Find(Context& context, const RecipientStore& store, const FindOptions& options) {
  if (const auto complaint = recipients::CheckSearchTerm(options.term))
    return context.output.Complain(complaint->message);
  const auto request = RequestOf(options);
  if (!request) return request.error();
  std::vector<std::string> names = {options.group};
  if (options.group.empty()) {
    auto all = store.ListGroupNames();
    if (!all) return all.error();
    names = std::move(*all);
  }
  std::int64_t count = 0;
  for (const std::string& name : names) {
    const auto group = store.RequireGroup(name);
    if (!group && options.group.empty() && group.error().failure == Failure::kUsage) {
      context.output.Note(
          fmt::format("The group \"{}\" was passed over. {}", platform::Printable(name, 100), Describe(group.error())));
      continue;
    }
    if (!group) return group.error();
    const auto found = FindIn(context, store, *group, *request, options.all_fields);
    if (!found) return found.error();
    count += *found;
  }
  context.output.Note(count == 0 ? "Nobody was found." : platform::Counted(count, "recipient", "recipients"));
  return 0;
}

}  // namespace

void AddFindCommand(CLI::App& app, Context& context) {
  CLI::App& find = *app.add_subcommand("find", "Find recipients by what stands in their fields");
  const auto options = std::make_shared<FindOptions>();
  find.add_option("TERM", options->term, "What to look for; \"%\" stands for any text and \"_\" for one character")
      ->required();
  find.add_option("-g,--group", options->group, "The group; all of them without it");
  find.add_option("--field", options->field, "The field that holds it")->capture_default_str();
  find.add_option("--compare", options->compare, "Equals, Contains, Starts with or Ends with")->capture_default_str();
  find.add_flag("--fields", options->all_fields, "Show all eighteen fields");
  find.footer(
      "Shows address, first and last name, in any case of letters.\n"
      "Example: quillcast find -g Readers --field City --compare Equals Oslo");
  OnRun(find, context, [options](Context& ctx) {
    return WithStore(ctx, [&](RecipientStore& store) { return Find(ctx, store, *options); });
  });
}

}  // namespace quillcast::cli
