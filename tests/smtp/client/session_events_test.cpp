#include "smtp/client/session_events.h"

#include <gtest/gtest.h>

namespace quillcast::smtp {
namespace {

// A message that the server took would go once more where it is said of it what was said of one before.
TEST(SessionEvents, SayOfNoOutcomeWhatWasSaidOfOneBefore) {
  SessionEvents events;
  for (int n = 0; n < 20; ++n) {
    Outcome& outcome = events.Add(Event::Kind::kOutcome).outcome;
    EXPECT_TRUE(outcome.is_decided() && !outcome.has_sender && !outcome.no_way) << n;
    outcome = {
        State::kDeferred, ResultCode::kSenderRefused, {452, "", "no more"}, {}, Whereabouts::kNoRoom, true, true};
    events.Server("250 ok");
    while (events.Next() != nullptr) {
    }
  }
}

}  // namespace
}  // namespace quillcast::smtp
