#include "desktop/mail_file/page_width.h"

#include <QImage>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>
#include <QTextTable>
#include <QUrl>
#include <algorithm>
#include <vector>

namespace quillcast::desktop {
namespace {

bool IsFixed(const QTextLength& length) { return length.type() == QTextLength::FixedLength; }

bool IsTooWide(const QTextTableFormat& format, double most) {
  double width = 0;
  for (const QTextLength& column : format.columnWidthConstraints()) width += IsFixed(column) ? column.rawValue() : 0;
  const double whole = format.width().rawValue();
  if (format.width().type() == QTextLength::PercentageLength) return width > most || whole > 100;
  return std::max(width, IsFixed(format.width()) ? whole : 0) > most;
}

void TakeTheWidthThereIs(QTextTable& table) {
  QTextTableFormat format = table.format();
  QList<QTextLength> columns = format.columnWidthConstraints();
  const bool has_width = format.width().type() != QTextLength::VariableLength;
  if (!has_width && std::none_of(columns.begin(), columns.end(), IsFixed)) return;
  std::replace_if(columns.begin(), columns.end(), IsFixed, QTextLength());
  format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
  format.setColumnWidthConstraints(columns);
  table.setFormat(format);
}

void KeepTablesWithin(double most, const QTextFrame& frame, bool is_narrowed) {
  for (QTextFrame* inner : frame.childFrames()) {
    auto* table = qobject_cast<QTextTable*>(inner);
    const bool narrows = is_narrowed || (table != nullptr && IsTooWide(table->format(), most));
    if (table != nullptr && narrows) TakeTheWidthThereIs(*table);
    KeepTablesWithin(most, *inner, narrows);
  }
}

// As it is shown: by the numbers that the page gives it, or by its own.
QSizeF SizeOf(const QTextImageFormat& format, const QTextDocument& document) {
  const QSizeF own = document.resource(QTextDocument::ImageResource, QUrl(format.name())).value<QImage>().size();
  if (own.isEmpty()) return {};
  const double width = format.width() > 0    ? format.width()
                       : format.height() > 0 ? own.width() * format.height() / own.height()
                                             : own.width();
  return {width, format.height() > 0 ? format.height() : own.height() * width / own.width()};
}

void KeepPicturesWithin(double most, QTextDocument& document) {
  QTextCursor cursor(&document);
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
    for (auto place = block.begin(); !place.atEnd(); ++place) {
      QTextImageFormat format = place.fragment().charFormat().toImageFormat();
      const QSizeF size = format.isValid() ? SizeOf(format, document) : QSizeF();
      if (size.width() <= most) continue;
      format.setWidth(most);
      format.setHeight(size.height() * most / size.width());
      cursor.setPosition(place.fragment().position());
      cursor.setPosition(place.fragment().position() + place.fragment().length(), QTextCursor::KeepAnchor);
      cursor.setCharFormat(format);
    }
  }
}

}  // namespace

void KeepWithin(double most, QTextDocument& document) {
  QTextCursor change(&document);
  change.beginEditBlock();  // so that it is laid out once
  KeepTablesWithin(most, *document.rootFrame(), false);
  KeepPicturesWithin(most, document);
  change.endEditBlock();
}

bool PartFromWordsBefore(QTextDocument& document) {
  std::vector<int> places;
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
    const QString text = block.text();
    for (int line = 1; line < block.layout()->lineCount(); ++line) {
      const int begin = block.layout()->lineAt(line).textStart();
      const bool is_picture = text.at(begin) == QChar::ObjectReplacementCharacter;
      if (is_picture && text.at(begin - 1) != QChar::LineSeparator) places.push_back(block.position() + begin);
    }
  }
  QTextCursor change(&document);
  change.beginEditBlock();
  for (auto place = places.rbegin(); place != places.rend(); ++place) {
    change.setPosition(*place);
    change.insertText(QChar(QChar::LineSeparator));
  }
  change.endEditBlock();
  return !places.empty();
}

}  // namespace quillcast::desktop
