// The smallest size of the main window.
#pragma once

#include <string_view>

namespace quillcast::profile {

// Of a whole window, in the pixels that forms are laid out in.
struct PixelSize {
  int width = 0;
  int height = 0;
  bool operator==(const PixelSize&) const = default;
};

// By the exact name that GetWinVer gives; the heights allow for the window frame of each version.
PixelSize MinWinSize(std::string_view windows_name);

}  // namespace quillcast::profile
