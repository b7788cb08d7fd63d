#include "desktop/widgets/focus_ring.h"

#include <QApplication>
#include <QEvent>
#include <QFocusEvent>
#include <QPainter>
#include <QScrollArea>
#include <QStyle>
#include <QTabBar>

#include "desktop/widgets/contrast.h"

namespace quillcast::desktop {
namespace {

constexpr int kLine = 2;  // pixels

// What scrolls with the control, so that the ring does too and is cut off where the control is; else its window.
QWidget* HostOf(const QWidget& control) {
  for (QWidget* up = control.parentWidget(); up != nullptr; up = up->parentWidget()) {
    if (up->isWindow()) return up;
    const QWidget* area = up->parentWidget() != nullptr ? up->parentWidget()->parentWidget() : nullptr;
    if (qobject_cast<const QScrollArea*>(area) != nullptr) return up;
  }
  return nullptr;
}

// A page shows where it types; the list of a box that is open is a window of its own.
bool IsRinged(const QWidget& control) {
  return control.isVisible() && !control.inherits("QQuickWidget") && !control.inherits("QWebEngineView") &&
         control.window()->windowType() != Qt::Popup;
}

// Of a row of tabs it is the one that shows; of a check box what there is of it, however wide its row.
QRect PlaceIn(const QWidget& control) {
  if (const auto* tabs = qobject_cast<const QTabBar*>(&control)) return tabs->tabRect(tabs->currentIndex());
  const bool is_check = control.inherits("QCheckBox") || control.inherits("QRadioButton");
  if (!is_check) return control.rect();
  const QSize own = control.sizeHint().boundedTo(control.size());
  return QStyle::visualRect(control.layoutDirection(), control.rect(),
                            QRect(QPoint(), QSize(own.width(), control.height())));
}

class FocusWatcher final : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched->isWidgetType() && watched != ring_) Hear(*static_cast<QWidget*>(watched), *event);
    return false;
  }

 private:
  void Hear(QWidget& widget, const QEvent& event) {
    switch (event.type()) {
      case QEvent::FocusIn:
        if (static_cast<const QFocusEvent&>(event).reason() == Qt::MouseFocusReason) {
          End();
        } else {
          Begin(widget);
        }
        break;
      case QEvent::KeyPress:
        if (!ring_ || !ring_->isVisible()) Begin(widget);
        break;
      case QEvent::FocusOut:
      case QEvent::Hide:
        if (ring_ && ring_->control() == &widget) End();
        break;
      case QEvent::Move:
      case QEvent::Resize:
      case QEvent::LayoutRequest:
        if (ring_ && ring_->isVisible()) ring_->Place();
        break;
      default:
        break;
    }
  }

  void Begin(QWidget& widget) {
    if (&widget != QApplication::focusWidget() || !IsRinged(widget)) return;
    QWidget* const host = HostOf(widget);
    if (host == nullptr) return;
    if (!ring_) ring_ = new FocusRing(host);
    if (ring_->parentWidget() != host) ring_->setParent(host);
    ring_->StandRound(&widget);
  }
  void End() {
    if (ring_) ring_->hide();
  }

  QPointer<FocusRing> ring_;
};

}  // namespace

FocusRing::FocusRing(QWidget* parent) : QWidget(parent) {
  setObjectName("FocusRing");
  setAttribute(Qt::WA_TransparentForMouseEvents);
}

void FocusRing::StandRound(QWidget* control) {
  if (control_) control_->disconnect(this);
  control_ = control;
  if (auto* tabs = qobject_cast<QTabBar*>(control)) connect(tabs, &QTabBar::currentChanged, this, &FocusRing::Place);
  Place();
  show();
  raise();
}

void FocusRing::Place() {
  if (!control_) return;
  QRect place = PlaceIn(*control_);
  place.moveTopLeft(control_->mapTo(parentWidget(), place.topLeft()));
  setGeometry(place.adjusted(-kLine, -kLine, kLine, kLine).intersected(parentWidget()->rect()));
  setMask(QRegion(rect()) - QRegion(rect().adjusted(kLine, kLine, -kLine, -kLine)));
}

void FocusRing::paintEvent(QPaintEvent*) {
  const QPalette& colours = parentWidget()->palette();
  const QColor line = Readable(colours.color(QPalette::Highlight), colours.color(QPalette::Window), kLineContrast);
  QPainter(this).fillRect(rect(), line);
}

void ShowFocusRing() {
  static QPointer<FocusWatcher> watcher;
  if (watcher) return;
  watcher = new FocusWatcher(qApp);
  qApp->installEventFilter(watcher);
}

}  // namespace quillcast::desktop
