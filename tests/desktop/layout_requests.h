// How often a window asks to be laid out.
#pragma once

#include <QApplication>
#include <QEvent>
#include <QTest>
#include <QWidget>

namespace quillcast::test {

// Of the window and all that stands in it.
class LayoutRequests final : public QObject {
 public:
  explicit LayoutRequests(const QWidget& window) : window_(window) { qApp->installEventFilter(this); }

  int Within(int milliseconds) {
    count_ = 0;
    QTest::qWait(milliseconds);
    return count_;
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::LayoutRequest && watched->isWidgetType() &&
        static_cast<QWidget*>(watched)->window() == &window_)
      ++count_;
    return false;
  }

 private:
  const QWidget& window_;
  int count_ = 0;
};

}  // namespace quillcast::test
