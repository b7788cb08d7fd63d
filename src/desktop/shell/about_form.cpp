#include "desktop/shell/about_form.h"

#include <QLabel>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/icons.h"
#include "profile/version.h"

namespace quillcast::desktop {

AboutForm::AboutForm(QWidget* parent) : QDialog(parent) {
  setObjectName("AboutForm");
  setWindowTitle(tr("About"));
  auto* sign = new QLabel(this);
  sign->setPixmap(ProgramIcon().pixmap(64, 64));
  auto* name = new QLabel(
      QString("Tarnwick Quillcast Classic Edition %1.%2").arg(profile::kVersionMajor).arg(profile::kVersionMinor),
      this);
  QFont larger = name->font();
  larger.setPointSize(larger.pointSize() + 3);
  larger.setBold(true);
  name->setFont(larger);
  name->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  auto* what = new QLabel(tr("One personal e-mail to each of many people.\nLicence: Apache-2.0"), this);
  auto* column = new FormColumn(this);
  for (QLabel* line : {sign, name, what}) column->Add(line);
  column->AddButtons(QDialogButtonBox::Close);
}

}  // namespace quillcast::desktop
