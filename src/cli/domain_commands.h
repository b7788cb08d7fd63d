// The parts of `quillcast domain` that stand in files of their own.
#pragma once

#include "cli/context.h"

namespace quillcast::cli {

void AddDomainCheck(CLI::App& domain, Context& context);

}  // namespace quillcast::cli
