#include "recipients/import/address_harvest.h"

#include <algorithm>

#include "recipients/check_email.h"

namespace quillcast::recipients {

void AddressHarvest::Append(std::string_view characters) {
  // One character beyond the limit is enough to know that it is too long, in either place.
  const std::size_t room = kLongestCandidate + 1 - std::min(run_.size(), kLongestCandidate + 1);
  run_.append(characters.substr(0, room));
}

// A run of address characters is over. It is the domain of the "@" before it, and what that leaves over is the local
// part of the "@" behind it.
bool AddressHarvest::EndRun(char next) {
  bool go_on = true;
  std::size_t taken = 0;
  if (has_local_ && local_.size() + 1 + run_.size() <= kLongestCandidate) {
    taken = DomainLength(run_);
    if (taken > 0) {
      const bool is_cut = IsCut(local_inside_, std::string_view(run_).substr(taken), next);
      local_.append("@").append(run_, 0, taken);
      go_on = sink_(local_, is_cut);
    }
  }
  has_local_ = next == '@' && run_.size() > taken;
  if (has_local_) {
    local_.assign(run_, taken);
    local_inside_ = run_inside_ || taken > 0;
  }
  run_.clear();
  return go_on;
}

bool AddressHarvest::Feed(std::string_view piece) {
  while (!piece.empty()) {
    const auto* end = std::find_if_not(piece.begin(), piece.end(), IsAddressCharacter);
    const auto length = static_cast<std::size_t>(end - piece.begin());
    Append(piece.substr(0, length));
    if (length == piece.size()) return true;
    const char next = piece[length];
    const bool goes_on = GoesOn(next, run_inside_ || !run_.empty());
    if (!has_local_ && next != '@') {
      run_.clear();
    } else if (!EndRun(next)) {
      return false;
    }
    run_inside_ = goes_on;
    piece.remove_prefix(length + 1);
  }
  return true;
}

bool AddressHarvest::Finish() { return EndRun('\0'); }

}  // namespace quillcast::recipients
