// Standard output and standard error as an interrupt leaves them whole.
#pragma once

#include "platform/cancel.h"

namespace quillcast::cli {

// The library's own streams lose what a signal keeps them from writing. From here on `stdout` and `stderr` write it
// again, and hold back for a reader that takes nothing only until the second request: then the write fails. `cancel` is
// to live as long as the process, which writes what is left at its very end.
void WriteThroughInterrupts(const platform::CancelToken& cancel);

}  // namespace quillcast::cli
