// Tells of whatever the person does in the program.
#pragma once

#include <QApplication>
#include <QKeyEvent>
#include <functional>
#include <utility>

namespace quillcast::desktop {

// `then` is called before any key, press, drop or turn of the wheel is carried out, wherever in the program: lists that
// are open, and menus, are windows of their own. One key may be told several times, by each control that passes it on;
// one that only holds another for its meaning, as Shift does, is not told.
class InputWatch final : public QObject {
 public:
  InputWatch(std::function<void()> then, QObject* parent) : QObject(parent), then_(std::move(then)) {
    qApp->installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    const auto type = event->type();
    if (type == QEvent::KeyPress && IsModifier(static_cast<const QKeyEvent*>(event)->key())) return false;
    for (const auto input : {QEvent::KeyPress, QEvent::Shortcut, QEvent::InputMethod, QEvent::MouseButtonPress,
                             QEvent::MouseButtonDblClick, QEvent::Wheel, QEvent::Drop}) {
      if (type == input) then_();
    }
    return false;
  }

 private:
  static bool IsModifier(int key) {
    return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt || key == Qt::Key_AltGr ||
           key == Qt::Key_Meta;
  }

  std::function<void()> then_;
};

}  // namespace quillcast::desktop
