#include "desktop/widgets/look.h"

#include <QApplication>
#include <QEvent>
#include <QPointer>

#include "desktop/widgets/contrast.h"
#include "desktop/widgets/focus_ring.h"
#include "desktop/widgets/held_keys.h"
#include "desktop/widgets/keep_on_screen.h"

namespace quillcast::desktop {
namespace {

QColor Halfway(const QColor& one, const QColor& other) {
  return QColor((one.red() + other.red()) / 2, (one.green() + other.green()) / 2, (one.blue() + other.blue()) / 2);
}

// Desktops that give a palette seldom think of this colour, and the toolkit's own is black on black in a dark one.
void TakePlaceholderColour() {
  QPalette palette = QApplication::palette();
  const QColor quiet = QuietText(palette);
  if (palette.color(QPalette::PlaceholderText) == quiet) return;
  palette.setColor(QPalette::PlaceholderText, quiet);
  QApplication::setPalette(palette);
}

class LookWatcher final : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange) TakePlaceholderColour();
    return false;
  }
};

}  // namespace

QColor QuietText(const QPalette& palette) {
  const QColor ground = palette.color(QPalette::Base);
  const QColor halfway = Halfway(palette.color(QPalette::Text), ground);
  return Readable(Readable(halfway, ground), palette.color(QPalette::Button));
}

void DressWindows() {
  static QPointer<LookWatcher> watcher;
  if (watcher) return;
  watcher = new LookWatcher(qApp);
  qApp->installEventFilter(watcher);
  TakePlaceholderColour();
  ShowFocusRing();
  IgnoreHeldKeys();
  KeepWindowsOnScreen();
}

}  // namespace quillcast::desktop
