// Tells of whatever the person does in the program that may change something.
#pragma once

#include <QAbstractScrollArea>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QKeyEvent>
#include <QLabel>
#include <algorithm>
#include <array>
#include <functional>
#include <utility>

namespace quillcast::desktop {

// `then` is called before any key, press, drop or turn of the wheel is carried out, wherever in the program: lists that
// are open, and menus, are windows of their own. One key may be told several times, by each control that passes it on.
// Not told is what changes nothing by itself: a key that only gives others their meaning, or is the desktop's; a wheel
// that scrolls; a press on the ground between the controls.
class InputWatch final : public QObject {
 public:
  InputWatch(std::function<void()> then, QObject* parent) : QObject(parent), then_(std::move(then)) {
    qApp->installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject* target, QEvent* event) override {
    if (MayChange(*target, *event)) then_();
    return false;
  }

 private:
  static bool MayChange(const QObject& target, const QEvent& event) {
    switch (event.type()) {
      case QEvent::Shortcut:
      case QEvent::InputMethod:
      case QEvent::Drop:
        return true;
      case QEvent::KeyPress:
        return !IsModifier(static_cast<const QKeyEvent&>(event).key());
      case QEvent::Wheel:
        return qobject_cast<const QComboBox*>(&target) != nullptr ||
               qobject_cast<const QAbstractSpinBox*>(&target) != nullptr;
      case QEvent::MouseButtonPress:
      case QEvent::MouseButtonDblClick:
        return !IsGround(target);
      default:
        return false;
    }
  }

  static bool IsModifier(int key) {
    constexpr std::array kModifiers = {Qt::Key_Shift,   Qt::Key_Control,  Qt::Key_Alt,     Qt::Key_AltGr,
                                       Qt::Key_Meta,    Qt::Key_Super_L,  Qt::Key_Super_R, Qt::Key_Hyper_L,
                                       Qt::Key_Hyper_R, Qt::Key_CapsLock, Qt::Key_NumLock, Qt::Key_ScrollLock};
    return std::find(kModifiers.begin(), kModifiers.end(), key) != kModifiers.end();
  }

  // Also the window of the platform, which passes the press on to a widget: that one is told.
  static bool IsGround(const QObject& target) {
    const auto* widget = qobject_cast<const QWidget*>(&target);
    if (widget == nullptr || qobject_cast<const QDialog*>(widget) != nullptr ||
        qobject_cast<const QLabel*>(widget) != nullptr)
      return true;
    const bool is_bare = widget->metaObject() == &QWidget::staticMetaObject;
    return is_bare && qobject_cast<const QAbstractScrollArea*>(widget->parent()) == nullptr;
  }

  std::function<void()> then_;
};

}  // namespace quillcast::desktop
