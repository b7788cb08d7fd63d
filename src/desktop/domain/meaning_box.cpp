#include "desktop/domain/meaning_box.h"

#include <QApplication>
#include <QEvent>
#include <QResizeEvent>
#include <QTextDocument>

namespace quillcast::desktop {
namespace {

constexpr int kLeastLines = 3;

}  // namespace

MeaningBox::MeaningBox(QWidget* parent) : QTextEdit(parent) {
  setObjectName("MeaningBox");
  setAccessibleName(tr("What it means"));
  setReadOnly(true);
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  setTabChangesFocus(true);
  setUndoRedoEnabled(false);
  setFrameShape(QFrame::NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
  document()->setDocumentMargin(0);
  TakeColours();
  hide();
}

void MeaningBox::Show(const QStringList& lines, NoteKind kind) {
  kind_ = kind;
  setPlainText(lines.join('\n'));
  TakeColours();
  setVisible(!lines.isEmpty());
  FitBar();
  updateGeometry();
}

// The bar itself narrows the text, which may need a line more beside it: where the whole fits without, there is none.
void MeaningBox::FitBar() {
  const bool fits = height() >= sizeHint().height();
  setVerticalScrollBarPolicy(fits ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
}

// Of the whole text without a scroll bar, so that the bar's coming and going does not change it.
QSize MeaningBox::sizeHint() const {
  QTextDocument whole;
  whole.setDefaultFont(document()->defaultFont());
  whole.setDocumentMargin(document()->documentMargin());
  whole.setPlainText(toPlainText());
  whole.setTextWidth(contentsRect().width());
  return {QTextEdit::sizeHint().width(), qRound(whole.size().height() + 0.5)};
}

QSize MeaningBox::minimumSizeHint() const {
  return {QTextEdit::minimumSizeHint().width(), qMin(sizeHint().height(), kLeastLines * fontMetrics().lineSpacing())};
}

void MeaningBox::changeEvent(QEvent* event) {
  QTextEdit::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) TakeColours();
  if (event->type() != QEvent::FontChange) return;
  FitBar();
  updateGeometry();
}

void MeaningBox::resizeEvent(QResizeEvent* event) {
  QTextEdit::resizeEvent(event);
  FitBar();
  if (event->size().width() != event->oldSize().width()) updateGeometry();
}

void MeaningBox::TakeColours() {
  const QPalette around = QApplication::palette(parentWidget());
  const QColor ground = around.color(QPalette::Window);
  const QColor text = LineColour(kind_, around);
  QPalette own = palette();
  if (own.color(QPalette::Base) == ground && own.color(QPalette::Text) == text) return;
  own.setColor(QPalette::Base, ground);
  own.setColor(QPalette::Text, text);
  setPalette(own);
}

}  // namespace quillcast::desktop
