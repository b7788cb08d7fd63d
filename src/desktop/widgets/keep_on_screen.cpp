#include "desktop/widgets/keep_on_screen.h"

#include <QApplication>
#include <QEvent>
#include <QLayout>
#include <QMainWindow>
#include <QMessageBox>
#include <QPointer>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>

namespace quillcast::desktop {
namespace {

constexpr int kFrame = 2;  // pixels of a frame beside and below a window; its title stands above

// The room inside the frame, which the window manager adds only once the window is there.
QSize RoomFor(const QWidget& window) {
  const int title = window.style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, &window);
  return window.screen()->availableGeometry().size() - QSize(2 * kFrame, title + kFrame);
}

bool Fits(const QSize& size, const QSize& room) { return size.boundedTo(room) == size; }

QScrollArea* MakeArea(QWidget& window) {
  auto* area = new QScrollArea(&window);
  area->setObjectName("ScrollArea");
  area->setFrameShape(QFrame::NoFrame);
  area->setFocusPolicy(Qt::NoFocus);
  area->setWidgetResizable(true);
  return area;
}

// All but the last row of a column, where a dialog has its buttons: those stay in view.
void MakeScrollable(QWidget& dialog) {
  auto* column = qobject_cast<QVBoxLayout*>(dialog.layout());
  QLayoutItem* buttons = column != nullptr && column->count() > 1 ? column->takeAt(column->count() - 1) : nullptr;
  const QMargins margins = dialog.layout()->contentsMargins();
  auto* content = new QWidget();
  content->setLayout(dialog.layout());
  auto* area = MakeArea(dialog);
  area->setWidget(content);
  auto* around = new QVBoxLayout(&dialog);
  around->setContentsMargins(0, 0, 0, 0);
  around->addWidget(area);
  if (buttons == nullptr) return;
  auto* below = new QVBoxLayout();
  below->setContentsMargins(margins.left(), 0, margins.right(), margins.bottom());
  if (QLayout* row = buttons->layout()) {
    below->addLayout(row);
  } else {
    below->addItem(buttons);
  }
  around->addLayout(below);
}

// What is between the bars of a main window.
void MakeScrollable(QMainWindow& window) {
  auto* area = MakeArea(window);
  area->setWidget(window.takeCentralWidget());
  window.setCentralWidget(area);
}

// What has the focus keeps it, and is scrolled to.
void LetScroll(QWidget& window) {
  QWidget* const focused = window.focusWidget();
  if (auto* main = qobject_cast<QMainWindow*>(&window)) {
    MakeScrollable(*main);
  } else {
    MakeScrollable(window);
    window.setMinimumSize(0, 0);
  }
  if (focused != nullptr) focused->setFocus();
}

void KeepOnScreen(QWidget& window) {
  const QSize room = RoomFor(window);
  if (window.layout() != nullptr && !Fits(window.layout()->totalMinimumSize(), room)) LetScroll(window);
  if (!Fits(window.minimumSize(), room)) window.setMinimumSize(window.minimumSize().boundedTo(room));
  if (!Fits(window.size(), room)) window.resize(window.size().boundedTo(room));
}

// Hears of a window just before it is shown, when its size is decided, and before it grows because more is to be shown
// in it. A message box fits itself, and what has no frame follows the window that it belongs to.
class Watcher final : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (!watched->isWidgetType()) return false;
    auto* window = static_cast<QWidget*>(watched);
    const Qt::WindowType type = window->windowType();
    const bool is_framed = window->isWindow() && (type == Qt::Window || type == Qt::Dialog);
    if (!is_framed || qobject_cast<QMessageBox*>(window) != nullptr) return false;
    if (event->type() == QEvent::Show && !event->spontaneous()) KeepOnScreen(*window);
    const bool fills_screen = (window->windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen)) != 0;
    if (event->type() == QEvent::LayoutRequest && window->isVisible() && !fills_screen) KeepOnScreen(*window);
    return false;
  }
};

}  // namespace

void KeepWindowsOnScreen() {
  static QPointer<Watcher> watcher;
  if (watcher) return;
  watcher = new Watcher(qApp);
  qApp->installEventFilter(watcher);
}

}  // namespace quillcast::desktop
