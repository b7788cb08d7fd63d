// What a check of a dialog's input finds wrong first. The form shows it and sets the focus; the command line prints it.
#pragma once

#include <string>

namespace quillcast {

struct Complaint {
  std::string message;    // empty for a refusal that is silent in the dialog
  std::string control;    // the control that gets the focus; empty for none
  std::string page = {};  // the page of the dialog that holds it, where there are several

  bool operator==(const Complaint&) const = default;
};

}  // namespace quillcast
