#include "desktop/widgets/up_down.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

namespace quillcast::desktop {

UpDown::UpDown(QLineEdit* box, int low, int high, QWidget* parent)
    : QWidget(parent), box_(box), low_(low), high_(high) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  const int height = box->sizeHint().height() / 2;
  const auto add = [&](Qt::ArrowType arrow, int by) {
    auto* button = new QToolButton(this);
    button->setArrowType(arrow);
    button->setAutoRepeat(true);
    button->setFocusPolicy(Qt::NoFocus);  // the box has the arrow keys
    button->setFixedSize(2 * height, height);
    button->setAccessibleName(by > 0 ? tr("More") : tr("Less"));
    connect(button, &QToolButton::clicked, this, [this, by] { Step(by); });
    column->addWidget(button);
  };
  add(Qt::UpArrow, 1);
  add(Qt::DownArrow, -1);
  box->installEventFilter(this);
}

bool UpDown::eventFilter(QObject* watched, QEvent* event) {
  if (watched == box_ && event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Up || key == Qt::Key_Down) {
      Step(key == Qt::Key_Up ? 1 : -1);
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

void UpDown::Step(int by) { box_->setText(QString::number(std::clamp(box_->text().toInt() + by, low_, high_))); }

}  // namespace quillcast::desktop
