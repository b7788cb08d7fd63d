#include "desktop/document/source_view.h"

#include <QSignalBlocker>

#include "desktop/widgets/dropped_files.h"

namespace quillcast::desktop {
SourceView::SourceView(QWidget* parent) : QPlainTextEdit(parent) {
  setObjectName("SourceTextBox");
  setAccessibleName(tr("HTML source"));
  setLineWrapMode(QPlainTextEdit::WidgetWidth);
  QFont fixed("monospace");
  fixed.setStyleHint(QFont::Monospace);
  setFont(fixed);
}

void SourceView::SetHtml(const QString& html) {
  has_crlf_ = html.contains("\r\n") && html.count('\n') == html.count("\r\n");
  const QSignalBlocker no_change(this);
  setPlainText(html);
  before_ = Html();
}

void SourceView::SetTaken() { before_ = Html(); }

// A drag of files goes on to the window. Pasted, they would be addresses that lead nowhere, and tell of this machine.
bool SourceView::canInsertFromMimeData(const QMimeData* what) const {
  return !HoldsFiles(what) && QPlainTextEdit::canInsertFromMimeData(what);
}

void SourceView::insertFromMimeData(const QMimeData* what) {
  if (canInsertFromMimeData(what)) QPlainTextEdit::insertFromMimeData(what);
}

// The box itself makes every no-break space a blank, and knows one line end.
QString SourceView::Html() const {
  const QString line_end = has_crlf_ ? "\r\n" : "\n";
  QString text = document()->toRawText();
  return text.replace(QChar::ParagraphSeparator, line_end).replace(QChar::LineSeparator, line_end);
}

}  // namespace quillcast::desktop
