// Maps an import by the headings of its file.
#pragma once

#include <string>

#include "cli/import_options.h"

namespace quillcast::cli {

// Reads the first lines as the plan says, takes the mapping of their headings into it, and leaves out the lines up to
// them. kBadData where no heading that can be mapped names the address.
Result<void> MapByHeader(const std::string& codeset, const platform::CancelToken& cancel, ImportPlan& plan);

}  // namespace quillcast::cli
