// How all windows look, whatever the desktop's colours are.
#pragma once

#include <QColor>
#include <QPalette>

namespace quillcast::desktop {

// Text that steps back on the ground of lists, boxes and buttons, and can be read all the same.
QColor QuietText(const QPalette& palette);

// From here on: what stands in empty boxes can be read, the control with the keyboard has a ring round it, and no
// window opens larger than its screen. Calling it again changes nothing.
void DressWindows();

}  // namespace quillcast::desktop
