#include "desktop/widgets/held_keys.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTextEdit>

namespace quillcast::desktop {
namespace {

bool IsEnter(int key) { return key == Qt::Key_Return || key == Qt::Key_Enter; }

// Where Enter is a new line: what shows a page hands it on to that.
bool TakesLines(const QObject* widget) {
  return qobject_cast<const QTextEdit*>(widget) != nullptr || qobject_cast<const QPlainTextEdit*>(widget) != nullptr ||
         widget->inherits("QQuickWidget");
}

class KeyWatcher final : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease) return false;
    const auto* const press = static_cast<QKeyEvent*>(event);
    if (!press->isAutoRepeat() || !watched->isWidgetType()) return false;
    if (IsEnter(press->key())) return !TakesLines(watched);
    return press->key() == Qt::Key_Space && qobject_cast<QAbstractButton*>(watched) != nullptr;
  }
};

}  // namespace

void IgnoreHeldKeys() {
  static QPointer<KeyWatcher> watcher;
  if (watcher) return;
  watcher = new KeyWatcher(qApp);
  qApp->installEventFilter(watcher);
}

}  // namespace quillcast::desktop
