#include "platform/ui/keep_on_screen.h"

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

namespace quillcast::platform {
namespace {

constexpr int kFrame = 2;  // pixels of a frame beside and below a window; its title stands above

// The room inside the frame, which the window manager adds only once the window is there.
QSize RoomFor(const QWidget& window) {
  const int title = window.style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, &window);
  return window.screen()->availableGeometry().size() - QSize(2 * kFrame, title + kFrame);
}

bool Fits(const QSize& size, const QSize& room) { return size.boundedTo(room) == size; }

// Puts what the window shows into an area that scrolls to whatever has the focus: all of a dialog, and of a main window
// what is between its bars.
void MakeScrollable(QWidget& window) {
  QWidget* const focused = window.focusWidget();
  auto* area = new QScrollArea(&window);
  area->setObjectName("ScrollArea");
  area->setFrameShape(QFrame::NoFrame);
  area->setFocusPolicy(Qt::NoFocus);
  area->setWidgetResizable(true);
  if (auto* main = qobject_cast<QMainWindow*>(&window)) {
    area->setWidget(main->takeCentralWidget());
    main->setCentralWidget(area);
  } else {
    auto* content = new QWidget();
    content->setLayout(window.layout());
    area->setWidget(content);
    auto* around = new QVBoxLayout(&window);
    around->setContentsMargins(0, 0, 0, 0);
    around->addWidget(area);
    window.setMinimumSize(0, 0);
  }
  if (focused != nullptr) focused->setFocus();
}

void KeepOnScreen(QWidget& window) {
  const QSize room = RoomFor(window);
  if (window.layout() != nullptr && !Fits(window.layout()->totalMinimumSize(), room)) MakeScrollable(window);
  if (!Fits(window.minimumSize(), room)) window.setMinimumSize(window.minimumSize().boundedTo(room));
  if (!Fits(window.size(), room)) window.resize(window.size().boundedTo(room));
}

// Hears of a window just before it is shown, when its size is decided. A message box fits itself, and what has no frame
// follows the window that it belongs to.
class Watcher final : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::Show || event->spontaneous() || !watched->isWidgetType()) return false;
    auto* window = static_cast<QWidget*>(watched);
    const Qt::WindowType type = window->windowType();
    const bool is_framed = window->isWindow() && (type == Qt::Window || type == Qt::Dialog);
    if (is_framed && qobject_cast<QMessageBox*>(window) == nullptr) KeepOnScreen(*window);
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

}  // namespace quillcast::platform
