// Goes through the recipients of a run, in the order of the list.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "run/journal/choice_filter.h"
#include "run/journal/state_blocks.h"

namespace quillcast::run {

// Nobody ahead of it is changed by the run, so that it finds those who were of the choice when the run began.
class ScopeWalk {
 public:
  ScopeWalk(ChoiceFilter filter, std::int64_t recipients) : filter_(std::move(filter)), recipients_(recipients) {}

  // The next one's index, nothing behind the last.
  Result<std::optional<std::int64_t>> Next(StateBlocks& blocks);
  // Goes on behind those before this index.
  void SkipTo(std::int64_t index);

 private:
  ChoiceFilter filter_;
  std::int64_t recipients_;
  std::int64_t next_ = 0;
  std::int64_t block_ = -1;  // whose octets these are
  std::string octets_;
};

}  // namespace quillcast::run
