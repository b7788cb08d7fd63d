#include "desktop/mail_file/page_sizes.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <utility>
#include <vector>

namespace quillcast::desktop {
namespace {

constexpr double kPointsPerInch = 72;

// Calls `change`, which says whether it did, with the look of each piece of a block, so that the page is laid out once.
template <typename Change>
void ChangeLetters(QTextDocument& document, const Change& change) {
  struct Piece {
    int begin;
    int end;
    QTextCharFormat format;
  };
  std::vector<Piece> pieces;
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
    for (auto place = block.begin(); !place.atEnd(); ++place) {
      const QTextFragment fragment = place.fragment();
      QTextCharFormat format = fragment.charFormat();
      if (change(format))
        pieces.push_back({fragment.position(), fragment.position() + fragment.length(), std::move(format)});
    }
  }
  QTextCursor cursor(&document);
  cursor.beginEditBlock();
  for (const Piece& piece : pieces) {
    cursor.setPosition(piece.begin);
    cursor.setPosition(piece.end, QTextCursor::KeepAnchor);
    cursor.setCharFormat(piece.format);
  }
  cursor.endEditBlock();
}

// The toolkit sees to those above and below.
void WidenMargins(double times, QTextDocument& document) {
  QTextCursor cursor(&document);
  cursor.beginEditBlock();
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
    QTextBlockFormat format = block.blockFormat();
    if (format.leftMargin() == 0 && format.rightMargin() == 0 && format.textIndent() == 0) continue;
    format.setLeftMargin(format.leftMargin() * times);
    format.setRightMargin(format.rightMargin() * times);
    format.setTextIndent(format.textIndent() * times);
    cursor.setPosition(block.position());
    cursor.setBlockFormat(format);
  }
  cursor.endEditBlock();
}

}  // namespace

void PreferSizesToSteps(QTextDocument& document) {
  ChangeLetters(document, [](QTextCharFormat& format) {
    const bool has_size = format.intProperty(QTextFormat::FontPixelSize) > 0 || format.fontPointSize() > 0;
    if (!has_size || !format.hasProperty(QTextFormat::FontSizeAdjustment)) return false;
    format.clearProperty(QTextFormat::FontSizeAdjustment);
    return true;
  });
}

void KeepScreenSizes(double dots, QTextDocument& document) {
  ChangeLetters(document, [](QTextCharFormat& format) {
    const int size = format.intProperty(QTextFormat::FontPixelSize);
    if (size <= 0) return false;
    format.clearProperty(QTextFormat::FontPixelSize);
    format.setFontPointSize(size * kPointsPerInch / kScreenDots);
    return true;
  });
  WidenMargins(dots / kScreenDots, document);
}

}  // namespace quillcast::desktop
