// A dialog that a page is shown in stays the only one that takes keys.
#pragma once

namespace quillcast::desktop {

// From here on, for every dialog of the program: the toolkit makes its window anew when a page comes into it, and
// forgets that it was modal. Calling it again changes nothing.
void KeepDialogsModal();

}  // namespace quillcast::desktop
