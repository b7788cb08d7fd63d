// The colours of a dark desktop, which says nothing of the text in empty boxes.
#pragma once

#include <QPalette>

namespace quillcast::test {

inline QPalette DarkPalette() {
  QPalette dark(QColor(45, 48, 54));
  dark.setColor(QPalette::Window, QColor(45, 48, 54));
  dark.setColor(QPalette::Base, QColor(32, 34, 39));
  dark.setColor(QPalette::AlternateBase, QColor(52, 56, 63));
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
    dark.setColor(role, QColor(230, 232, 235));
  }
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    dark.setColor(QPalette::Disabled, role, QColor(130, 134, 140));
  }
  dark.setColor(QPalette::Button, QColor(58, 62, 69));
  dark.setColor(QPalette::Highlight, QColor(46, 116, 181));
  dark.setColor(QPalette::HighlightedText, Qt::white);
  dark.setColor(QPalette::Link, QColor(110, 180, 240));
  return dark;
}

}  // namespace quillcast::test
