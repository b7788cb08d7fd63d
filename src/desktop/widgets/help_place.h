// The place in its window's help page that tells of a part of the window.
#pragma once

namespace quillcast::desktop {

// A property of that part: the name of an anchor in the page.
inline constexpr const char* kHelpPlace = "HelpPlace";

}  // namespace quillcast::desktop
