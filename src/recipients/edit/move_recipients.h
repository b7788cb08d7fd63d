// Recipients that go into another group, or away: several at once, and whole groups.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "recipients/edit/edit.h"

namespace quillcast::recipients {

// What became of the recipients that were named by their keys.
struct MoveOutcome {
  std::int64_t done = 0;
  std::int64_t gone = 0;                            // another program took them away meanwhile
  std::int64_t duplicates = 0;                      // their addresses were in the other group already
  std::vector<std::string> duplicate_entries = {};  // the first kMostDuplicatesTold of these
};

inline constexpr std::size_t kMostDuplicatesTold = 10'000;

// Questions for both faces; move and merge ask before they begin.
Sentence MoveQuestion(std::int64_t recipients, std::string_view from, std::string_view to);
Sentence MergeQuestion(std::span<const std::string> groups, std::string_view into);
Sentence DeleteSeveralQuestion(std::int64_t recipients, std::string_view group);

// All of them fail with kUsage where a group is not there, or is its own target. A duplicate stays where it is.
Result<MoveOutcome> MoveRecipients(const RecipientStore& store, std::string_view from, std::string_view to,
                                   std::span<const std::int64_t> keys, const OnProgress& on_progress = {});
Result<MoveOutcome> CopyRecipients(const RecipientStore& store, std::string_view from, std::string_view to,
                                   std::span<const std::int64_t> keys, const OnProgress& on_progress = {});

// Whole groups into another one. They are gone then, and their duplicates with them.
Result<MoveOutcome> MergeGroups(const RecipientStore& store, std::span<const std::string> groups, std::string_view into,
                                const OnProgress& on_progress = {});

// The results of the search are deleted with one statement more, which is known to fail.
enum class DeletedFrom : std::uint8_t { kGroup, kSearchResults };

// How many were there to be deleted.
Result<std::int64_t> DeleteRecipients(const RecipientStore& store, std::string_view group,
                                      std::span<const std::int64_t> keys, DeletedFrom place = DeletedFrom::kGroup,
                                      const OnProgress& on_progress = {});

// The group and all its recipients. How many they were. Progress counts two steps for each: they are kept for undo,
// too.
Result<std::int64_t> DeleteWholeGroup(const RecipientStore& store, std::string_view group,
                                      const OnProgress& on_progress = {});

// The order of the group's list from now on; empty for the order of adding. Fails with kBadData for what is no order.
Result<void> SortGroup(const RecipientStore& store, std::string_view group, std::string_view sort_sql);

}  // namespace quillcast::recipients
