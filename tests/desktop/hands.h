// What a person does at a window, and sees of it, by the names of its controls. With the kinds of controls that nearly
// every window has.
#pragma once

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <initializer_list>

namespace quillcast::test {

template <typename Widget = QWidget>
Widget& Find(const QObject& window, const QString& name) {
  return *window.findChild<Widget*>(name);
}

// A button, or where the sign of a box that is ticked or of a choice stands.
inline void Press(const QObject& window, const QString& name) {
  auto& button = Find<QAbstractButton>(window, name);
  QTest::mouseClick(&button, Qt::LeftButton, {}, button.isCheckable() ? QPoint(5, 5) : QPoint());
}

// In the place of what stood there.
inline void Type(const QObject& window, const QString& name, const QString& text) {
  auto* box = window.findChild<QLineEdit*>(name);
  if (box == nullptr) box = Find<QComboBox>(window, name).lineEdit();
  box->setFocus();
  box->selectAll();
  QTest::keyClick(box, Qt::Key_Delete);
  QTest::keyClicks(box, text);
}

// What is to be read there; "1" or "0" of a box that is ticked or not.
inline QString Text(const QObject& window, const QString& name) {
  if (const auto* label = window.findChild<QLabel*>(name)) return label->text();
  if (const auto* box = window.findChild<QLineEdit*>(name)) return box->text();
  if (const auto* box = window.findChild<QComboBox*>(name)) return box->currentText();
  if (const auto* box = window.findChild<QPlainTextEdit*>(name)) return box->toPlainText();
  return Find<QCheckBox>(window, name).isChecked() ? "1" : "0";
}

// For a scene whose window is its `form`.
template <typename Scene>
struct Hands {
  template <typename Widget = QWidget>
  Widget& Find(const QString& name) const {
    return test::Find<Widget>(Window(), name);
  }
  void Press(const QString& name) const { test::Press(Window(), name); }
  void Type(const QString& name, const QString& text) const { test::Type(Window(), name, text); }
  QString Text(const QString& name) const { return test::Text(Window(), name); }
  QString Status() const { return Text("StatusLine"); }
  QString Focus() const {
    const QWidget* focused = Window().focusWidget();
    return focused != nullptr ? focused->objectName() : "nothing";
  }
  // Of these controls, those that cannot be used.
  QString Disabled(std::initializer_list<const char*> names) const {
    QStringList disabled;
    for (const char* name : names) {
      if (!Find(name).isEnabled()) disabled << name;
    }
    return disabled.join(' ');
  }

 private:
  const QWidget& Window() const {
    const auto& form = static_cast<const Scene&>(*this).form;
    if constexpr (requires { *form; }) {
      return *form;
    } else {
      return form;
    }
  }
};

}  // namespace quillcast::test
