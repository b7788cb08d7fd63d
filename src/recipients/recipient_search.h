// Finds the keys of the recipients of a group by one field and one comparison, one after the other as the store comes
// upon them.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recipients/group_checks.h"
#include "recipients/recipient.h"
#include "recipients/recipient_store.h"

namespace quillcast::recipients {

enum class Comparison : std::uint8_t { kEquals, kContains, kStartsWith, kEndsWith };

// The entries of the list of comparisons, in the order of Comparison.
inline constexpr std::array<std::string_view, 4> kComparisonLabels = {"Equals", "Contains", "Starts with", "Ends with"};

// The last entry of the list of fields: any of the eighteen, the address lines too.
inline constexpr std::size_t kAllFields = kFieldCount;
inline constexpr std::string_view kAllFieldsLabel = "All fields";

// The entries of the list of fields; the place of each is what Search takes.
std::vector<std::string_view> SearchLabels();

// "Please enter your search term."; not asked for results that come while one types.
std::optional<GroupComplaint> CheckSearchTerm(std::string_view term);
// kUsage for one that takes long to compare with a long text; asked by the search itself.
Result<void> CheckTermLength(std::string_view term);
// "Please specify an email address.", before one of the results is changed, moved or deleted.
std::optional<GroupComplaint> CheckFoundChosen(bool is_chosen);

struct SearchRequest {
  std::int64_t group_id = 0;
  std::size_t field = kEmail;  // a position in kFields, or kAllFields
  Comparison comparison = Comparison::kEquals;
  std::string term;  // "%" and "_" in it are wildcards except with kEquals; see CheckTermLength
};

// Calls `visit` with the key of each in the order of adding, until it gives false. The store's patience holds what
// cancels it. A search in one of the two address lines fails: their search columns do not exist. The store can be read
// meanwhile, and not written: a visit keeps the key and does nothing that takes time.
Result<void> Search(const RecipientStore& store, const SearchRequest& request,
                    const std::function<bool(std::int64_t key)>& visit);

}  // namespace quillcast::recipients
