#include "recipients/row_source.h"

namespace quillcast::recipients {

Result<bool> RowWalk::Next(Recipient& row) {
  while (rows_ != nullptr && (!range_ || position_ < range_->last)) {
    const auto more = rows_->Next(row);
    if (!more || !*more) {
      rows_ = nullptr;
      return more;
    }
    ++position_;
    if (!range_ || position_ >= range_->first) return true;
  }
  rows_ = nullptr;
  return false;
}

// A request also ends a statement of the store, which then fails: that is no failure of the walk.
Result<Walked> Walk(RowSource& rows, const std::optional<PartialRange>& range, const platform::CancelToken* cancel,
                    const std::function<Result<bool>(const Recipient& row, std::int64_t position)>& visit) {
  const auto is_cancelled = [cancel] { return cancel != nullptr && cancel->Requested() != platform::Stop::kNone; };
  RowWalk walk(rows, range);
  Recipient row;
  while (!is_cancelled()) {
    const auto more = walk.Next(row);
    if (!more && is_cancelled()) break;
    if (!more) return more.error();
    if (!*more) return Walked::kToTheEnd;
    const auto goes_on = visit(row, walk.position());
    if (!goes_on) return goes_on.error();
    if (!*goes_on) return Walked::kEnded;
  }
  return Walked::kCancelled;
}

}  // namespace quillcast::recipients
