// The colours of a dark desktop, and those that are seen in a picture.
#pragma once

#include <QImage>
#include <QPalette>

#include "desktop/widgets/contrast.h"

namespace quillcast::test {

// It says nothing of the text in empty boxes, as desktops do.
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

// The colour in the picture that is told best from `ground`.
inline QColor Strongest(const QImage& picture, const QColor& ground) {
  QColor best = ground;
  double most = 1;
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      const QColor colour = picture.pixelColor(x, y);
      const double contrast = colour == best ? most : desktop::Contrast(colour, ground);
      if (contrast > most) {
        most = contrast;
        best = colour;
      }
    }
  }
  return best;
}

}  // namespace quillcast::test
