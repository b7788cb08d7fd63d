#include "desktop/document/find_bar.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

#include "desktop/document/html_editor.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/icons.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {
namespace {

constexpr int kManyPlaces = 1000;

}  // namespace

FindBar::FindBar(HtmlEditor* editor, QWidget* parent)
    : QWidget(parent), editor_(editor), text_(new QLineEdit(this)), result_(new StatusLine(this, "FindResult")) {
  text_->setClearButtonEnabled(true);
  auto* next = new QPushButton(tr("Ne&xt"), this);
  next->setObjectName("FindNextButton");
  next->setToolTip(tr("Enter"));
  auto* previous = new QPushButton(tr("Previous"), this);
  previous->setObjectName("FindPreviousButton");
  previous->setToolTip(tr("Shift+Enter"));
  // So wide from the first letter on, or the buttons would move while one types.
  result_->setMinimumWidth(fontMetrics().horizontalAdvance(tr("%1 places").arg(kManyPlaces)));
  auto* close = new QToolButton(this);
  close->setIcon(Icon("clear"));
  close->setAutoRaise(true);
  close->setToolTip(tr("Close (Esc)"));
  close->setAccessibleName(tr("Close the find bar"));
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(8, 4, 8, 4);
  auto* grid = new FormGrid(this);
  row->addWidget(grid);
  grid->Add("FindTextBox", tr("Find:"), text_, {previous, next, result_, close});
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
  emit Closed();
}

void FindBar::Find(bool backward) {
  const QString text = text_->text();
  editor_->Find(text, backward, [this, text](int places) {
    if (text.isEmpty()) {
      result_->clear();
    } else if (places == 0) {
      result_->Say(tr("Not found"));
    } else {
      result_->Say(places == 1 ? tr("1 place") : tr("%1 places").arg(places));
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
