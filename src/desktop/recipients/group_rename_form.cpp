#include "desktop/recipients/group_rename_form.h"

#include "desktop/recipients/group_name_box.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {

GroupRenameForm::GroupRenameForm(const profile::Program& program, const QString& group, QWidget* parent)
    : QDialog(parent), program_(program), group_(group) {
  setObjectName("GroupRenameForm");
  setWindowTitle(tr("Rename Group"));
  auto* column = new FormColumn(this);
  name_ = column->AddGrid()->Add("NameTextBox", tr("&Name:"), MakeGroupNameBox(this, group));
  status_ = column->Add(new StatusLine(this));
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  name_->setFocus();
  name_->selectAll();
}

QString GroupRenameForm::name() const { return name_->text(); }

void GroupRenameForm::accept() {
  recipients::RecipientStore store(program_.folders.Database(), profile::kWindowPatience);
  const auto complaint = recipients::GiveGroupName(store, FromQt(group_), FromQt(name()));
  if (!complaint) return status_->Fail(complaint.error());
  if (!*complaint) return QDialog::accept();
  ShowRefusal(**complaint, program_, *status_, *name_);
}

}  // namespace quillcast::desktop
