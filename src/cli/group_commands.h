// The parts of `quillcast group` that stand in files of their own.
#pragma once

#include "cli/context.h"

namespace quillcast::cli {

void AddGroupSort(CLI::App& group, Context& context);
void AddGroupMerge(CLI::App& group, Context& context);
void AddGroupCapitalise(CLI::App& group, Context& context);
void AddGroupDuplicates(CLI::App& group, Context& context);
void AddGroupUndo(CLI::App& group, Context& context);

}  // namespace quillcast::cli
