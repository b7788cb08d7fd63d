#include "desktop/document/table_form.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>

#include "desktop/widgets/digits_filter.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

TableForm::TableForm(platform::Prompts& prompts, QWidget* parent)
    : QDialog(parent),
      prompts_(prompts),
      align_(new QComboBox(this)),
      percent_(new QRadioButton(tr("p&ercent"), this)) {
  setObjectName("TableForm");
  setWindowTitle(tr("Table"));
  const document::TableChoice first;
  rows_ = MakeBox("RowsTextBox", first.rows, 2);
  columns_ = MakeBox("ColumnsTextBox", first.columns, 2);
  border_ = MakeBox("BorderTextBox", first.border, 2);
  spacing_ = MakeBox("SpacingTextBox", first.spacing, 2);
  padding_ = MakeBox("PaddingTextBox", first.padding, 2);
  width_ = MakeBox("SpecifyTextBox", first.width, 4);
  align_->setObjectName("AlignComboBox");
  align_->setPlaceholderText(tr("As the text"));
  for (const char* text : document::kTableAlignments) align_->addItem(text);
  align_->setCurrentIndex(-1);
  percent_->setObjectName("PercentRadioButton");
  auto* pixels = new QRadioButton(tr("pi&xels"), this);
  pixels->setObjectName("PixelRadioButton");
  (first.in_percent ? percent_ : pixels)->setChecked(true);

  auto* width_line = new QHBoxLayout();
  width_line->addWidget(width_);
  width_line->addWidget(percent_);
  width_line->addWidget(pixels);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  auto* form = new QFormLayout(this);
  form->setContentsMargins(20, 16, 20, 12);
  form->addRow(tr("&Rows:"), rows_);
  form->addRow(tr("&Columns:"), columns_);
  auto* width_label = new QLabel(tr("&Width:"), this);
  width_label->setBuddy(width_);
  form->addRow(width_label, width_line);
  form->addRow(tr("&Alignment:"), align_);
  form->addRow(tr("&Border:"), border_);
  form->addRow(tr("&Spacing between cells:"), spacing_);
  form->addRow(tr("&Padding in cells:"), padding_);
  form->addRow(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &TableForm::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &TableForm::reject);
  rows_->setFocus();
  rows_->selectAll();
}

QLineEdit* TableForm::MakeBox(const char* name, const std::string& text, int longest) {
  auto* box = new QLineEdit(ToQt(text), this);
  box->setObjectName(name);
  box->setValidator(new DigitsFilter(box));
  box->setMaxLength(longest);
  return box;
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
