#include "desktop/document/attachments_form.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

#include "desktop/widgets/icons.h"
#include "desktop/widgets/qt_text.h"
#include "platform/text.h"

namespace quillcast::desktop {

QString InWords(const document::AttachmentTotal& total) {
  const QString files = Counted(total.files, AttachmentsForm::tr("1 file"), AttachmentsForm::tr("%1 files"));
  QString text = files + ", " + ToQt(platform::HumanSize(total.bytes));
  if (total.missing == 0) return text;
  return text + ", " + Counted(total.missing, AttachmentsForm::tr("1 not there"), AttachmentsForm::tr("%1 not there"));
}

AttachmentsForm::AttachmentsForm(const document::AttachmentList& attachments, QWidget* parent)
    : QDialog(parent),
      remaining_(attachments),
      list_(new QListWidget(this)),
      total_(new QLabel(this)),
      remove_(new QPushButton(Icon("remove"), tr("&Remove"), this)) {
  setObjectName("AttachmentsForm");
  setWindowTitle(tr("Attachments"));
  resize(520, 340);
  list_->setObjectName("AttachmentsList");
  list_->setAccessibleName(tr("Attachments"));
  list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  list_->setTextElideMode(Qt::ElideMiddle);
  total_->setObjectName("AttachmentsTotal");
  remove_->setObjectName("RemoveButton");
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  auto* row = new QHBoxLayout();
  row->addWidget(total_, 1);
  row->addWidget(remove_);
  auto* column = new QVBoxLayout(this);
  column->addWidget(list_, 1);
  column->addLayout(row);
  column->addWidget(buttons);
  auto* key = new QShortcut(QKeySequence::Delete, list_, nullptr, nullptr, Qt::WidgetShortcut);
  connect(key, &QShortcut::activated, this, &AttachmentsForm::RemoveSelected);
  connect(remove_, &QPushButton::clicked, this, &AttachmentsForm::RemoveSelected);
  connect(list_, &QListWidget::itemSelectionChanged, this,
          [this] { remove_->setEnabled(!list_->selectedItems().isEmpty()); });
  connect(buttons, &QDialogButtonBox::accepted, this, &AttachmentsForm::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &AttachmentsForm::reject);
  for (const auto& path : attachments.paths()) list_->addItem(PathToQt(path));
  remove_->setEnabled(false);
  ShowTotal();
  list_->setFocus();
}

void AttachmentsForm::RemoveSelected() {
  for (QListWidgetItem* item : list_->selectedItems()) {
    remaining_.Remove(PathFromQt(item->text()).string());
    delete list_->takeItem(list_->row(item));
  }
  ShowTotal();
}

void AttachmentsForm::ShowTotal() { total_->setText(InWords(document::TotalOf(remaining_))); }

}  // namespace quillcast::desktop
