// Which of a mailing's recipients something is done about.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"
#include "run/journal/recipient_states.h"
#include "smtp/outcome.h"

namespace quillcast::run {

// Those of some states, where it is asked for those who were to be tried again when their run ended as well, and where
// replies are named, of them those alone whom the server answered so at the last attempt. A reply is named by the
// beginning of its code ("452", "45", "4") or of its enhanced code ("5.2", "5.2.2").
struct RecipientChoice {
  RecipientChoice(StateSet chosen = {}) : states(chosen) {}  // NOLINT(google-explicit-constructor): any reply
  RecipientChoice(StateSet chosen, std::vector<std::string> answered) : states(chosen), replies(std::move(answered)) {}

  bool operator==(const RecipientChoice&) const = default;

  StateSet states;
  bool tried_again = false;
  std::vector<std::string> replies;
};

// Whether those who are chosen may be in more states than one.
inline bool AreSeveral(const RecipientChoice& choice) {
  return choice.tried_again ? choice.states.any() : choice.states.count() > 1;
}
// Whom no server came to a verdict on for good: the next try may reach them.
inline StateSet WhoMayBeReached() { return SetOf({ResultState::kDeferred, ResultState::kFailed}); }
// Who is known not to have got it: nobody gets it twice where it goes to them again.
inline StateSet WhoDidNotGetIt() { return WhoMayBeReached() | SetOf({ResultState::kRefused}); }

// The replies that a person names, parted by commas; none for an empty text. kUsage for what begins no code of a
// last reply (RFC 5321 section 4.2.1, RFC 3463 section 2).
Result<std::vector<std::string>> RepliesFrom(std::string_view text);
// Whether a reply is one of those; any is where none are named.
bool IsAmong(const std::vector<std::string>& replies, int code, std::string_view enhanced);

}  // namespace quillcast::run
