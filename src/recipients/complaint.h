// What a check of a dialog's input finds wrong first.
#pragma once

#include <string>

namespace quillcast::recipients {

struct Complaint {
  std::string message;
  std::string control;  // the control that gets the focus; empty for none

  bool operator==(const Complaint&) const = default;
};

}  // namespace quillcast::recipients
