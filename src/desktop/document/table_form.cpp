#include "desktop/document/table_form.h"

#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>

#include "desktop/widgets/digits_filter.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

TableForm::TableForm(platform::Prompts& prompts, QWidget* parent)
    : QDialog(parent), prompts_(prompts), percent_(new QRadioButton(tr("p&ercent"), this)) {
  setObjectName("TableForm");
  setWindowTitle(tr("Table"));
  const document::TableChoice first;
  const auto digits = [this](const std::string& text, int longest) {
    auto* box = new QLineEdit(ToQt(text), this);
    box->setValidator(new DigitsFilter(box));
    box->setMaxLength(longest);
    return box;
  };
  auto* pixels = new QRadioButton(tr("pi&xels"), this);
  percent_->setObjectName("PercentRadioButton");
  pixels->setObjectName("PixelRadioButton");
  (first.in_percent ? percent_ : pixels)->setChecked(true);

  auto* column = new FormColumn(this);
  FormGrid* grid = column->AddGrid();
  rows_ = grid->Add("RowsTextBox", tr("&Rows:"), digits(first.rows, 2));
  columns_ = grid->Add("ColumnsTextBox", tr("&Columns:"), digits(first.columns, 2));
  width_ = grid->Add("SpecifyTextBox", tr("&Width:"), digits(first.width, 4), {percent_, pixels});
  align_ = grid->Add("AlignComboBox", tr("&Alignment:"), new QComboBox(this));
  border_ = grid->Add("BorderTextBox", tr("&Border:"), digits(first.border, 2));
  spacing_ = grid->Add("SpacingTextBox", tr("&Spacing between cells:"), digits(first.spacing, 2));
  padding_ = grid->Add("PaddingTextBox", tr("&Padding in cells:"), digits(first.padding, 2));
  align_->setPlaceholderText(tr("As the text"));
  for (const char* text : document::kTableAlignments) align_->addItem(text);
  align_->setCurrentIndex(-1);
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  rows_->setFocus();
  rows_->selectAll();
}

document::TableChoice TableForm::Choice() const {
  return {.align = FromQt(align_->currentText()),
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
