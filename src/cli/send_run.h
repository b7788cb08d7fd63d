// A whole run at the terminal: over the wire, or into files.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/context.h"
#include "run/prepared_run.h"

namespace quillcast::cli {

struct MailingOptions {
  bool keep_going = false;  // although the server refuses everybody
  std::string to_folder;    // where the messages go in place of being sent; one of the two at most
  std::string to_mbox;

  run::Delivery delivery() const {
    return to_folder.empty() && to_mbox.empty() ? run::Delivery::kSent : run::Delivery::kWritten;
  }
};

// What a person is told of a run beside how it goes.
struct ToTell {
  std::vector<Sentence> before;  // was told already, and is not told again
  std::vector<Sentence> first;   // is told once the run is in our hands, before anything goes out
};

// Tells how it goes, and gives the exit code.
int RunMailing(Context& context, const profile::Folders& folders, run::PreparedRun& prepared,
               const std::optional<run::PartialRange>& range, const ToTell& told, const MailingOptions& options);

}  // namespace quillcast::cli
