#include "desktop/widgets/status_line.h"

#include <QApplication>
#include <QEvent>

#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

StatusLine::StatusLine(QWidget* parent, const char* name) : QLabel(parent) {
  setObjectName(name);
  setWordWrap(true);
  setTextFormat(Qt::PlainText);
}

void StatusLine::Say(const QString& sentence, NoteKind kind) {
  kind_ = kind;
  setText(sentence);
  TakeColour();
}

void StatusLine::Fail(const Error& error) { Say(InWords(error), NoteKind::kFailure); }

void StatusLine::changeEvent(QEvent* event) {
  QLabel::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) TakeColour();
}

void StatusLine::TakeColour() {
  const QColor colour = LineColour(kind_, QApplication::palette(this));
  if (palette().color(QPalette::WindowText) == colour) return;
  QPalette colours = palette();
  colours.setColor(QPalette::WindowText, colour);
  setPalette(colours);
}

}  // namespace quillcast::desktop
