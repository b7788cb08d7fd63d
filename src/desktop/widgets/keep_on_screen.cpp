#include "desktop/widgets/keep_on_screen.h"

#include <QApplication>
#include <QEvent>
#include <QFocusEvent>
#include <QLayout>
#include <QMainWindow>
#include <QMessageBox>
#include <QPointer>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <vector>

#include "desktop/widgets/note_panel.h"
#include "desktop/widgets/status_line.h"

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

void AddItem(QVBoxLayout& column, QLayoutItem* item) {
  if (QLayout* row = item->layout()) {
    column.addLayout(row);
  } else {
    column.addItem(item);
  }
}

// The last row of a column, where a dialog has its buttons, the line that says what they did, and warnings above it.
std::vector<QLayoutItem*> TakeWhatStaysInView(QVBoxLayout* column) {
  std::vector<QLayoutItem*> below;
  if (column == nullptr || column->count() < 2) return below;
  below.push_back(column->takeAt(column->count() - 1));
  for (int row = column->count() - 1; row > 0; --row) {
    if (qobject_cast<StatusLine*>(column->itemAt(row)->widget()) == nullptr) continue;
    below.insert(below.begin(), column->takeAt(row));
    if (qobject_cast<NotePanel*>(column->itemAt(row - 1)->widget()) != nullptr)
      below.insert(below.begin(), column->takeAt(row - 1));
    break;
  }
  return below;
}

// All but what stays in view. Where there is room, as wide as it needs to be beside its own scroll bar.
void MakeScrollable(QWidget& dialog, const QSize& room) {
  const auto kept = TakeWhatStaysInView(qobject_cast<QVBoxLayout*>(dialog.layout()));
  const QMargins margins = dialog.layout()->contentsMargins();
  auto* content = new QWidget();
  content->setLayout(dialog.layout());
  auto* area = MakeArea(dialog);
  area->setWidget(content);
  const int wide = content->minimumSizeHint().width() + area->verticalScrollBar()->sizeHint().width();
  area->setMinimumWidth(std::min(wide, room.width()));
  dialog.resize(std::max(dialog.width(), area->minimumWidth()), dialog.height());
  auto* around = new QVBoxLayout(&dialog);
  around->setContentsMargins(0, 0, 0, 0);
  around->addWidget(area);
  if (kept.empty()) return;
  auto* below = new QVBoxLayout();
  below->setContentsMargins(margins.left(), 0, margins.right(), margins.bottom());
  for (QLayoutItem* item : kept) AddItem(*below, item);
  around->addLayout(below);
}

// What is between the bars of a main window.
void MakeScrollable(QMainWindow& window) {
  auto* area = MakeArea(window);
  area->setWidget(window.takeCentralWidget());
  window.setCentralWidget(area);
}

// What has the focus keeps it, and is scrolled to.
void LetScroll(QWidget& window, const QSize& room) {
  QWidget* const focused = window.focusWidget();
  if (auto* main = qobject_cast<QMainWindow*>(&window)) {
    MakeScrollable(*main);
  } else {
    MakeScrollable(window, room);
    window.setMinimumSize(0, 0);
  }
  if (focused != nullptr) focused->setFocus();
}

void KeepOnScreen(QWidget& window) {
  const QSize room = RoomFor(window);
  if (window.layout() != nullptr && !Fits(window.layout()->totalMinimumSize(), room)) LetScroll(window, room);
  if (!Fits(window.minimumSize(), room)) window.setMinimumSize(window.minimumSize().boundedTo(room));
  if (!Fits(window.size(), room)) window.resize(window.size().boundedTo(room));
}

// What gets the keyboard in a window that scrolls comes into view, once it has its place there. Not under the mouse,
// which would let go of something else than it pressed.
void BringIntoView(QWidget& control) {
  for (QWidget* up = control.parentWidget(); up != nullptr && !control.isWindow(); up = up->parentWidget()) {
    auto* area = qobject_cast<QScrollArea*>(up);
    if (area == nullptr) continue;
    QTimer::singleShot(0, area, [area, shown = QPointer(&control)] {
      if (shown) area->ensureWidgetVisible(shown);
    });
  }
}

// Hears of a window just before it is shown, when its size is decided, and before it grows because more is to be shown
// in it. A message box fits itself, and what has no frame follows the window that it belongs to.
class ScreenWatcher final : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (!watched->isWidgetType()) return false;
    auto* window = static_cast<QWidget*>(watched);
    const bool gets_keys = event->type() == QEvent::FocusIn;
    if (gets_keys && static_cast<QFocusEvent*>(event)->reason() != Qt::MouseFocusReason) BringIntoView(*window);
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
  static QPointer<ScreenWatcher> watcher;
  if (watcher) return;
  watcher = new ScreenWatcher(qApp);
  qApp->installEventFilter(watcher);
}

}  // namespace quillcast::desktop
