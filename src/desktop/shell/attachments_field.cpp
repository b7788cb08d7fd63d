#include "desktop/shell/attachments_field.h"

#include <QComboBox>
#include <QPushButton>

#include "desktop/document/attachments_form.h"
#include "desktop/widgets/folding_line.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

constexpr int kButtonGap = 6;  // pixels
constexpr int kNarrowestAttachments = 140;

}  // namespace

AttachmentsField::AttachmentsField(platform::Prompts& prompts, QWidget* parent)
    : QWidget(parent), prompts_(prompts), box_(new QComboBox(this)), total_(new QPushButton(this)) {
  box_->setPlaceholderText(tr("No attachments; drop files here"));
  total_->setObjectName("AttachmentCountButton");
  total_->setToolTip(tr("Show all of them, and take several out at once"));
  total_->hide();
  setFocusProxy(box_);
  box_->setMinimumWidth(kNarrowestAttachments);
  box_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  auto* line = new FoldingLine(this, kButtonGap);
  line->addWidget(box_);
  line->addWidget(total_);
  connect(total_, &QPushButton::clicked, this, &AttachmentsField::Change);
}

void AttachmentsField::SetList(const document::AttachmentList& list) {
  list_ = list;
  box_->clear();
  for (const auto& path : list_.paths()) box_->addItem(PathToQt(path));
  box_->setCurrentIndex(box_->count() > 0 ? 0 : -1);
  total_->setText(InWords(document::TotalOf(list_)) + u8"\u2026");
  total_->setVisible(box_->count() > 0);
  emit Changed();
}

void AttachmentsField::Add() {
  const auto files =
      prompts_.PickOpenFile({.title = "File Attachment", .filter = "All Files (*.*)|*.*", .several = true});
  QStringList names;
  for (const auto& file : files) names << PathToQt(file);
  Add(names);
}

void AttachmentsField::Add(const QStringList& files) {
  document::AttachmentList list = list_;
  for (const QString& file : files) list.Add(PathFromQt(file).string());
  if (!files.isEmpty()) SetList(list);
}

void AttachmentsField::Delete() {
  const std::string shown = PathFromQt(box_->currentText()).string();
  document::AttachmentList list = list_;
  switch (document::DeleteAttachment(list, shown, prompts_)) {
    case document::AttachmentDeletion::kDeleted:
      SetList(list);
      break;
    case document::AttachmentDeletion::kNothingShown:
      box_->setFocus();
      break;
    case document::AttachmentDeletion::kNothingToDelete:
    case document::AttachmentDeletion::kKept:
      break;
  }
}

void AttachmentsField::Change() {
  AttachmentsForm form(list_, this);
  if (form.exec() == QDialog::Accepted) SetList(form.Remaining());
}

}  // namespace quillcast::desktop
