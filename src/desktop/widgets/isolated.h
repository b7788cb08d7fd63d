// A text of others within a sentence of ours.
#pragma once

#include <QGuiApplication>
#include <QString>

namespace quillcast::desktop {

// Where the text goes the other way than the window does, it is isolated (UAX 9): the sentence would turn round the
// signs at its ends, as the brackets of an address.
inline QString Isolated(const QString& text) {
  constexpr QChar kIsolate(0x2068);
  constexpr QChar kEnd(0x2069);
  const bool goes_along = text.isRightToLeft() == QGuiApplication::isRightToLeft();
  return goes_along || text.isEmpty() ? text : kIsolate + text + kEnd;
}

}  // namespace quillcast::desktop
