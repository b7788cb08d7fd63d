// Pages drawn for the command, in a process of its own (see mail_file/print_job.h).
#pragma once

#include <optional>

namespace quillcast::desktop {

// As an application that no display is needed for and nothing is seen of; it takes part in no profile. What it is told
// to do comes in the arguments and by standard input, what became of it goes to standard output. The exit code; nothing
// where the arguments do not ask for it.
std::optional<int> PrintWithoutWindow(int count, char** arguments);

}  // namespace quillcast::desktop
