#include "desktop/document/link_form.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>

#include "desktop/widgets/qt_text.h"
#include "document/link_address.h"

namespace quillcast::desktop {
namespace {

constexpr int kWidth = 440;

}  // namespace

LinkForm::LinkForm(const QString& address, const QString& text, QWidget* parent)
    : QDialog(parent), address_(new QLineEdit(this)), text_(new QLineEdit(this)) {
  setObjectName("LinkForm");
  setWindowTitle(tr("Hyperlink"));
  address_->setObjectName("AddressTextBox");
  address_->setText(address.isEmpty() ? "https://" : address);
  text_->setObjectName("LinkTextBox");
  text_->setText(text.simplified());
  text_->setPlaceholderText(tr("The address itself"));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  auto* form = new QFormLayout(this);
  form->setContentsMargins(20, 16, 20, 12);
  form->addRow(tr("&Address:"), address_);
  form->addRow(tr("&Text:"), text_);
  form->addRow(buttons);
  resize(kWidth, sizeHint().height());
  QPushButton* ok = buttons->button(QDialogButtonBox::Ok);
  const auto check = [this, ok] { ok->setEnabled(!Address().isEmpty()); };
  connect(address_, &QLineEdit::textChanged, this, check);
  connect(buttons, &QDialogButtonBox::accepted, this, &LinkForm::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &LinkForm::reject);
  check();
  address_->setFocus();
  if (!address.isEmpty()) address_->selectAll();
}

QString LinkForm::Address() const { return ToQt(document::LinkAddress(FromQt(address_->text()))); }

QString LinkForm::Text() const { return text_->isModified() ? text_->text().trimmed() : QString(); }

}  // namespace quillcast::desktop
