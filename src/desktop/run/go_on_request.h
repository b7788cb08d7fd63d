// What the sending window is asked to do with a kept run.
#pragma once

#include <cstdint>
#include <string>

#include "run/journal/run_journal.h"
#include "run/pace/pace_rules.h"

namespace quillcast::desktop {

struct GoOnRequest {
  run::RunId run = 0;
  run::RunKind kind = run::RunKind::kResume;
  run::RecipientChoice choice;
  std::string subject;
  std::string group;
  std::int64_t recipients = 0;  // that are chosen
  run::PaceTexts pace = {};     // that its last run was told
};

}  // namespace quillcast::desktop
