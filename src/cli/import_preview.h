// What an import tells of how it reads its file.
#pragma once

#include <string>

#include "cli/import_options.h"

namespace quillcast::cli {

// Tells how the file is read: "Delimiter: Semicolon (found out)". Nothing for what is as it always is.
void TellPlan(Context& context, const ImportPlan& plan);

// How the first lines would be read: by the mapping, or where there is none, all fields by their numbers.
int PreviewImport(Context& context, const ImportPlan& plan, const std::string& codeset);

}  // namespace quillcast::cli
