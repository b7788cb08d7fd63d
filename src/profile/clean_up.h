// What the program leaves behind goes when it closes.
#pragma once

#include <functional>
#include <string>

#include "profile/folders.h"

namespace quillcast::profile {

// Removes the preview files, the editor's left-overs in the installed program folder, and the imported bodies with
// their pictures, but for those whose folder of this name is needed still. Each step goes on after a failure of the one
// before.
using IsNeeded = std::function<bool(const std::string& name)>;
void CleanUpAtClose(const Folders& folders, const IsNeeded& imported_body_is_needed);

}  // namespace quillcast::profile
