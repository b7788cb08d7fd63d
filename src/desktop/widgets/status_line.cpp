#include "desktop/widgets/status_line.h"

#include <QApplication>
#include <QEvent>
#include <QLayout>
#include <algorithm>

#include "desktop/widgets/breakable.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

constexpr int kLongestWord = 60;  // a path or a reply may be one word

}  // namespace

StatusLine::StatusLine(QWidget* parent, const char* name) : QLabel(parent) {
  setObjectName(name);
  setWordWrap(true);
  setTextFormat(Qt::PlainText);
}

void StatusLine::Say(const QString& sentence, NoteKind kind) {
  kind_ = kind;
  setText(Breakable(sentence, kLongestWord));
  TakeColour();
  if (keeps_room_ && isVisible()) setMinimumHeight(std::max(minimumHeight(), heightForWidth(width())));
  MakeRoom();
}

void StatusLine::KeepRoom(int lines) {
  keeps_room_ = true;
  setMinimumHeight(lines * fontMetrics().lineSpacing());
}

// A window is laid out again within its height, and its least height knows nothing of lines that wrap.
void StatusLine::MakeRoom() {
  QWidget* form = window();
  if (form == this || !form->isVisible() || form->layout() == nullptr) return;
  const int needed = form->layout()->minimumHeightForWidth(form->width());
  if (needed > form->height()) form->resize(form->width(), needed);
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
