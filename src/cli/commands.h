// The commands, each in the file of its name: adds it, its options and its action to the program.
#pragma once

#include "cli/context.h"

namespace quillcast::cli {

void AddGroupCommand(CLI::App& app, Context& context);
void AddRecipientCommand(CLI::App& app, Context& context);
void AddImportCommand(CLI::App& app, Context& context);

}  // namespace quillcast::cli
