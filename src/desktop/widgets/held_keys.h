// A key that is held down presses a button once.
#pragma once

namespace quillcast::desktop {

// From here on, for every window of the program: what a key repeats by being held goes to texts alone. Held, Enter
// would open a window, press its button, close it and open it anew, and nobody would have read a word. Calling it again
// changes nothing.
void IgnoreHeldKeys();

}  // namespace quillcast::desktop
