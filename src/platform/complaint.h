// What a check of a dialog's input finds wrong first. The form shows it and sets the focus; the command line prints it.
#pragma once

#include <optional>
#include <string>

#include "platform/sentence.h"

namespace quillcast {

// `Control` is the feature's own enum; its form knows which control stands for which.
template <typename Control>
struct Complaint {
  std::string message;                  // empty for a refusal that is silent in the dialog
  std::optional<Control> control = {};  // what gets the focus
  Sentence reason = {};  // in our own words, for a status line or a terminal, where a silent refusal needs some

  bool operator==(const Complaint&) const = default;
};

}  // namespace quillcast
