#include "desktop/widgets/breakable.h"

namespace quillcast::desktop {

QString Breakable(const QString& text, int longest_word) {
  QString broken;
  int length = 0;
  for (const QChar c : text) {
    length = c.isSpace() ? 0 : length + 1;
    if (length > longest_word && !c.isLowSurrogate()) {
      broken += QChar(0x200B);
      length = 1;
    }
    broken += c;
  }
  return broken;
}

}  // namespace quillcast::desktop
