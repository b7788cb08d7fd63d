#include "desktop/document/find_bar.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

#include "desktop/document/html_editor.h"
#include "desktop/widgets/icons.h"

namespace quillcast::desktop {

FindBar::FindBar(HtmlEditor* editor, QWidget* parent)
    : QWidget(parent), editor_(editor), text_(new QLineEdit(this)), result_(new QLabel(this)) {
  auto* label = new QLabel(tr("Find:"), this);
  label->setBuddy(text_);
  text_->setObjectName("FindTextBox");
  text_->setClearButtonEnabled(true);
  auto* next = new QPushButton(tr("Ne&xt"), this);
  next->setObjectName("FindNextButton");
  next->setToolTip(tr("Enter"));
  auto* previous = new QPushButton(tr("Previous"), this);
  previous->setObjectName("FindPreviousButton");
  previous->setToolTip(tr("Shift+Enter"));
  result_->setObjectName("FindResult");
  auto* close = new QToolButton(this);
  close->setIcon(Icon("clear"));
  close->setAutoRaise(true);
  close->setToolTip(tr("Close (Esc)"));
  close->setAccessibleName(tr("Close the find bar"));
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(8, 4, 8, 4);
  row->addWidget(label);
  row->addWidget(text_, 1);
  row->addWidget(previous);
  row->addWidget(next);
  row->addWidget(result_);
  row->addStretch(1);
  row->addWidget(close);
  connect(next, &QPushButton::clicked, this, [this] { Find(false); });
  connect(previous, &QPushButton::clicked, this, [this] { Find(true); });
  connect(text_, &QLineEdit::textChanged, this, [this] { Find(false); });
  connect(close, &QToolButton::clicked, this, &FindBar::Close);
  hide();
}

void FindBar::Open(const QString& text) {
  show();
  if (!text.isEmpty() && !text.contains('\n')) text_->setText(text);
  text_->setFocus();
  text_->selectAll();
}

void FindBar::Close() {
  hide();
  editor_->Find({}, false, [](int) {});
  editor_->setFocus();
}

void FindBar::Find(bool backward) {
  const QString text = text_->text();
  editor_->Find(text, backward, [this, text](int places) {
    if (text.isEmpty()) {
      result_->clear();
      return;
    }
    if (places == 0) {
      result_->setText(tr("Not found"));
    } else {
      result_->setText(places == 1 ? tr("1 place") : tr("%1 places").arg(places));
    }
  });
}

void FindBar::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (event->key() == Qt::Key_Escape) {
    Close();
  } else if (enter || event->key() == Qt::Key_F3) {
    Find(event->modifiers().testFlag(Qt::ShiftModifier));
  } else {
    QWidget::keyPressEvent(event);
  }
}

}  // namespace quillcast::desktop
