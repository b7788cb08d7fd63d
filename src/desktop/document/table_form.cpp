#include "desktop/document/table_form.h"

#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>

#include "desktop/document/number_box.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

TableForm::TableForm(platform::Prompts& prompts, QWidget* parent)
    : QDialog(parent), prompts_(prompts), percent_(new QRadioButton(tr("p&ercent"), this)) {
  setObjectName("TableForm");
  setWindowTitle(tr("Table"));
  const document::TableChoice first;
  auto* pixels = new QRadioButton(tr("pi&xels"), this);
  percent_->setObjectName("PercentRadioButton");
  pixels->setObjectName("PixelRadioButton");
  (first.in_percent ? percent_ : pixels)->setChecked(true);

  auto* column = new FormColumn(this);
  FormGrid* grid = column->AddGrid();
  rows_ = grid->Add("RowsTextBox", tr("&Rows:"), NumberBox<DigitsFilter>(first.rows, this));
  columns_ = grid->Add("ColumnsTextBox", tr("&Columns:"), NumberBox<DigitsFilter>(first.columns, this));
  width_ = grid->Add("SpecifyTextBox", tr("&Width:"), NumberBox<DigitsFilter>(first.width, this), {percent_, pixels});
  align_ = grid->Add("AlignComboBox", tr("&Alignment:"), new QComboBox(this));
  border_ = grid->Add("BorderTextBox", tr("&Border:"), NumberBox<NumberFilter>(first.border, this));
  spacing_ = grid->Add("SpacingTextBox", tr("&Spacing between cells:"), NumberBox<NumberFilter>(first.spacing, this));
  padding_ = grid->Add("PaddingTextBox", tr("&Padding in cells:"), NumberBox<NumberFilter>(first.padding, this));
  for (const char* text : document::kTableAlignments) align_->addItem(text, text);
  align_->addItem(tr("As the text"), QString());
  align_->setCurrentIndex(align_->count() - 1);
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  rows_->setFocus();
  rows_->selectAll();
}

document::TableChoice TableForm::Choice() const {
  return {.align = FromQt(align_->currentData().toString()),
          .border = FromQt(border_->text()),
          .spacing = FromQt(spacing_->text()),
          .padding = FromQt(padding_->text()),
          .rows = FromQt(rows_->text()),
          .columns = FromQt(columns_->text()),
          .width = FromQt(width_->text()),
          .in_percent = percent_->isChecked()};
}

void TableForm::accept() {
  const auto complaint = document::CheckTable(Choice());
  if (!complaint) return QDialog::accept();
  prompts_.Warn(complaint->message);
  QLineEdit* box =
      std::array{border_, spacing_, padding_, rows_, columns_}.at(static_cast<std::size_t>(*complaint->control));
  box->setFocus();
  box->selectAll();
}

}  // namespace quillcast::desktop
