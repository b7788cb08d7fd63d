#include "desktop/widgets/form_grid.h"

#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <algorithm>

#include "desktop/widgets/form_column.h"

namespace quillcast::desktop {
namespace {

constexpr int kSpacing = 8;  // pixels between the rows
constexpr int kGap = 12;     // between a label and its field

bool HasWidest(const QWidget& field) { return field.maximumWidth() < QWIDGETSIZE_MAX; }

QWidget* Innermost(QWidget* field) {
  while (field->focusProxy() != nullptr) field = field->focusProxy();
  return field;
}

int Leading(const QMargins& margins, bool from_right) { return from_right ? margins.right() : margins.left(); }

}  // namespace

FormGrid::FormGrid(QWidget* parent, int place) : QWidget(parent), place_(place), rows_(new QGridLayout(this)) {
  rows_->setContentsMargins(0, 0, 0, 0);
  rows_->setVerticalSpacing(kSpacing);
  rows_->setHorizontalSpacing(0);  // a column of no labels would have none: the gap belongs to the labels
  rows_->setColumnStretch(1, 1);
}

QLabel* FormGrid::MakeLabel(const QString& text, QWidget* field) {
  QWidget* const control = Innermost(field);
  auto* label = new QLabel(text, this);
  label->setBuddy(control);
  label->setIndent(0);
  const bool from_right = isRightToLeft();
  label->setContentsMargins(from_right ? 0 : indent_, 0, from_right ? indent_ : 0, 0);
  if (control != field) label->setMinimumHeight(control->sizeHint().height());  // where the field begins, if it folds
  if (control->accessibleName().isEmpty()) control->setAccessibleName(QString(text).remove('&').remove(':'));
  labels_.push_back(label);
  return label;
}

void FormGrid::AddRow(const QString& name, const QString& label, QWidget* field, const std::vector<QWidget*>& beside) {
  Innermost(field)->setObjectName(name);
  LetFollow(field);
  const int row = rows_->rowCount();
  const bool is_tall =
      (field->sizePolicy().verticalPolicy() & QSizePolicy::ExpandFlag) != 0 || field->focusProxy() != nullptr;
  QLabel* const caption = MakeLabel(label, field);
  rows_->addWidget(caption, row, 0, Qt::AlignLeading | (is_tall ? Qt::AlignTop : Qt::AlignVCenter));
  if (beside.empty() && !HasWidest(*field)) {
    rows_->addWidget(field, row, 1, 1, -1);
  } else {
    auto* line = new QHBoxLayout();
    line->setSpacing(kGap / 2);
    line->addWidget(field, HasWidest(*field) ? 0 : 1);
    for (QWidget* widget : beside) {
      LetFollow(widget);
      line->addWidget(widget);
    }
    if (HasWidest(*field)) line->addStretch(1);
    rows_->addLayout(line, row, 1, 1, -1);
  }
  Innermost(field)->installEventFilter(this);
  caption->setEnabled(Innermost(field)->isEnabledTo(this));
}

void FormGrid::AddButton(QWidget* field, QWidget* button) {
  int row = 0;
  int column = 0;
  int rows = 0;
  int columns = 0;
  rows_->getItemPosition(rows_->indexOf(field), &row, &column, &rows, &columns);
  rows_->addWidget(field, row, column);  // no longer to the end of the row
  int place = column + 2;
  while (rows_->itemAtPosition(row, place) != nullptr) place += 2;
  rows_->setColumnMinimumWidth(place - 1, kGap / 2);
  LetFollow(button);
  rows_->addWidget(button, row, place, Qt::AlignTop);
}

void FormGrid::AddUnlabelled(const QString& name, QWidget* field, int column) {
  field->setObjectName(name);
  LetFollow(field);
  // What wraps takes all the width: at the one that it asks for by itself it would have more lines than places for
  // them.
  const bool wraps = field->sizePolicy().hasHeightForWidth();
  rows_->addWidget(field, rows_->rowCount(), column, 1, -1,
                   wraps ? Qt::Alignment() : Qt::AlignLeading | Qt::AlignVCenter);
}

// A label says by its colour, too, that its field cannot be used; where there is none, there is no label.
bool FormGrid::eventFilter(QObject* watched, QEvent* event) {
  const bool comes_or_goes = event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent;
  for (QLabel* label : labels_) {
    if (label->buddy() != watched) continue;
    if (event->type() == QEvent::EnabledChange) label->setEnabled(label->buddy()->isEnabledTo(this));
    if (comes_or_goes) label->setVisible(event->type() == QEvent::ShowToParent);
  }
  return QWidget::eventFilter(watched, event);
}

bool FormGrid::event(QEvent* event) {
  switch (event->type()) {
    case QEvent::Polish:
    case QEvent::LayoutRequest:
    case QEvent::FontChange:
    case QEvent::StyleChange:
      Align();
      break;
    default:
      break;
  }
  return QWidget::event(event);
}

// How far the boxes round the grid hold it in.
int FormGrid::Inset() const {
  int inset = 0;
  for (const QWidget* box = parentWidget(); box != nullptr && !box->isWindow(); box = box->parentWidget()) {
    inset += Leading(box->contentsMargins(), isRightToLeft());
    if (box->layout() != nullptr) inset += Leading(box->layout()->contentsMargins(), isRightToLeft());
  }
  return inset;
}

int FormGrid::LabelsEnd() const {
  int width = 0;
  for (const QLabel* label : labels_) width = std::max(width, label->sizeHint().width());
  return Inset() + width;
}

// Each grid makes room for the label that reaches furthest in any of them. A width that is set, if only to what it was,
// has the grid ask for its place again, which brings us here.
void FormGrid::Align() const {
  std::vector<const FormGrid*> grids;
  for (const FormGrid* grid : window()->findChildren<FormGrid*>()) {
    if (grid->place_ == place_ && grid->window() == window()) grids.push_back(grid);  // not of dialogs over it
  }
  int end = 0;
  for (const FormGrid* grid : grids) end = std::max(end, grid->LabelsEnd());
  for (const FormGrid* grid : grids) {
    const int width = end + kGap - grid->Inset();
    if (grid->rows_->columnMinimumWidth(0) != width) grid->rows_->setColumnMinimumWidth(0, width);
  }
}

}  // namespace quillcast::desktop
