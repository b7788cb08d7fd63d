#include "desktop/widgets/read_first.h"

#include <QApplication>
#include <QPushButton>
#include <QTimer>

namespace quillcast::desktop {

// Meanwhile the window itself has the keyboard: the next button in the row would take Enter for its own.
void HoldUntilRead(QPushButton* button) {
  button->window()->setFocus();
  button->setEnabled(false);
  QTimer::singleShot(2 * QApplication::doubleClickInterval(), button, [button] {
    button->setEnabled(true);
    const QWidget* focused = QApplication::focusWidget();
    if (focused == nullptr || focused == button->window()) button->setFocus();
  });
}

}  // namespace quillcast::desktop
