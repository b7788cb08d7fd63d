// The account's commands that have a file of their own.
#pragma once

#include <CLI/CLI.hpp>

#include "cli/context.h"

namespace quillcast::cli {

// account import
void AddAccountImport(CLI::App& account, Context& context);

}  // namespace quillcast::cli
