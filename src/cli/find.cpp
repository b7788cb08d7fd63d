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
#include "cli/standard_streams.h"
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

template <typename List>
std::string Quoted(const List& list) {
  return fmt::format("\"{}\"", fmt::join(list, "\", \""));
}

Result<SearchRequest> RequestOf(const FindOptions& options) {
  const auto is = [](std::string_view text) {
    return [text](std::string_view label) { return platform::EqualsIgnoringAsciiCase(label, text); };
  };
  const bool in_all = is(options.field)(recipients::kAllFieldsLabel);
  const auto field = in_all ? recipients::kAllFields : recipients::FieldOfLabel(options.field);
  if (!in_all && field == recipients::kFieldCount)
    return recipients::NoSuchField(options.field, fmt::format("Name one, or \"{}\"", recipients::kAllFieldsLabel));
  const auto& ways = recipients::kComparisonLabels;
  const auto way = std::find_if(ways.begin(), ways.end(), is(options.compare));
  if (way == ways.end()) {
    return Error{Failure::kUsage, Say("\"{}\" is no comparison.", platform::Printable(options.compare, 100)),
                 "Name one of " + Quoted(ways) + "."};
  }
  return SearchRequest{0, field, static_cast<Comparison>(way - ways.begin()), options.term};
}

// Of several groups, lines name the one that each is in.
enum class Groups : std::uint8_t { kOne, kSeveral };

struct Showing {
  bool all_fields = false;
  Groups groups = Groups::kOne;
};

void Show(Context& context, const RecipientGroup& group, const StoredRecipient& found, const Showing& showing) {
  if (!context.output.json) {
    return ShowRecipient(context, found.recipient, showing.all_fields,
                         showing.groups == Groups::kSeveral ? group.name : std::string());
  }
  nlohmann::ordered_json object = {{"group", group.name}};
  object.update(RecipientObject(found.recipient, showing.all_fields));
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

// How many were shown.
Result<std::int64_t> FindIn(Context& context, const RecipientStore& store, const RecipientGroup& group,
                            SearchRequest request, const Showing& showing) {
  request.group_id = group.id;
  FoundKeys found;
  Result<void> searched;
  std::thread search([&] {
    searched = Search(store, request, [&found](std::int64_t key) { return found.Add(key); });
    found.End();
  });
  std::int64_t count = 0;
  const auto show = [&](const StoredRecipient& row) {
    if (!IsWanted(context)) return false;
    Show(context, group, row, showing);
    ++count;
    return true;
  };
  Result<void> shown;
  for (auto keys = found.Take(); !keys.empty(); keys = found.Take()) {
    if (shown && IsWanted(context)) shown = store.VisitByKey(keys, show);
    if (!shown || !IsWanted(context)) found.Enough();
  }
  search.join();
  if (const auto ended = EndOfList(context); !ended) return ended.error();
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
  const Showing showing{options.all_fields, options.group.empty() ? Groups::kSeveral : Groups::kOne};
  std::int64_t count = 0;
  for (const std::string& name : names) {
    const auto group = store.RequireGroup(name);
    if (!group && options.group.empty() && group.error().failure == Failure::kUsage) {
      context.output.Note(
          fmt::format("The group \"{}\" was passed over. {}", platform::Printable(name, 100), Describe(group.error())));
      continue;
    }
    if (!group) return group.error();
    const auto found = FindIn(context, store, *group, *request, showing);
    if (!found) return found.error();
    count += *found;
  }
  if (!HasStandardOutputArrived()) return 0;
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
      "Shows address, first and last name, and without --group the group. Capitals do not matter.\n"
      "Example: quillcast find -g Readers --field City --compare Equals Oslo");
  OnRun(find, context, [options](Context& ctx) {
    return WithStore(ctx, [&](RecipientStore& store) { return Find(ctx, store, *options); });
  });
}

}  // namespace quillcast::cli
