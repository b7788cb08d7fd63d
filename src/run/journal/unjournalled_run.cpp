#include "run/journal/unjournalled_run.h"

#include <algorithm>
#include <utility>

namespace quillcast::run {
namespace {

std::int64_t InRange(std::int64_t list, const std::optional<recipients::PartialRange>& range) {
  if (!range) return list;
  return std::max<std::int64_t>(0, std::min(list, range->last) - range->first + 1);
}

}  // namespace

UnjournalledRun::UnjournalledRun(std::unique_ptr<recipients::RowSource> rows,
                                 const std::optional<recipients::PartialRange>& range)
    : rows_(std::move(rows)),
      list_size_(rows_->size().value_or(0)),
      size_(InRange(list_size_, range)),
      walk_(*rows_, range.value_or(recipients::PartialRange{1, list_size_})) {}

Result<bool> UnjournalledRun::Next(recipients::Recipient& recipient, std::int64_t& position) {
  auto more = walk_.Next(recipient);
  position = walk_.position();
  return more;
}

Result<void> UnjournalledRun::Again(std::int64_t /*position*/, recipients::Recipient& /*recipient*/) {
  return Error{Failure::kInternal, "A run into files has no recipient twice.", ""};
}

}  // namespace quillcast::run
