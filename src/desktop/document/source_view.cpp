#include "desktop/document/source_view.h"

#include <QTimer>

namespace quillcast::desktop {
namespace {

constexpr int kPause = 1000;  // milliseconds

}  // namespace

SourceView::SourceView(QWidget* parent) : QPlainTextEdit(parent), pause_(new QTimer(this)) {
  setObjectName("SourceTextBox");
  setAccessibleName(tr("HTML source"));
  setLineWrapMode(QPlainTextEdit::WidgetWidth);
  QFont fixed("monospace");
  fixed.setStyleHint(QFont::Monospace);
  setFont(fixed);
  pause_->setSingleShot(true);
  pause_->setInterval(kPause);
  connect(this, &QPlainTextEdit::textChanged, pause_, qOverload<>(&QTimer::start));
  connect(pause_, &QTimer::timeout, this, &SourceView::Paused);
}

void SourceView::SetHtml(const QString& html) {
  has_crlf_ = html.contains("\r\n") && html.count('\n') == html.count("\r\n");
  setPlainText(html);
  before_ = Html();
}

// The box itself makes every no-break space a blank, and knows one line end.
QString SourceView::Html() const {
  const QString line_end = has_crlf_ ? "\r\n" : "\n";
  QString text = document()->toRawText();
  return text.replace(QChar::ParagraphSeparator, line_end).replace(QChar::LineSeparator, line_end);
}

}  // namespace quillcast::desktop
