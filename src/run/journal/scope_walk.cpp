#include "run/journal/scope_walk.h"

#include <algorithm>

namespace quillcast::run {

Result<std::optional<std::int64_t>> ScopeWalk::Next(StateBlocks& blocks) {
  for (; next_ < recipients_; ++next_) {
    if (next_ / kBlockSize != block_) {
      const auto octets = blocks.Block(next_ / kBlockSize);
      if (!octets) return octets.error();
      octets_ = *octets;
      block_ = next_ / kBlockSize;
    }
    const char* record = octets_.data() + static_cast<std::size_t>(next_ % kBlockSize) * kRecordSize;
    const auto takes = filter_.Takes(StateAt(record), record);
    if (!takes) return takes.error();
    if (*takes) return std::optional(next_++);
  }
  return std::optional<std::int64_t>();
}

void ScopeWalk::SkipTo(std::int64_t index) { next_ = std::max(next_, index); }

}  // namespace quillcast::run
