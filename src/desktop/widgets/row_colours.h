// The colours of a list of recipients or runs. They are the same in every theme, and so is the text on them.
#pragma once

#include <QColor>

namespace quillcast::desktop {

struct OnGround {
  QColor text;
  QColor ground;
};

inline const OnGround kPaleRow = {Qt::black, QColor(255, 255, 192)};
inline const OnGround kAmberRow = {Qt::black, QColor(255, 200, 0)};
inline const OnGround kHeadRow = {Qt::white, QColor(16, 66, 36)};
inline const OnGround kChosenRow = {Qt::white, QColor(95, 95, 143)};

// The rows take turns. A head counts as row 0, so that the first below it is amber; without one the first is pale.
inline const OnGround& RowColours(int row, bool has_head) {
  return (row + (has_head ? 1 : 0)) % 2 == 0 ? kPaleRow : kAmberRow;
}

}  // namespace quillcast::desktop
