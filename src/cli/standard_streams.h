// Standard output and standard error as an interrupt leaves them whole.
#pragma once

#include "platform/cancel.h"

namespace quillcast::cli {

// The library's own streams lose what a signal keeps them from writing. From here on `stdout` and `stderr` write it
// again, wait also where the output itself would not, and hold back for a reader that takes nothing only until half a
// second after the second request: then the write fails. `cancel` is to live as long as the process, which writes what
// is left at its very end.
void WriteThroughInterrupts(const platform::CancelToken& cancel);

// Writes what is left, and says whether all of standard output arrived. Nothing is counted that did not; that it did
// not is told at the end of every command.
bool HasStandardOutputArrived();

}  // namespace quillcast::cli
