// The first mailing, which the tutorial walks through: three made-up people and a letter to them. Who asks for it gets
// each step done.
#pragma once

#include <array>
#include <optional>

#include "platform/result.h"
#include "recipients/recipient_store.h"

namespace quillcast::help {

inline constexpr const char* kTutorialGroup = "Tutorial";

// With merge tags, in HTML.
struct TutorialLetter {
  const char* subject;
  const char* html;
};
extern const TutorialLetter kTutorialLetter;

// What there is to do, in this order.
enum class TutorialStep { kWelcome, kPractice, kGroup, kLetter, kPreview, kSend, kArrived, kReal };

struct TutorialPage {
  TutorialStep step;
  const char* title;
  const char* text;
  const char* action;  // what the button says that does it; null where there is nothing to do
};
extern const std::array<TutorialPage, 8> kTutorialPages;

// The group with its people, where they are not there yet: whoever else is in a group of that name stays.
Result<void> MakeTutorialGroup(recipients::RecipientStore& store);

// Whether a mailbox on this machine may take the account's place: a person's own account would be lost by it. `serves`:
// it does already.
Result<void> MayPractise(bool is_filled_in, bool serves);

}  // namespace quillcast::help
