#include "desktop/recipients/mapping_keep_form.h"

#include <QLineEdit>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "recipients/import/kept_mappings.h"

namespace quillcast::desktop {

MappingKeepForm::MappingKeepForm(const profile::Program& program, const QString& name, QWidget* parent)
    : QDialog(parent), program_(program), name_(new QLineEdit(name, this)) {
  setObjectName("MappingKeepForm");
  setWindowTitle(tr("Keep the Mapping"));
  auto* column = new FormColumn(this);
  column->AddGrid()->Add("NameTextBox", tr("&Name:"), name_);
  name_->setMinimumWidth(280);
  status_ = column->Add(new StatusLine(this));
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  name_->selectAll();
  name_->setFocus();
}

QString MappingKeepForm::name() const { return name_->text().trimmed(); }

void MappingKeepForm::accept() {
  name_->setFocus();
  if (const auto checked = recipients::CheckMappingName(FromQt(name())); !checked)
    return status_->Fail(checked.error());
  if (recipients::HasMapping(program_.settings, FromQt(name()))) {
    const auto question = Say("The mapping “{}” is kept already.\r\nWould you like to replace it?", FromQt(name()));
    if (program_.prompts.Ask(FromQt(InWords(question))) != platform::Answer::kYes) return;
  }
  QDialog::accept();
}

}  // namespace quillcast::desktop
