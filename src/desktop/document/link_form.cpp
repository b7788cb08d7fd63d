#include "desktop/document/link_form.h"

#include <QLineEdit>
#include <QPushButton>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "document/link_address.h"

namespace quillcast::desktop {
namespace {

constexpr int kWidth = 440;

}  // namespace

LinkForm::LinkForm(const QString& address, const QString& text, QWidget* parent) : QDialog(parent) {
  setObjectName("LinkForm");
  setWindowTitle(tr("Hyperlink"));
  auto* column = new FormColumn(this);
  FormGrid* grid = column->AddGrid();
  address_ = grid->Add("AddressTextBox", tr("&Address:"), new QLineEdit(this));
  address_->setText(address.isEmpty() ? "https://" : address);
  text_ = grid->Add("LinkTextBox", tr("&Text:"), new QLineEdit(this));
  text_->setText(text.simplified());
  text_->setPlaceholderText(tr("The address itself"));
  QPushButton* ok = column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel)->button(QDialogButtonBox::Ok);
  resize(kWidth, sizeHint().height());
  const auto check = [this, ok] { ok->setEnabled(!Address().isEmpty()); };
  connect(address_, &QLineEdit::textChanged, this, check);
  check();
  address_->setFocus();
  if (!address.isEmpty()) address_->selectAll();
}

QString LinkForm::Address() const { return ToQt(document::LinkAddress(FromQt(address_->text()))); }

QString LinkForm::Text() const { return text_->isModified() ? text_->text().trimmed() : QString(); }

}  // namespace quillcast::desktop
