// The program's icons: line drawings that take the colour of the text beside them, light or dark.
#pragma once

#include <QColor>
#include <QIcon>
#include <string_view>

namespace quillcast::desktop {

// In the colour of the text on buttons, or in one of its own. An empty icon for a name that has none.
QIcon Icon(std::string_view name, const QColor& colour = {});

// The sign of the program itself, for its windows and the desktop.
QIcon ProgramIcon();

}  // namespace quillcast::desktop
