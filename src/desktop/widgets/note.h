// The ways in which a window says something, and their colours, which can be read in light and in dark.
#pragma once

#include <QColor>
#include <QPalette>
#include <QPixmap>

namespace quillcast::desktop {

enum class NoteKind { kInformation, kWarning, kFailure };

struct NoteColours {
  QColor ground;
  QColor text;
  QColor sign;  // the picture before the text, and the edge
};

// Of a panel. `palette` decides whether they are light or dark.
NoteColours PanelColours(NoteKind kind, const QPalette& palette);
// Of a line of text on the ground of the window.
QColor LineColour(NoteKind kind, const QPalette& palette);
// The name of the kind's picture; see icons.h.
const char* SignName(NoteKind kind);

}  // namespace quillcast::desktop
