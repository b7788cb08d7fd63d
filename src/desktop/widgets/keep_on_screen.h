// No window opens larger than the free part of its screen, at any scale.
#pragma once

namespace quillcast::desktop {

// From here on, for every window of the program that is shown: it is made smaller where it would not fit, and where its
// controls do not fit they can be scrolled to. Calling it again changes nothing.
void KeepWindowsOnScreen();

}  // namespace quillcast::desktop
