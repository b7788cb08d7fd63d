#include "desktop/recipients/group_new_form.h"

#include "desktop/recipients/group_name_box.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {

GroupNewForm::GroupNewForm(const profile::Program& program, QWidget* parent) : QDialog(parent), program_(program) {
  setObjectName("GroupNewForm");
  setWindowTitle(tr("New Group"));
  auto* column = new FormColumn(this);
  name_ = column->AddGrid()->Add("NameTextBox", tr("&Name:"), MakeGroupNameBox(this));
  status_ = column->Add(new StatusLine(this));
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  name_->setFocus();
}

QString GroupNewForm::name() const { return name_->text(); }

void GroupNewForm::accept() {
  recipients::RecipientStore store(program_.folders.Database(), profile::kWindowPatience);
  const auto complaint = recipients::MakeGroup(store, FromQt(name()));
  if (!complaint) return status_->Fail(complaint.error());
  if (!*complaint) return QDialog::accept();
  ShowRefusal(**complaint, program_, *status_, *name_);
}

}  // namespace quillcast::desktop
