// Where the Tab key goes.
#pragma once

#include <QList>
#include <QRadioButton>
#include <QStringList>
#include <QTest>
#include <QTextBrowser>
#include <QWidget>

namespace quillcast::test {

// What has the keyboard as Tab, or Shift and Tab, is pressed again and again, from where it is until it comes to a
// place once more. A page with links is one place.
inline QList<QWidget*> TabWalk(QWidget& window, Qt::KeyboardModifiers with = Qt::NoModifier) {
  QList<QWidget*> walk;
  QWidget* at = window.focusWidget();
  for (int presses = 0; at != nullptr && !walk.contains(at) && presses < 500; ++presses) {
    walk << at;
    do {
      QTest::keyClick(at, with == Qt::NoModifier ? Qt::Key_Tab : Qt::Key_Backtab, with);
    } while (window.focusWidget() == at && qobject_cast<QTextBrowser*>(at) != nullptr && ++presses < 500);
    at = window.focusWidget();
  }
  return walk;
}

inline QStringList Names(const QList<QWidget*>& widgets) {
  QStringList names;
  for (const QWidget* widget : widgets) names << widget->objectName();
  return names;
}

// What the Tab key should come to and does not, and where its way goes in a circle without its beginning. Of radio
// buttons it comes to one.
inline QStringList PassedByTab(QWidget& window) {
  const QList<QWidget*> walk = TabWalk(window);
  QStringList passed;
  if (!walk.isEmpty() && window.focusWidget() != walk.front()) passed << "round " + window.focusWidget()->objectName();
  const QList<QWidget*> back = TabWalk(window, Qt::ShiftModifier);
  for (const QWidget* widget : walk) {
    if (!back.contains(widget)) passed << "back to " + widget->objectName();
  }
  for (QWidget* widget : window.findChildren<QWidget*>()) {
    const bool is_stop = widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus) != 0;
    const auto* radio = qobject_cast<const QRadioButton*>(widget);
    if (!is_stop || widget->focusProxy() != nullptr || (radio != nullptr && !radio->isChecked())) continue;
    if (widget->window() == &window && !walk.contains(widget)) passed << widget->objectName();
  }
  return passed;
}

}  // namespace quillcast::test
