// What a check of a dialog's input finds wrong first. The form shows it and sets the focus; the command line prints it.
#pragma once

#include <string>

namespace quillcast {

struct Complaint {
  std::string message;      // empty for a refusal that is silent in the dialog
  std::string control;      // the control that gets the focus; empty for none
  std::string page = {};    // the page of the dialog that holds it, where there are several
  std::string reason = {};  // in our own words, for a status line or a terminal, where a silent refusal needs some

  bool operator==(const Complaint&) const = default;
};

}  // namespace quillcast
