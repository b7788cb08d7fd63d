// What is other by now than it was when a run began that somebody wants to go on with.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "account/account_settings.h"
#include "platform/sentence.h"
#include "run/frozen/frozen_inputs.h"
#include "run/present_group.h"

namespace quillcast::run {

struct PresentInputs {
  const account::AccountSettings& account;
  std::string body_format;
  std::optional<PresentGroup> group;  // nothing where there is none any more
};

// Sentences for the person, the first of which says that the letter stays as it was; it is the only one where nothing
// is other and the letter was read from no file, and there is none where it was. Reads the files that lie there now, so
// it takes as long as that does.
std::vector<Sentence> WhatChanged(const ThawedInputs& frozen, const PresentInputs& present);

}  // namespace quillcast::run
