#include "recipients/recipient_search.h"

#include <fmt/format.h>

#include <algorithm>

#include "recipients/store_connection.h"
#include "recipients/store_rows.h"
#include "recipients/text_order.h"

namespace quillcast::recipients {
namespace {

constexpr std::ptrdiff_t kLongestTerm = 1000;  // characters
constexpr std::size_t kLongestCharacter = 4;   // bytes

// Whether a text compares so with the term, by the rules of the store.
class Comparer {
 public:
  explicit Comparer(const SearchRequest& request) : comparison_(request.comparison), pattern_(request.term) {
    if (comparison_ == Comparison::kContains || comparison_ == Comparison::kEndsWith) pattern_.insert(0, "%");
    if (comparison_ == Comparison::kContains || comparison_ == Comparison::kStartsWith) pattern_ += '%';
    fits_empty_ = Fits({});
  }
  bool Fits(std::string_view text) const {
    return comparison_ == Comparison::kEquals ? CompareText(text, pattern_) == 0 : LikeText(pattern_, text);
  }
  // Most fields of most recipients are.
  bool fits_empty() const { return fits_empty_; }

 private:
  Comparison comparison_;
  std::string pattern_;
  bool fits_empty_ = false;
};

bool AnyFits(const platform::FunctionValues& values, const Comparer& comparer) {
  const bool fits_empty = comparer.fits_empty();
  for (int value = 0; value < values.Count(); ++value) {
    if (values.IsEmpty(value) ? fits_empty : comparer.Fits(values.Text(value))) return true;
  }
  return false;
}

// The two address lines; the statement is issued all the same, and fails.
bool ColumnIsMissing(std::size_t field) { return kFields[field].column != kFields[field].search_column; }

Error NoSuchColumn(std::size_t field) {
  return {Failure::kUsage, Say("A search in \"{}\" alone finds nothing.", kFields[field].search_label),
          "Search all fields: they hold this one."};
}

Result<void> SearchOneField(platform::Database& database, const SearchRequest& request, std::string_view group_key,
                            const std::function<bool(std::int64_t)>& visit) {
  constexpr std::array kIds = {StatementId::kFindEqual, StatementId::kFindContaining, StatementId::kFindStarting,
                               StatementId::kFindEnding};
  // The twenty columns of a row that is found take several times as long to read as to compare the one.
  auto found = CatalogueStatement::PrepareWithin("SELECT [ID] FROM (", ")", database,
                                                 kIds[static_cast<std::size_t>(request.comparison)],
                                                 kFields[request.field].search_column);
  if (!found) return ColumnIsMissing(request.field) ? NoSuchColumn(request.field) : found.error();
  if (auto bound = found->Bind(List<2>{group_key, request.term}); !bound) return bound;
  return ForEachRow(found->rows(), [&] { return visit(found->rows().Int(0)); });
}

// A row is compared within the statement: what it holds is then read once, and what is not found goes no further.
Result<void> SearchAllFields(platform::Database& database, const SearchRequest& request, std::string_view group_key,
                             const std::function<bool(std::int64_t)>& visit) {
  const Comparer comparer(request);
  const auto fits = [&comparer](const platform::FunctionValues& values) { return AnyFits(values, comparer) ? 1 : 0; };
  if (auto added = database.AddFunction("any_fits", fits); !added) return added;
  std::string condition;
  for (const FieldNames& field : kFields)
    condition += fmt::format("{}[{}]", condition.empty() ? "" : ", ", field.column);
  auto found = CatalogueStatement::PrepareWithin("SELECT [ID] FROM (", fmt::format(") WHERE any_fits({})", condition),
                                                 database, StatementId::kListRows, {});
  if (!found) return found.error();
  if (auto bound = found->Bind(List<1>{group_key}); !bound) return bound;
  return ForEachRow(found->rows(), [&] { return visit(found->rows().Int(0)); });
}

}  // namespace

std::vector<std::string_view> SearchLabels() {
  std::vector<std::string_view> labels;
  labels.reserve(kFields.size() + 1);
  for (const FieldNames& field : kFields) labels.push_back(field.search_label);
  labels.push_back(kAllFieldsLabel);
  return labels;
}

std::optional<GroupComplaint> CheckSearchTerm(std::string_view term) {
  if (!term.empty()) return {};
  return GroupComplaint{"Please enter your search term.", GroupControl::kSearchTerm};
}

Result<void> CheckTermLength(std::string_view term) {
  const auto begins_character = [](char c) { return (static_cast<std::uint8_t>(c) & 0xC0) != 0x80; };
  const bool is_too_long = term.size() > kLongestTerm * kLongestCharacter ||
                           std::count_if(term.begin(), term.end(), begins_character) > kLongestTerm;
  if (!is_too_long) return {};
  return Error{Failure::kUsage, "The search term is longer than 1,000 characters.", "Search for a part of it."};
}

std::optional<GroupComplaint> CheckFoundChosen(bool is_chosen) {
  if (is_chosen) return {};
  return GroupComplaint{"Please specify an email address.", GroupControl::kFoundRecipient};
}

Result<void> Search(const RecipientStore& store, const SearchRequest& request,
                    const std::function<bool(std::int64_t key)>& visit) {
  if (auto usable = CheckTermLength(request.term); !usable) return usable;
  auto database = OpenStore(store.file(), store.patience());
  if (!database) return database.error();
  const std::string group_key = std::to_string(request.group_id);
  if (request.field < kFieldCount) return SearchOneField(*database, request, group_key, visit);
  return SearchAllFields(*database, request, group_key, visit);
}

}  // namespace quillcast::recipients
