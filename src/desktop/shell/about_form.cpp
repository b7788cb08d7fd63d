#include "desktop/shell/about_form.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

#include "desktop/widgets/icons.h"
#include "profile/version.h"

namespace quillcast::desktop {

AboutForm::AboutForm(QWidget* parent) : QDialog(parent) {
  setObjectName("AboutForm");
  setWindowTitle(tr("About"));
  auto* sign = new QLabel(this);
  sign->setPixmap(ProgramIcon().pixmap(64, 64));
  auto* name =
      new QLabel(QString("Tarnwick Quillcast Classic Edition %1.%2").arg(profile::kVersionMajor).arg(profile::kVersionMinor), this);
  QFont larger = name->font();
  larger.setPointSize(larger.pointSize() + 3);
  larger.setBold(true);
  name->setFont(larger);
  name->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  auto* what = new QLabel(tr("One personal e-mail to each of many people.\nLicence: Apache-2.0"), this);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(24, 20, 24, 14);
  column->addWidget(sign);
  column->addWidget(name);
  column->addWidget(what);
  column->addSpacing(10);
  column->addWidget(buttons);
}

}  // namespace quillcast::desktop
