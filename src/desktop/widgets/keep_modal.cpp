#include "desktop/widgets/keep_modal.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QPointer>
#include <QWindow>

namespace quillcast::desktop {
namespace {

// The event comes when the new window is there and before it is shown: from then on it would be too late.
class ModalWatcher final : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::WinIdChange) return false;
    const auto* dialog = qobject_cast<QDialog*>(watched);
    if (dialog != nullptr && dialog->isModal() && dialog->windowHandle() != nullptr)
      dialog->windowHandle()->setModality(dialog->windowModality());
    return false;
  }
};

}  // namespace

void KeepDialogsModal() {
  static QPointer<ModalWatcher> watcher;
  if (watcher) return;
  watcher = new ModalWatcher(qApp);
  qApp->installEventFilter(watcher);
}

}  // namespace quillcast::desktop
