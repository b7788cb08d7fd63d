// The recipients of a group one by one, and the one way in which everything walks through them.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "platform/cancel.h"
#include "platform/result.h"
#include "recipients/recipient.h"

namespace quillcast::recipients {

// Rows in the order of the group's list. The real one is a cursor of the store; tests bring rows of their own.
class RowSource {
 public:
  virtual ~RowSource() = default;
  // True when `recipient` was filled, false behind the last. Not to be called again after that, nor after a failure: it
  // might begin anew.
  virtual Result<bool> Next(Recipient& recipient) = 0;
  // How many there are in all, from a source that nobody changes meanwhile; nothing from others.
  virtual std::optional<std::int64_t> size() const { return {}; }
};

// A part of a group's list, by 1-based places in it, both included.
struct PartialRange {
  std::int64_t first = 1;
  std::int64_t last = 1;
};

// Hands out the rows of a range with their places, for whoever fetches them as they are needed.
class RowWalk {
 public:
  // The whole list without a range. `rows` must live as long.
  RowWalk(RowSource& rows, const std::optional<PartialRange>& range) : rows_(&rows), range_(range) {}

  // The next row of the range; false at its end, from then on, and after a failure.
  Result<bool> Next(Recipient& row);
  // Of the row that Next gave last.
  std::int64_t position() const { return position_; }

 private:
  RowSource* rows_;  // nullptr at the end
  std::optional<PartialRange> range_;
  std::int64_t position_ = 0;
};

// kEnded: the visitor had enough. kCancelled: the token said so.
enum class Walked { kToTheEnd, kEnded, kCancelled };

// Calls `visit` with each row of the range and its place, until it gives false (kEnded) or `cancel`, where there is
// one, asks to stop. Fails when a row cannot be read, or as `visit` does.
Result<Walked> Walk(RowSource& rows, const std::optional<PartialRange>& range, const platform::CancelToken* cancel,
                    const std::function<Result<bool>(const Recipient& row, std::int64_t position)>& visit);

}  // namespace quillcast::recipients
