// What the program leaves behind goes when it closes.
#pragma once

#include "profile/folders.h"

namespace quillcast::profile {

// Removes the preview files, the editor's left-overs in the installed program folder, and the imported body with its
// pictures. Each step goes on after a failure of the one before.
void CleanUpAtClose(const Folders& folders);

}  // namespace quillcast::profile
