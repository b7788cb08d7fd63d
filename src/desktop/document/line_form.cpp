#include "desktop/document/line_form.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include "desktop/document/number_box.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

// The given texts, which the HTML is made from, in the user's language.
template <std::size_t kCount>
QComboBox* Offering(const std::array<const char*, kCount>& texts, const std::string& first) {
  auto* box = new QComboBox();
  for (const char* text : texts) box->addItem(Translated(text), text);
  box->setCurrentIndex(box->findData(ToQt(first)));
  return box;
}

}  // namespace

LineForm::LineForm(platform::Prompts& prompts, QWidget* parent) : QDialog(parent), prompts_(prompts) {
  setObjectName("LineForm");
  setWindowTitle(tr("Horizontal Line"));
  const document::LineChoice first;
  unit_ = Offering(document::kLineUnits, first.unit);
  unit_->setObjectName("ComboBoxWidth");
  unit_->setAccessibleName(tr("Unit of the width"));
  auto* column = new FormColumn(this);
  FormGrid* grid = column->AddGrid();
  width_ = grid->Add("WidthTextBox", tr("&Width:"), NumberBox<DigitsFilter>(first.width, this), {unit_});
  height_ = grid->Add("HeightTextBox", tr("&Height:"), NumberBox<NumberFilter>(first.height, this),
                      {new QLabel(tr("pixels"), this)});
  align_ = grid->Add("AlignComboBox", tr("&Alignment:"), Offering(document::kLineAlignments, first.align));
  solid_ = grid->AddPlain("SolidCheckBox", new QCheckBox(tr("&Solid, without a shade")));
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  width_->setFocus();
  width_->selectAll();
}

document::LineChoice LineForm::Choice() const {
  return {.width = FromQt(width_->text()),
          .unit = FromQt(unit_->currentData().toString()),
          .height = FromQt(height_->text()),
          .align = FromQt(align_->currentData().toString()),
          .is_solid = solid_->isChecked()};
}

void LineForm::accept() {
  const auto complaint = document::CheckLine(Choice());
  if (!complaint) return QDialog::accept();
  prompts_.Warn(complaint->message);
  QLineEdit* box = complaint->control == document::LineBox::kWidth ? width_ : height_;
  box->setFocus();
  box->selectAll();
}

}  // namespace quillcast::desktop
