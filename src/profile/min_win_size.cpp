#include "profile/min_win_size.h"

#include <array>

namespace quillcast::profile {

PixelSize MinWinSize(std::string_view windows_name) {
  struct Row {
    std::string_view name;
    PixelSize size;
  };
  constexpr auto kRows = std::to_array<Row>({
      {"Windows XP", {640, 503}},
      {"Windows Vista", {648, 505}},
      {"Windows 7", {648, 507}},
      {"Windows 8", {648, 508}},
  });
  for (const Row& row : kRows) {
    if (row.name == windows_name) return row.size;
  }
  return {640, 495};
}

}  // namespace quillcast::profile
