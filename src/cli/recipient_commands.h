// The parts of `quillcast recipient` that stand in files of their own.
#pragma once

#include "cli/context.h"

namespace quillcast::cli {

// delete, move, copy and groups.
void AddRecipientEdits(CLI::App& recipient, Context& context);

}  // namespace quillcast::cli
